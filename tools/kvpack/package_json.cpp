#include "kvpack/package_json.h"

#include <cstdio>

namespace {

Json jsonOf(const PackageDependency& entry) {
    Json json{{"name", entry.name}};
    if (entry.minVersion != 0) json["from"] = versionText(entry.minVersion);
    if (entry.maxVersion != 0) json["to"] = versionText(entry.maxVersion);
    if (entry.priority != 0) json["priority"] = entry.priority;
    return json;
}

template <class Items>
Json arrayOf(const Items& items) {
    Json array = Json::array();
    for (const auto& item : items) array.push_back(jsonOf(item));
    return array;
}

}  // namespace

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

Json jsonOf(const PartContents& contents) {
    Json json = Json::object();
    if (contents.header) {
        json["name"] = contents.header->name;
        json["version"] = versionText(contents.header->version);
        json["buildTime"] = contents.header->buildTime;
        json["flags"] = contents.header->flags;
    }
    if (contents.text) json["text"] = *contents.text;
    if (contents.entries) json["entries"] = arrayOf(*contents.entries);
    if (contents.files) json["files"] = arrayOf(*contents.files);
    if (contents.signature) json["signature"] = jsonOf(*contents.signature);
    if (contents.fault) json["fault"] = *contents.fault;
    return json;
}

std::string jsonText(const Json& document) {
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}
