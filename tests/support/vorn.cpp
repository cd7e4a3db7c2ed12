// Stands in for the boot-stage program of a device: tells how it was started.

#include <filesystem>
#include <fstream>

int main(int argc, char* argv[]) {
    std::ofstream calls("/rw/vorn-calls", std::ios::app);
    calls << std::filesystem::current_path().string() << ':';
    for (int i = 0; i < argc; ++i) calls << ' ' << argv[i];
    calls << '\n';
    return 1;  // which nobody looks at
}
