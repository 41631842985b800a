#pragma once
// Just enough JSON for afx's --json output: escaped strings and numbers that
// read back as the same float (non-finite numbers become null).
#include <cmath>
#include <cstdio>
#include <string>

namespace afx {

inline std::string jsonString(const std::string& text) {
    std::string out = "\"";
    for (unsigned char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
            out += escaped;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out + "\"";
}

inline std::string jsonNumber(double value) {
    if (!std::isfinite(value)) return "null";
    char text[40];
    std::snprintf(text, sizeof text, "%.9g", value);
    return text;
}

}  // namespace afx
