#pragma once
// A small JSON reader and base64 decoder for the test data (no dependency).
// Enough for the reference vectors: objects, arrays, strings (with escapes),
// numbers, true, false, null.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace aftest {

struct JsonValue {
    struct Member;  // a name and its value (complete below, once JsonValue is)
    enum class Kind { kNull, kBool, kNumber, kString, kArray, kObject };
    Kind kind = Kind::kNull;
    bool boolean = false;
    double number = 0.0;
    std::string string;
    std::vector<JsonValue> array;
    std::vector<Member> object;  // in file order

    // The member `key` of an object; null if absent or not an object.
    const JsonValue* get(std::string_view key) const;
};

// Its own type rather than a std::pair: a pair of an incomplete value inside
// the value's own definition is refused by some standard libraries.
struct JsonValue::Member {
    std::string name;
    JsonValue value;
};

// Parses a whole document; on error returns nothing and says where in `error`.
std::optional<JsonValue> parseJson(std::string_view text, std::string* error = nullptr);

// Standard base64 (with '=' padding; whitespace ignored); nothing on bad input.
std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text);

// Little-endian 32-bit floats; nothing when the byte count is not a multiple of 4.
std::optional<std::vector<float>> floatsFromLittleEndian(const std::vector<std::uint8_t>& bytes);

}  // namespace aftest
