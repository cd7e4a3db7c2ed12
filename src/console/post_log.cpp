#include "console/post_log.h"

#include <fstream>
#include <string>

#include <unistd.h>

#include "database/package_db.h"

namespace {

constexpr const char* POST_LOG = "/flash/postlog";
constexpr std::size_t BLOCK_SIZE = 4096;

bool postLogTaken = false;

}  // namespace

void takeOverPostLog(PackageDb& db) {
    std::ifstream earlier(POST_LOG);
    for (std::string line; std::getline(earlier, line) && !earlier.eof();) db.messages.push_back(line);
    earlier.close();
    std::ofstream(POST_LOG) << std::string(BLOCK_SIZE, '\0');
    postLogTaken = true;
}

void flushPostLog(const PackageDb& db) {
    if (!postLogTaken && db.messages.empty()) return;
    std::ofstream log(POST_LOG, postLogTaken ? std::ios::trunc : std::ios::app);
    ::sync();
    for (const std::string& line : db.messages) log << line << '\n';
}
