// The least that an installation of a package can be: yardstick DIRECTORY < PACKAGE reads the package, hashes
// it, inflates its files and writes them where they go, with no staging and no checks. What it costs is what
// the installer is measured by.

#include <array>
#include <cerrno>
#include <cstdio>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include "package/bytes.h"
#include "package/container.h"
#include "package/file_record.h"
#include "platform/cipherkit.h"

namespace {

/// Reads as much as there is, up to the size of the buffer.
std::size_t readInput(std::span<std::byte> buffer) {
    std::size_t done = 0;
    for (ssize_t got = 1; done < buffer.size() && got > 0; done += got > 0 ? static_cast<std::size_t>(got) : 0)
        got = ::read(STDIN_FILENO, buffer.data() + done, buffer.size() - done);
    return done;
}

/// Writes the file records of an inflated stream as they come, in whatever pieces.
class RecordWriter {
public:
    explicit RecordWriter(std::string directory) : directory_(std::move(directory) + '/') {}

    void take(std::span<const std::byte> bytes) {
        while (!bytes.empty()) bytes = bytes.subspan(fd_ >= 0 ? takeData(bytes) : takeHead(bytes));
    }

private:
    /// Gathers the head and the name of a record. Returns how many bytes it took.
    std::size_t takeHead(std::span<const std::byte> bytes) {
        const std::size_t before = head_.size();
        std::size_t wanted = RECORD_HEAD_SIZE;
        if (before >= wanted) wanted += nameLength();
        const auto taken = std::min(wanted - before, bytes.size());
        head_ += asText(bytes.first(taken));
        if (head_.size() >= RECORD_HEAD_SIZE && head_.size() == RECORD_HEAD_SIZE + nameLength()) openFile();
        return taken;
    }

    std::size_t takeData(std::span<const std::byte> bytes) {
        const auto taken = std::min<std::size_t>(left_, bytes.size());
        if (::write(fd_, bytes.data(), taken) != static_cast<ssize_t>(taken)) std::perror("write");
        left_ -= static_cast<std::uint32_t>(taken);
        closeIfDone();
        return taken;
    }

    std::span<const std::byte> headBytes() const { return std::as_bytes(std::span(head_)); }

    std::size_t nameLength() const { return loadU16(headBytes().subspan(RECORD_NAME_LENGTH_OFFSET).first<2>()); }

    void openFile() {
        left_ = loadU32(headBytes().subspan(RECORD_DATA_LENGTH_OFFSET).first<4>());
        const std::string path = directory_ + head_.substr(RECORD_HEAD_SIZE);
        const int flags = O_WRONLY | O_CREAT | O_TRUNC;
        const auto mode = loadU16(headBytes().first<2>()) & 07777U;
        fd_ = ::open(path.c_str(), flags, mode);
        if (fd_ < 0 && errno == ENOENT) {
            (void)::mkdir(path.substr(0, path.rfind('/')).c_str(), 0777);
            fd_ = ::open(path.c_str(), flags, mode);
        }
        if (fd_ < 0) std::perror(path.c_str());
        head_.clear();
        closeIfDone();
    }

    void closeIfDone() {
        if (left_ != 0) return;
        (void)::close(fd_);
        fd_ = -1;
    }

    std::string directory_;
    std::string head_;  // of the record at hand, with its name
    int fd_ = -1;
    std::uint32_t left_ = 0;
};

}  // namespace

int main(int argc, char* argv[]) {
    if (argc != 2) {
        std::fputs("usage: yardstick DIRECTORY < PACKAGE\n", stderr);
        return 2;
    }
    static std::array<std::byte, 65536> input;
    static std::array<std::byte, 65536> output;
    SHA256 hash;
    RecordWriter writer(argv[1]);
    (void)readInput(std::span(input).first<FILE_HEADER_SIZE>());
    std::array<std::byte, PART_HEADER_SIZE> header;
    while (readInput(header) == header.size()) {
        hash.update(header);
        z_stream zstream{};
        (void)inflateInit(&zstream);
        for (std::size_t left = loadU32(std::span(header).last<4>()); left != 0;) {
            const auto piece = std::span(input).first(readInput(std::span(input).first(std::min(left, input.size()))));
            if (piece.empty()) return 1;
            left -= piece.size();
            hash.update(piece);
            if (loadU16(std::span(header).first<2>()) != PART_FILES) continue;
            zstream.next_in = reinterpret_cast<const Bytef*>(piece.data());
            zstream.avail_in = static_cast<uInt>(piece.size());
            do {
                zstream.next_out = reinterpret_cast<Bytef*>(output.data());
                zstream.avail_out = static_cast<uInt>(output.size());
                if (inflate(&zstream, Z_NO_FLUSH) < Z_OK) break;
                writer.take(std::span(output).first(output.size() - zstream.avail_out));
            } while (zstream.avail_out == 0);
        }
        (void)inflateEnd(&zstream);
    }
    std::array<std::byte, SHA256::DIGEST_SIZE> digest;
    hash.finish(digest);
    return 0;
}
