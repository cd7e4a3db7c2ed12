// Makes the same tree of files at every call: make_tree DIRECTORY COUNT SIZE. A hundred files to a directory.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

namespace {

/// A multiplicative generator (Knuth, MMIX); the upper half of its state is the better one.
class Random {
public:
    std::uint32_t next() {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::uint32_t>(state_ >> 32);
    }

private:
    std::uint64_t state_ = 1;
};

/// Bytes that deflate to about half, as programs do: random words of which each comes back now and then.
std::string content(Random& random, std::size_t size) {
    std::string text;
    text.reserve(size + 8);
    while (text.size() < size) {
        const std::uint32_t word = random.next();
        if (word % 2 == 0 && text.size() > 64)
            text.append(text, text.size() - 8 - word % 56, 8);
        else
            text.append(reinterpret_cast<const char*>(&word), sizeof word);
    }
    text.resize(size);
    return text;
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc != 4) {
        std::cerr << "usage: make_tree DIRECTORY COUNT SIZE\n";
        return 2;
    }
    const std::filesystem::path directory = argv[1];
    const unsigned long count = std::strtoul(argv[2], nullptr, 10);
    const std::size_t size = std::strtoull(argv[3], nullptr, 10);
    constexpr std::size_t PIECE = 1 << 20;
    Random random;
    for (unsigned long i = 0; i < count; ++i) {
        const auto parent = directory / ("directory-" + std::to_string(i / 100));
        std::filesystem::create_directories(parent);
        std::ofstream file(parent / ("file-" + std::to_string(i)), std::ios::binary);
        for (std::size_t left = size; left != 0; left -= std::min(left, PIECE))
            file << content(random, std::min(left, PIECE));
        if (!file.flush()) {
            std::cerr << "make_tree: cannot write below " << directory << '\n';
            return 1;
        }
    }
    return 0;
}
