// Every mathematics call of the module goes through AF::math (frame/Math.h),
// whose functions take and return double only. A direct call such as
// std::log10(x) with a float x picks the single-precision overload and can
// change the last digit of a text or a coefficient; this test reads the
// module's sources (frame/, module/, effects/, platform/) and fails on any
// direct call of a <cmath> function outside Math.h.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

// The <cmath> functions that compute (classification such as isnan is not
// precision-dependent and stays allowed). Each also matches its f and l forms.
const char* const kFunctions =
    "log10|log2|log1p|log|exp2|expm1|exp|pow|sqrt|cbrt|hypot|sin|cos|tan|asin|acos|atan2|atan|sinh|cosh|tanh|"
    "floor|ceil|trunc|round|lround|llround|nearbyint|rint|fmod|remainder|modf|frexp|ldexp|fabs|fmin|fmax";

// A call not written as math::name(...): std::name(, ::name(, bare name( or
// namef(/namel(, and std::abs( (which has a float overload too).
const std::regex& rawCall() {
    static const std::regex pattern(std::string("(^|[^\\w:.>])(std::|::)?(") + kFunctions +
                                    ")[fl]?\\s*\\(|std::abs\\s*\\(");
    return pattern;
}

// The text with comments and string literals blanked, line breaks kept.
std::string withoutCommentsAndStrings(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    enum class In { Code, LineComment, BlockComment, String, Character } state = In::Code;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        switch (state) {
            case In::Code:
                if (c == '/' && next == '/') state = In::LineComment;
                else if (c == '/' && next == '*') state = In::BlockComment, ++i;
                else if (c == '"') state = In::String;
                else if (c == '\'') state = In::Character;
                out += (state == In::Code) ? c : ' ';
                continue;
            case In::LineComment:
                if (c == '\n') state = In::Code;
                break;
            case In::BlockComment:
                if (c == '*' && next == '/') state = In::Code, ++i;
                break;
            case In::String:
            case In::Character:
                if (c == '\\') ++i;
                else if ((state == In::String && c == '"') || (state == In::Character && c == '\'')) state = In::Code;
                break;
        }
        out += (c == '\n') ? '\n' : ' ';
    }
    return out;
}

// "file:line: text" for every direct call in `text`.
std::vector<std::string> rawCallsIn(const std::string& name, const std::string& text) {
    std::vector<std::string> found;
    std::istringstream code(withoutCommentsAndStrings(text));
    std::istringstream original(text);
    std::string line, originalLine;
    for (int number = 1; std::getline(code, line) && std::getline(original, originalLine); ++number)
        if (std::regex_search(line, rawCall())) found.push_back(name + ":" + std::to_string(number) + ": " + originalLine);
    return found;
}

bool isSource(const fs::path& path) {
    const std::string ext = path.extension().string();
    return ext == ".h" || ext == ".hpp" || ext == ".cpp" || ext == ".cc" || ext == ".inl";
}

TEST(MathCalls, ThePatternTellsDirectCallsFromRoutedOnes) {
    // Calls that must be refused.
    for (const char* line : {"float y = std::log10(x);", "y = log10f(x);", "y = ::sqrt(x);", "y = pow(a, b);",
                             "y = std::sin (w);", "y = std::abs(x);", "(floor(x))", "y=fmodl(a,b);"})
        EXPECT_FALSE(rawCallsIn("t", line).empty()) << line;
    // Calls and words that must pass.
    for (const char* line : {"y = AF::math::log10(x);", "y = math::pow(a, b);", "// 20 log10(2 x level)",
                             "const char* s = \"sqrt(2)\";", "bool b = std::isnan(x);", "double cosW = 0;",
                             "angle.sin(w);", "p->floor(x);", "/* pow(10, x) */ int a;", "double logarithm(x);"})
        EXPECT_TRUE(rawCallsIn("t", line).empty()) << line;
    // A block comment spanning lines hides what it contains.
    EXPECT_TRUE(rawCallsIn("t", "/* first\n sqrt(x)\n */ int a;").empty());
}

TEST(MathCalls, TheModuleCallsMathematicsOnlyThroughTheDoubleFunctions) {
    const fs::path root = AF_SOURCE_DIR;
    ASSERT_TRUE(fs::is_regular_file(root / "frame" / "Math.h")) << root;
    std::vector<std::string> found;
    int scanned = 0;
    for (const char* folder : {"frame", "module", "effects", "platform"}) {
        ASSERT_TRUE(fs::is_directory(root / folder)) << (root / folder);
        for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
            if (!entry.is_regular_file() || !isSource(entry.path())) continue;
            if (entry.path() == root / "frame" / "Math.h") continue;  // the one place that calls <cmath>
            std::ifstream in(entry.path(), std::ios::binary);
            std::stringstream text;
            text << in.rdbuf();
            for (auto& call : rawCallsIn(fs::relative(entry.path(), root).string(), text.str()))
                found.push_back(std::move(call));
            ++scanned;
        }
    }
    // The module has well over fifty source files; a handful means a wrong root.
    EXPECT_GT(scanned, 50);
    std::string report;
    for (const auto& call : found) report += "\n  " + call;
    EXPECT_TRUE(found.empty()) << "direct mathematics calls (use AF::math from frame/Math.h):" << report;
}

}  // namespace
