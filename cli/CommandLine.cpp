#include "CommandLine.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>

#include "Errors.h"

namespace afx {

std::string Arguments::valueFor(const std::string& option) {
    if (done() || looksLikeOption(peek())) throw UsageError("option " + option + " needs a value (see afx --help)");
    return take();
}

bool looksLikeOption(const std::string& word) {
    if (word.size() < 2 || word[0] != '-') return false;
    const unsigned char second = static_cast<unsigned char>(word[1]);
    return !(std::isdigit(second) || second == '.');
}

std::string trimBlanks(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return {};
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

std::string toLower(const std::string& text) {
    std::string lower = text;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower;
}

bool equalsIgnoringCase(const std::string& a, const std::string& b) { return toLower(a) == toLower(b); }

long parseInteger(const std::string& text, const std::string& what) {
    const std::string trimmed = trimBlanks(text);
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(trimmed.c_str(), &end, 10);
    if (trimmed.empty() || *end != '\0' || errno == ERANGE)
        throw UsageError(what + " must be a whole number, not '" + text + "'");
    return value;
}

double parseDouble(const std::string& text, const std::string& what) {
    const std::string trimmed = trimBlanks(text);
    // Decimal numbers only: strtod would also take "0x10", "inf" and "nan".
    if (trimmed.find_first_not_of("0123456789+-.eE") != std::string::npos)
        throw UsageError(what + " must be a number in decimal, not '" + text + "'");
    char* end = nullptr;
    errno = 0;
    const double value = std::strtod(trimmed.c_str(), &end);
    if (trimmed.empty() || *end != '\0') throw UsageError(what + " must be a number, not '" + text + "'");
    return value;
}

float parseFloatExactly(const std::string& text, const std::string& what) {
    const std::string trimmed = trimBlanks(text);
    char* end = nullptr;
    const float value = std::strtof(trimmed.c_str(), &end);
    if (trimmed.empty() || *end != '\0') throw UsageError(what + " must be a number, not '" + text + "'");
    return value;
}

void splitAssignment(const std::string& text, const std::string& option, std::string& name, std::string& value) {
    const std::size_t equals = text.rfind('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size())
        throw UsageError(option + " expects NAME=VALUE, not '" + text + "'");
    name = text.substr(0, equals);
    value = text.substr(equals + 1);
}

}  // namespace afx
