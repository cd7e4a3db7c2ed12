#include "run/start_up.h"

#include <cstdio>
#include <cstdlib>

#include <unistd.h>

#include "console/package_table.h"
#include "database/package_db.h"
#include "run/scheduled_mode.h"
#include "run/standard_input_mode.h"

namespace {

void enterRoot(const std::string& root) {
    if (!root.empty() && ::chroot(root.c_str()) != 0) ::perror("chroot");
    (void)!::chdir("/");
}

std::string architectureName() {
    const char* name = std::getenv("arch");
    return name != nullptr ? name : "i386";
}

}  // namespace

int runStartUp(const RunOptions& options) {
    enterRoot(options.root);
    PackageDb& db = PackageDb::instance();
    db.load(options.quiet, architectureName());
    if (options.showTable) {
        printPackageTable(db);
        return 0;
    }
    return options.fromStdin ? runStandardInputMode(db, options) : runScheduledMode(db, options);
}
