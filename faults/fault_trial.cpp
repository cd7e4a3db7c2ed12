#include "faults/fault_trial.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace {

namespace fs = std::filesystem;

constexpr auto FULL_COPY = fs::copy_options::recursive | fs::copy_options::copy_symlinks;
const std::string SAVED = "/saved";  // the device as it was made ready
const std::string MANIFEST = "/ram/MANIFEST";
const std::vector<std::string> PLACES = {"/flash", "/ram", "/rw"};

/// A path in its shortest form, without a slash at its end.
std::string normal(const std::string& path) {
    std::string shortest = fs::path(path).lexically_normal();
    if (shortest.ends_with('/')) shortest.pop_back();
    return shortest;
}

bool isTemporary(const std::string& path) {
    const std::string name = fs::path(path).filename();
    return (name.size() == 9 && name.starts_with("tmp")) || normal(path) == "/flash/var/pdb/image";
}

bool isLive(const std::string& path) {
    return path.starts_with("/flash/") && !isTemporary(path) && path != "/flash/postlog";
}

/// The call in words, without the letters that make the name of a temporary file unique.
std::string inWords(const FileCall& call) {
    std::string text = call.name;
    for (const std::string& path : {call.source, call.path})
        if (!path.empty()) text += ' ' + (isTemporary(path) ? fs::path(path).parent_path().string() + "/tmp" : path);
    return text;
}

/// What stands under "/flash" for good: the mode and the content of each path.
Tree liveFiles(const DeviceRoot& device) {
    Tree live;
    for (const auto& [name, content] : device.tree("/flash"))
        if (const std::string path = "/flash/" + name; isLive(path))
            live[path] = std::to_string(device.mode(path)) + ' ' + content;
    return live;
}

std::set<std::string> temporaryFiles(const DeviceRoot& device) {
    std::set<std::string> paths;
    for (const std::string place : {"/flash/", "/ram/"})
        for (const auto& entry : device.tree(place))
            if (isTemporary(place + entry.first)) paths.insert(place + entry.first);
    return paths;
}

/// Empty for what is not there.
std::string contentIn(const Tree& tree, const std::string& name) {
    const auto entry = tree.find(name);
    return entry == tree.end() ? "" : entry->second;
}

std::set<std::string> differences(const Tree& one, const Tree& other) {
    std::set<std::string> names;
    for (const Tree* tree : {&one, &other})
        for (const auto& entry : *tree)
            if (contentIn(one, entry.first) != contentIn(other, entry.first)) names.insert(entry.first);
    return names;
}

/// Whether a change of the path can make a difference at `name`: there, below it, or, where that is an empty
/// directory, above it.
bool concerns(const std::string& path, const std::string& name) {
    const std::string directory = path + '/';
    return name == path || name.starts_with(directory) || (name.ends_with('/') && directory.starts_with(name));
}

/// What the run stages without looking whether that works. A failure shows in what is not there in the end.
bool isStagedBlindly(const std::string& target) {
    static const std::set<std::string> NAMES = {"PCKGS_CHANGED", "UPGRADED", "disabled", "enabled"};
    return NAMES.contains(fs::path(target).filename());
}

/// Whether a file has in two trees the same content, with whatever mode.
bool hasContentOf(const Tree& one, const Tree& other, const std::string& name) {
    const auto withoutMode = [&name](const Tree& tree) {
        const std::string content = contentIn(tree, name);
        return content.substr(std::min(content.size(), content.find(' ')));
    };
    return withoutMode(one) == withoutMode(other);
}

/// Whether the file tells which version of a package is installed.
bool isRecord(const std::string& path) {
    const std::string name = fs::path(path).filename();
    return path.starts_with("/flash/var/pdb/") && (name == "version" || name == "image");
}

