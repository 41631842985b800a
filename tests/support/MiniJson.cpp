#include "support/MiniJson.h"

#include <bit>
#include <cstdlib>

namespace aftest {

const JsonValue* JsonValue::get(std::string_view key) const {
    if (kind != Kind::kObject) return nullptr;
    for (const auto& [name, value] : object) {
        if (name == key) return &value;
    }
    return nullptr;
}

namespace {

class Parser {
public:
    explicit Parser(std::string_view text) : text_(text) {}

    std::optional<JsonValue> document(std::string* error) {
        JsonValue value;
        bool ok = parseValue(value, 0);
        skipBlanks();
        if (ok && pos_ != text_.size()) ok = fail("trailing characters");
        if (!ok) {
            if (error != nullptr) *error = error_ + " at offset " + std::to_string(pos_);
            return std::nullopt;
        }
        return value;
    }

private:
    static constexpr int kMaxDepth = 64;

    bool fail(const char* why) {
        if (error_.empty()) error_ = why;
        return false;
    }
    void skipBlanks() {
        while (pos_ < text_.size() &&
               (text_[pos_] == ' ' || text_[pos_] == '\n' || text_[pos_] == '\r' || text_[pos_] == '\t')) {
            ++pos_;
        }
    }
    bool consume(char expected) {
        skipBlanks();
        if (pos_ < text_.size() && text_[pos_] == expected) {
            ++pos_;
            return true;
        }
        return false;
    }
    bool literal(std::string_view word) {
        if (text_.substr(pos_, word.size()) != word) return fail("unknown literal");
        pos_ += word.size();
        return true;
    }

    bool parseValue(JsonValue& out, int depth) {
        if (depth > kMaxDepth) return fail("nesting too deep");
        skipBlanks();
        if (pos_ >= text_.size()) return fail("unexpected end");
        const char c = text_[pos_];
        if (c == '{') return parseObject(out, depth);
        if (c == '[') return parseArray(out, depth);
        if (c == '"') {
            out.kind = JsonValue::Kind::kString;
            return parseString(out.string);
        }
        if (c == 't') {
            out.kind = JsonValue::Kind::kBool;
            out.boolean = true;
            return literal("true");
        }
        if (c == 'f') {
            out.kind = JsonValue::Kind::kBool;
            return literal("false");
        }
        if (c == 'n') return literal("null");
        return parseNumber(out);
    }

    bool parseObject(JsonValue& out, int depth) {
        out.kind = JsonValue::Kind::kObject;
        ++pos_;
        if (consume('}')) return true;
        do {
            skipBlanks();
            std::string key;
            if (pos_ >= text_.size() || text_[pos_] != '"') return fail("expected a member name");
            if (!parseString(key)) return false;
            if (!consume(':')) return fail("expected ':'");
            JsonValue value;
            if (!parseValue(value, depth + 1)) return false;
            out.object.push_back(JsonValue::Member{std::move(key), std::move(value)});
        } while (consume(','));
        return consume('}') || fail("expected '}'");
    }

    bool parseArray(JsonValue& out, int depth) {
        out.kind = JsonValue::Kind::kArray;
        ++pos_;
        if (consume(']')) return true;
        do {
            JsonValue value;
            if (!parseValue(value, depth + 1)) return false;
            out.array.push_back(std::move(value));
        } while (consume(','));
        return consume(']') || fail("expected ']'");
    }

    static void appendUtf8(std::string& out, unsigned codePoint) {
        if (codePoint < 0x80) {
            out += static_cast<char>(codePoint);
        } else if (codePoint < 0x800) {
            out += static_cast<char>(0xC0 | (codePoint >> 6));
            out += static_cast<char>(0x80 | (codePoint & 0x3F));
        } else {
            out += static_cast<char>(0xE0 | (codePoint >> 12));
            out += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (codePoint & 0x3F));
        }
    }

