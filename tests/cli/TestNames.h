#pragma once
// Readable names for parameterised cases: the case's `why`, in letters,
// digits and underscores (what GoogleTest accepts in a test name).
#include <cctype>
#include <string>

namespace afxtest {

inline std::string caseName(const char* why) {
    std::string name;
    for (const char* c = why; *c != '\0'; ++c)
        name += std::isalnum(static_cast<unsigned char>(*c)) ? *c : '_';
    return name;
}

struct NameFromWhy {
    template <class Info>
    std::string operator()(const Info& info) const {
        return caseName(info.param.why);
    }
};

}  // namespace afxtest