/// What the call changes in the end: of a temporary file, the target that it is for.
std::set<std::string> targetsOf(const FileCall& call, const std::vector<FileCall>& calls) {
    std::set<std::string> targets = {normal(call.path)};
    if (!call.source.empty()) targets.insert(call.source);
    for (const FileCall& other : calls)
        if (isTemporary(call.path) && other.source == call.path) targets.insert(other.path);
    return targets;
}

}  // namespace

std::vector<Fault> faultsAt(const FileCall& call) {
    std::vector<Fault> faults = {Fault::Fail, Fault::Kill};
    if (call.name == "write") faults.push_back(Fault::Short);
    return faults;
}

FaultTrial::FaultTrial(Scenario scenario) : scenario_(std::move(scenario)), device_(scenario_.flashSize) {
    scenario_.prepare(device_);
    for (const char* marker : {"/flash/PCKGS_CHANGED", "/flash/UPGRADED"})
        fs::remove(marker);  // the system has seen them
    fs::create_directory(SAVED);
    for (const std::string& place : PLACES) fs::copy(place, SAVED + place, FULL_COPY);
    restore();
    before_ = liveFiles(device_);
    FaultInjector watcher;
    carryOut(watcher);
    reference_ = liveFiles(device_);
    calls_ = watcher.calls();
    const auto begin = std::ranges::find_if(calls_, [](const FileCall& call) { return isLive(call.path); });
    commitBegin_ = static_cast<std::size_t>(begin - calls_.begin());
    if (begin == calls_.end()) throw std::runtime_error(scenario_.name + " changes nothing");
}

void FaultTrial::restore() const {
    for (const std::string& place : PLACES) {
        for (const auto& entry : fs::directory_iterator(place)) fs::remove_all(entry.path());
        fs::copy(SAVED + place, place, FULL_COPY);
    }
}

/// True if an error was told.
bool FaultTrial::carryOut(FaultInjector& injector) const {
    std::string told;
    for (const Lines& command : scenario_.commands)
        if (!injector.hasKilled()) told += device_.run(command, scenario_.input, &injector).out;
    return told.find("ERROR: ") != std::string::npos;
}

std::string FaultTrial::attempt(std::size_t point, Fault fault) {
    restore();
    FaultInjector injector(point, fault);
    Aftermath aftermath;
    aftermath.hasToldError = carryOut(injector);
    aftermath.flash = liveFiles(device_);
    aftermath.temporaryFiles = temporaryFiles(device_);
    FaultInjector watcher;
    carryOut(watcher);
    aftermath.nextFlash = liveFiles(device_);
    aftermath.nextTemporaryFiles = temporaryFiles(device_);

    const bool isReached = injector.calls().size() > point;
    const FileCall call = isReached ? injector.calls()[point] : FileCall{};
    std::string violations;
    if (inWords(call) != inWords(calls_[point])) violations += "in its place came: " + inWords(call) + '\n';
    if (fault == Fault::Fail) violations += checkError(point, call, targetsOf(call, injector.calls()), aftermath);
    if (fault == Fault::Kill) violations += checkKill(point, aftermath);
    if (fault == Fault::Short)
        for (const Tree* flash : {&aftermath.flash, &aftermath.nextFlash})
            for (const std::string& name : differences(*flash, reference_)) violations += name + " differs\n";
    violations += checkTemporaryFiles(injector, call, fault == Fault::Kill, aftermath);
    if (violations.empty()) return "";
    const char* kind = fault == Fault::Fail ? "failed" : fault == Fault::Kill ? "killed" : "short";
    return scenario_.name + ", call " + std::to_string(point) + ' ' + kind + ": " + inWords(calls_[point]) + '\n' +
           violations;
}

/// A file that is to be copied need not be either. Nor need a link: it has no temporary file, and is gone between
/// the removal of the old one and the making of the new one.
bool FaultTrial::isOldOrNew(const Tree& flash, const std::string& name) const {
    const std::string content = contentIn(flash, name);
    const bool isMissingLink = content.empty() && contentIn(reference_, name).find(" -> ") != std::string::npos;
    return content == contentIn(before_, name) || content == contentIn(reference_, name) || isMissingLink ||
           scenario_.copied.contains(name) || name.ends_with('/');
}

