#pragma once
// A cursor over the words of a command line and the small parsers the commands
// share. Every parser throws UsageError with a message that names the option.
#include <cstddef>
#include <string>
#include <vector>

namespace afx {

class Arguments {
public:
    explicit Arguments(std::vector<std::string> words) : words_(std::move(words)) {}

    bool done() const { return next_ >= words_.size(); }
    const std::string& peek() const { return words_[next_]; }
    std::string take() { return words_[next_++]; }
    // Puts a word back to be taken next (the value of "--option=value").
    void pushFront(const std::string& word) { words_.insert(words_.begin() + static_cast<long>(next_), word); }
    // The value that must follow `option`; a missing one is a usage error.
    std::string valueFor(const std::string& option);

private:
    std::vector<std::string> words_;
    std::size_t next_ = 0;
};

// True for "-x", "--long", but not for "-" alone or a negative number.
bool looksLikeOption(const std::string& word);

std::string trimBlanks(const std::string& text);
std::string toLower(const std::string& text);
bool equalsIgnoringCase(const std::string& a, const std::string& b);

// Whole-string conversions; `what` names the value in the error message.
long parseInteger(const std::string& text, const std::string& what);
double parseDouble(const std::string& text, const std::string& what);
// strtof over the whole text: the float the user typed, bit for bit.
float parseFloatExactly(const std::string& text, const std::string& what);

// Splits "NAME=VALUE" at the last '='; a missing '=' is a usage error.
void splitAssignment(const std::string& text, const std::string& option, std::string& name, std::string& value);

}  // namespace afx
