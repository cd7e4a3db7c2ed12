#include "package/inflate_stream.h"

#include <algorithm>
#include <sstream>
#include <string>

#include <fuzzer/FuzzedDataProvider.h>

#include "device.h"

/// Reading and seeking in a made-up zlib stream, next to what zlib gives for it in one piece. The first bytes of the
/// input are the steps, the rest is the stream.

namespace {

constexpr std::size_t STEP_BYTES = 8;
constexpr std::size_t MAX_INFLATED = 1U << 17;

struct Inflated {
    std::string bytes;
    bool isWhole;  ///< the stream was sound to its end
};

Inflated inflateAtOnce(std::string_view stream) {
    Inflated result = {.bytes = std::string(MAX_INFLATED, '\0'), .isWhole = false};
    z_stream zstream{};
    require(inflateInit(&zstream) == Z_OK);
    zstream.next_in = reinterpret_cast<const Bytef*>(stream.data());
    zstream.avail_in = static_cast<uInt>(stream.size());
    zstream.next_out = reinterpret_cast<Bytef*>(result.bytes.data());
    zstream.avail_out = static_cast<uInt>(result.bytes.size());
    result.isWhole = inflate(&zstream, Z_SYNC_FLUSH) == Z_STREAM_END;
    result.bytes.resize(zstream.total_out);
    (void)inflateEnd(&zstream);
    return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::size_t stepBytes = std::min(size, STEP_BYTES);
    FuzzedDataProvider steps(data, stepBytes);
    const std::string_view stream = asText(data + stepBytes, size - stepBytes);
    const Inflated expected = inflateAtOnce(stream);
    if (expected.bytes.size() == MAX_INFLATED) return 0;

    std::stringbuf source{std::string(stream)};
    InflateStream in(source);
    std::string piece;
    std::size_t position = 0;
    while (in.good()) {
        const auto length = steps.ConsumeIntegralInRange<std::size_t>(1, 10000);  // 1 where the steps have run out
        if (steps.ConsumeBool()) {
            // Forwards as far as there is anything, and never back.
            const bool moved = !in.seekg(static_cast<std::streamoff>(length), std::ios::cur).fail();
            require(!moved || position + length <= expected.bytes.size());
            require(!expected.isWhole || moved == (position + length <= expected.bytes.size()));
            position += length;
            if (moved && position > 0) {
                require(in.seekg(static_cast<std::streamoff>(position - 1)).fail());
                in.clear();
                require(in.tellg() == static_cast<std::streamoff>(position));
            }
            continue;
        }
        piece.resize(steps.remaining_bytes() == 0 ? MAX_INFLATED : length);
        in.read(piece.data(), static_cast<std::streamsize>(piece.size()));
        piece.resize(static_cast<std::size_t>(in.gcount()));
        require(expected.bytes.compare(position, piece.size(), piece) == 0);
        position += piece.size();
        require(!expected.isWhole || in.good() || position == expected.bytes.size());
    }
    return 0;
}