/// Whether the commit changes the file at the call or behind it.
bool FaultTrial::isToBeReached(const std::string& name, std::size_t point) const {
    return std::any_of(calls_.begin() + static_cast<std::ptrdiff_t>(point), calls_.end(),
                       [&](const FileCall& call) { return concerns(normal(call.path), name); });
}

std::string FaultTrial::checkError(std::size_t point, const FileCall& call, const std::set<std::string>& targets,
                                   const Aftermath& aftermath) {
    std::string violations;
    if (aftermath.flash == before_) {
        if (!aftermath.hasToldError && call.path != MANIFEST) violations += "nothing was changed, but no error told\n";
        for (const std::string& name : differences(aftermath.nextFlash, reference_))
            violations += name + " differs after the next run\n";
        return violations;
    }
    const bool isInCommit = point >= commitBegin_;
    if (!isInCommit && aftermath.flash != reference_) ++goneOn_;
    for (const Tree* flash : {&aftermath.flash, &aftermath.nextFlash})
        for (const std::string& name : differences(*flash, reference_)) {
            const bool mayDiffer = isInCommit              ? isOldOrNew(*flash, name)
                                   : call.name == "fchmod" ? hasContentOf(reference_, *flash, name)
                                                           : isStagedBlindly(name);
            const auto concernsName = [&](const std::string& target) { return concerns(target, name); };
            if (!mayDiffer || std::ranges::none_of(targets, concernsName)) violations += name + " differs\n";
        }
    return violations;
}

std::string FaultTrial::checkKill(std::size_t point, const Aftermath& aftermath) {
    std::string violations;
    for (const std::string& name : differences(aftermath.flash, before_))
        if (point < commitBegin_ || !isOldOrNew(aftermath.flash, name)) violations += name + " is not as it was\n";
    const auto stillOld = differences(aftermath.nextFlash, reference_);
    if (!stillOld.empty()) ++leftOld_;
    const auto at = [this](std::size_t number) { return calls_.begin() + static_cast<std::ptrdiff_t>(number); };
    const bool mayStayOld = point > commitBegin_ && std::any_of(at(commitBegin_), at(point), [](const FileCall& call) {
                                return isRecord(call.path);
                            });
    for (const std::string& name : stillOld)
        if (!mayStayOld || !isToBeReached(name, point) || !isOldOrNew(aftermath.nextFlash, name))
            violations += name + " differs after the next run\n";
    return violations;
}

/// Nobody clears up behind a kill, but the next run must not add to it. After any other run nothing may be
/// left but the sources of copies, which lie in "/ram" and go with the next restart, the file whose own removal
/// failed, the source of a rename that failed, for want of its directory or by itself, and all that was staged for
/// a manifest that could not be written, which nobody looks into before the next restart.
std::string FaultTrial::checkTemporaryFiles(const FaultInjector& injector, const FileCall& call, bool isKill,
                                            const Aftermath& aftermath) const {
    std::set<std::string> allowed = {call.name == "unlink" ? normal(call.path) : call.source};
    for (const FileCall& other : injector.calls())
        if (scenario_.copied.contains(other.path) || (call.name == "mkdir" && concerns(call.path, other.path)))
            allowed.insert(other.source);
    if (call.path == MANIFEST) allowed = aftermath.temporaryFiles;
    std::string violations;
    if (!isKill)
        for (const std::string& path : aftermath.temporaryFiles)
            if (!allowed.contains(path)) violations += path + " was left\n";
    for (const std::string& path : aftermath.nextTemporaryFiles)
        if (path.starts_with("/flash/") && !aftermath.temporaryFiles.contains(path))
            violations += path + " was left by the next run\n";
    return violations;
}
