#include "kvpack/every_part.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

void wantEveryPart(PartReader& reader) {
    std::vector<PartId> ids(0x10000);
    std::iota(ids.begin(), ids.end(), 0);
    reader.want(ids);
}

std::string readPiece(PartReader& reader) {
    std::string piece(std::min<std::uint32_t>(reader.partLeft(), 65536), '\0');
    reader.read(piece.data(), static_cast<std::streamsize>(piece.size()));
    piece.resize(static_cast<std::size_t>(reader.gcount()));
    return piece;
}
