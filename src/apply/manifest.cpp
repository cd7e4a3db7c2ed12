#include <fstream>
#include <optional>
#include <string_view>

#include "apply/change_journal.h"

namespace {

char manifestLetter(OpKind kind) {
    switch (kind) {
        case OpKind::Delete: return 'U';
        case OpKind::Link: return 'L';
        default: return 'M';
    }
}

/// The text in front of the next blank; `rest` moves behind that blank. Nothing if `rest` has run out.
std::optional<std::string_view> takeField(std::optional<std::string_view>& rest) {
    if (!rest) return std::nullopt;
    const auto blank = rest->find(' ');
    const auto field = rest->substr(0, blank);
    rest = blank == std::string_view::npos ? std::nullopt : std::optional(rest->substr(blank + 1));
    return field;
}

}  // namespace

void ChangeJournal::writeManifest(const std::string& path) {
    std::ofstream file(path);
    for (const auto& [target, op] : ops_) {
        if (op.kind == OpKind::Copy) continue;
        file << manifestLetter(op.kind) << ' ' << target;
        if (op.kind != OpKind::Delete) file << ' ' << op.arg;
        file << '\n';
    }
    ownsTemporaryFiles_ = false;
}

bool ChangeJournal::readManifest(const std::string& path) {
    std::ifstream file(path);
    if (!file.is_open()) return false;
    std::string line;
    while (file.good()) {
        std::getline(file, line);
        if (line.empty()) return true;
        std::optional<std::string_view> rest = line;
        const auto letter = takeField(rest);
        const auto target = takeField(rest);
        if (!target) return false;
        if (letter == "U") {
            setOp(std::string(*target), {OpKind::Delete, ""});
        } else if (letter == "L" || letter == "M") {
            if (!rest) return false;
            setOp(std::string(*target), {letter == "L" ? OpKind::Link : OpKind::Move, std::string(*rest)});
        }
    }
    return !empty();
}
