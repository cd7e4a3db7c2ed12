#pragma once

#include "package/part_reader.h"

/// Asks a reader for parts of every id there can be.
void wantEveryPart(PartReader& reader);

/// The next piece of the payload, at most 64 KiB. Empty at its end, and where the file ends before.
std::string readPiece(PartReader& reader);
