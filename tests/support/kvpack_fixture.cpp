#include "support/kvpack_fixture.h"

#include <filesystem>
#include <iterator>
#include <sstream>

#include "kvpack/command_line.h"
#include "support/host.h"

KvpackResult kvpack(const std::string& line) {
    std::istringstream words("kvpack " + line);
    const Lines arguments{std::istream_iterator<std::string>(words), {}};
    std::vector<const char*> argv;
    for (const std::string& argument : arguments) argv.push_back(argument == "''" ? "" : argument.c_str());
    std::ostringstream out;
    std::ostringstream err;
    const int code = runKvpack(static_cast<int>(argv.size()), argv.data(), out, err);
    return {code, out.str(), err.str()};
}

KvpackResult build(const std::string& name, const std::string& more) {
    return kvpack("build --version 7.2 --build-time 1767225600 --keys /keys -o /out/" + name + ".kvp --name " + name +
                  ' ' + more);
}

KvpackResult bundled(const std::string& members) {
    return kvpack("bundle --name suite --version 6.48_ab5 --build-time 7 -o /out/suite.kvp " + members);
}

KvpackTest::KvpackTest() {
    std::filesystem::create_directories("/out");
    for (const std::string name : {"/ed25519.key", "/kcdsa.key"})
        device.write("/keys" + name, hostFile(SOURCE_FOLDER "/keys/development" + name));
}
