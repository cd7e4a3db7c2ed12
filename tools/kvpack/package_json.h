#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "kvpack/part_contents.h"

/// The JSON forms of what a package holds. Bytes that are no UTF-8 become U+FFFD when they are printed.
using Json = nlohmann::ordered_json;

Json jsonOf(const FileRecord& record);
Json jsonOf(const SignatureVerdict& verdict);

/// The members of a part's object that tell what is in it.
Json jsonOf(const PartContents& contents);

/// The text of a document, with a line end.
std::string jsonText(const Json& document);