    bool parseString(std::string& out) {
        ++pos_;  // the opening quote
        while (pos_ < text_.size()) {
            const char c = text_[pos_++];
            if (c == '"') return true;
            if (c != '\\') {
                out += c;
                continue;
            }
            if (pos_ >= text_.size()) break;
            const char escaped = text_[pos_++];
            switch (escaped) {
                case '"': out += '"'; break;
                case '\\': out += '\\'; break;
                case '/': out += '/'; break;
                case 'b': out += '\b'; break;
                case 'f': out += '\f'; break;
                case 'n': out += '\n'; break;
                case 'r': out += '\r'; break;
                case 't': out += '\t'; break;
                case 'u': {
                    if (pos_ + 4 > text_.size()) return fail("short \\u escape");
                    const std::string hex(text_.substr(pos_, 4));
                    char* end = nullptr;
                    const unsigned long codePoint = std::strtoul(hex.c_str(), &end, 16);
                    if (end != hex.c_str() + 4) return fail("bad \\u escape");
                    appendUtf8(out, static_cast<unsigned>(codePoint));
                    pos_ += 4;
                    break;
                }
                default: return fail("bad escape");
            }
        }
        return fail("unterminated string");
    }

    bool parseNumber(JsonValue& out) {
        const std::size_t start = pos_;
        while (pos_ < text_.size() && std::string_view("+-0123456789.eE").find(text_[pos_]) != std::string_view::npos) {
            ++pos_;
        }
        if (pos_ == start) return fail("unexpected character");
        const std::string digits(text_.substr(start, pos_ - start));
        char* end = nullptr;
        out.kind = JsonValue::Kind::kNumber;
        out.number = std::strtod(digits.c_str(), &end);
        if (end != digits.c_str() + digits.size()) return fail("bad number");
        return true;
    }

    std::string_view text_;
    std::size_t pos_ = 0;
    std::string error_;
};

int base64Digit(char c) {
    if (c >= 'A' && c <= 'Z') return c - 'A';
    if (c >= 'a' && c <= 'z') return c - 'a' + 26;
    if (c >= '0' && c <= '9') return c - '0' + 52;
    if (c == '+') return 62;
    if (c == '/') return 63;
    return -1;
}

}  // namespace

std::optional<JsonValue> parseJson(std::string_view text, std::string* error) { return Parser(text).document(error); }

std::optional<std::vector<std::uint8_t>> decodeBase64(std::string_view text) {
    std::vector<std::uint8_t> out;
    std::uint32_t accumulator = 0;
    int bitCount = 0;
    int padding = 0;
    for (char c : text) {
        if (c == ' ' || c == '\n' || c == '\r' || c == '\t') continue;
        if (c == '=') {
            ++padding;
            continue;
        }
        const int digit = base64Digit(c);
        if (digit < 0 || padding > 0) return std::nullopt;  // bad character, or data after padding
        accumulator = (accumulator << 6) | static_cast<std::uint32_t>(digit);
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            out.push_back(static_cast<std::uint8_t>((accumulator >> bitCount) & 0xFF));
        }
    }
    if (padding > 2) return std::nullopt;
    return out;
}

std::optional<std::vector<float>> floatsFromLittleEndian(const std::vector<std::uint8_t>& bytes) {
    if (bytes.size() % 4 != 0) return std::nullopt;
    std::vector<float> out;
    out.reserve(bytes.size() / 4);
    for (std::size_t i = 0; i < bytes.size(); i += 4) {
        const std::uint32_t word = static_cast<std::uint32_t>(bytes[i]) | (static_cast<std::uint32_t>(bytes[i + 1]) << 8) |
                                   (static_cast<std::uint32_t>(bytes[i + 2]) << 16) |
                                   (static_cast<std::uint32_t>(bytes[i + 3]) << 24);
        out.push_back(std::bit_cast<float>(word));
    }
    return out;
}

}  // namespace aftest
