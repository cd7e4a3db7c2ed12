#include "kvpack/package_json.h"

#include <cstdio>

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

Json jsonOf(const PackageDependency& entry) {
    Json json{{"name", entry.name}};
    if (entry.minVersion != 0) json["from"] = versionText(entry.minVersion);
    if (entry.maxVersion != 0) json["to"] = versionText(entry.maxVersion);
    if (entry.priority != 0) json["priority"] = entry.priority;
    return json;
}

Json jsonOf(const FileRecord& record) {
    char mode[8];
    (void)std::snprintf(mode, sizeof mode, "%06o", record.mode & 0xFFFFU);
    return {{"name", record.name}, {"mode", mode}, {"size", record.size}, {"written", record.isWritten}};
}

Json jsonOf(const SignatureVerdict& verdict) {
    return {{"digest", verdict.usesSha256 ? "SHA-256" : "SHA-1"},
            {"ed25519", verdict.ed25519Holds},
            {"kcdsa", verdict.kcdsaHolds}};
}

Json jsonOf(const CheckedSignature& signature) {
    Json json{{"offset", signature.offset}, {"package", signature.package}};
    json.update(jsonOf(signature.verdict));
    return json;
}

Json jsonOf(const ByteRange& range) {
    return {{"offset", range.offset},
            {"size", range.size},
            {"what", range.what},
            {"coverage", coverageText(range.coverage)}};
}

Json jsonOf(const PartContents& part);

template <class Items>
Json arrayOf(const Items& items) {
    Json array = Json::array();
    for (const auto& item : items) array.push_back(jsonOf(item));
    return array;
}

Json jsonOf(const PartContents& part) {
    Json json{{"offset", part.offset}, {"id", part.id}, {"part", partName(part.id)}, {"size", part.size}};
    if (part.header) {
        json["name"] = part.header->name;
        json["version"] = versionText(part.header->version);
        json["buildTime"] = part.header->buildTime;
        json["flags"] = part.header->flags;
    }
    if (part.text) json["text"] = *part.text;
    if (part.entries) json["entries"] = arrayOf(*part.entries);
    if (part.files) json["files"] = arrayOf(*part.files);
    if (part.signature) json["signature"] = jsonOf(*part.signature);
    if (part.fault) json["fault"] = *part.fault;
    return json;
}

std::string textOf(const Json& document) { return document.dump(2, ' ', false, Json::error_handler_t::replace) + '\n'; }

}  // namespace

std::string filesJson(const std::vector<FileRecord>& files) { return textOf(arrayOf(files)); }

std::string findingsJson(const Findings& findings) {
    Json fault;
    if (findings.fault) fault = {{"offset", findings.fault->offset}, {"what", findings.fault->what}};
    return textOf({{"sound", !findings.fault},
                   {"fault", std::move(fault)},
                   {"signatures", arrayOf(findings.signatures)},
                   {"ranges", arrayOf(findings.ranges)}});
}

std::string packageJson(const std::string& magic, std::uint32_t length, const std::vector<PartContents>& parts,
                        bool isWhole) {
    return textOf({{"magic", magic}, {"length", length}, {"parts", arrayOf(parts)}, {"whole", isWhole}});
}
