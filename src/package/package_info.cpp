#include "package/package_info.h"

bool PackageInfo::hasUsableName() const {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

std::string dependencyText(const PackageDependency& dependency) {
    if (dependency.minVersion == 0) return dependency.name;
    return dependency.name + '-' + versionText(dependency.minVersion);
}

std::string nameVersion(const PackageInfo& package) { return package.name + '-' + versionText(package.version); }
