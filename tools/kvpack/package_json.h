#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kvpack/part_contents.h"
#include "kvpack/verify_findings.h"

/// The JSON documents that kvpack prints, each with a line end. Bytes that are no UTF-8 become U+FFFD.

std::string filesJson(const std::vector<FileRecord>& files);
std::string findingsJson(const Findings& findings);

/// magic:  in hexadecimal digits.
/// length: by the file header, in bytes.
std::string packageJson(const std::string& magic, std::uint32_t length, const std::vector<PartContents>& parts,
                        bool isWhole);
