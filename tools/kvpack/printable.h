#pragma once

#include <string>

/// Text from a package as one safe line: what is no printable ASCII character shows as a dot.
inline std::string printable(std::string text) {
    for (char& c : text)
        if (c < ' ' || c > '~') c = '.';
    return text;
}
