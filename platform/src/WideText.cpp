#include "Ordo/MakeStdString.h"
#include "plinth/utility/NumberToString.h"

namespace {

constexpr char32_t kReplacement = 0xFFFD;

void appendUtf8(std::string& out, char32_t c) {
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

void appendUtf16(plinth::WideString& out, char32_t c) {
    if (c < 0x10000) {
        out += static_cast<char16_t>(c);
    } else {
        c -= 0x10000;
        out += static_cast<char16_t>(0xD800 + (c >> 10));
        out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    }
}

bool isHighSurrogate(char32_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool isLowSurrogate(char32_t u) { return u >= 0xDC00 && u <= 0xDFFF; }

}  // namespace

namespace Ordo {

std::string MakeStdString(const plinth::WideString& text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t unit = text[i];
        if (isHighSurrogate(unit) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
            char32_t low = text[++i];
            appendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00));
        } else if (isHighSurrogate(unit) || isLowSurrogate(unit)) {
            appendUtf8(out, kReplacement);
        } else {
            appendUtf8(out, unit);
        }
    }
    return out;
}

plinth::WideString MakeWideString(const std::string& text) {
    plinth::WideString out;
    out.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<unsigned char>(text[i]);
        int length = lead < 0x80 ? 1 : (lead >> 5) == 0x6 ? 2 : (lead >> 4) == 0xE ? 3 : (lead >> 3) == 0x1E ? 4 : 0;
        if (length == 0 || i + length > text.size()) {
            appendUtf16(out, kReplacement);
            ++i;
            continue;
        }
        char32_t c = length == 1 ? lead : lead & (0x7F >> length);
        bool valid = true;
        for (int k = 1; k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80) valid = false;
            c = (c << 6) | (next & 0x3F);
        }
        const bool overlong = (length == 2 && c < 0x80) || (length == 3 && c < 0x800) || (length == 4 && c < 0x10000);
        if (!valid || overlong || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
            appendUtf16(out, kReplacement);
            ++i;
            continue;
        }
        appendUtf16(out, c);
        i += length;
    }
    return out;
}

}  // namespace Ordo

namespace plinth::utility {

WideString NumberToString(std::int64_t value) {
    // Work on the magnitude as unsigned so the most negative value needs no negation overflow.
    std::uint64_t magnitude = value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    char16_t digits[24];
    int count = 0;
    do {
        digits[count++] = static_cast<char16_t>(u'0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    WideString out;
    if (value < 0) out += u'-';
    while (count > 0) out += digits[--count];
    return out;
}

}  // namespace plinth::utility
