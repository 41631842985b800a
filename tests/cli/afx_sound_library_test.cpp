// afx opens libsndfile only when a command touches an audio file. Where the
// library cannot be opened (here a broken file of its name is found first),
// the listing still works and a render fails with one error line that names
// the library, instead of afx not starting at all.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <optional>

#include "AfxRunner.h"
#include "WavFiles.h"

namespace afxtest {
namespace {

// Sets an environment variable for the lifetime of the object, then restores it.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const std::string& value) : name_(name) {
        if (const char* old = std::getenv(name)) old_ = old;
        ::setenv(name, value.c_str(), 1);
    }
    ~ScopedVariable() {
        if (old_) ::setenv(name_, old_->c_str(), 1);
        else ::unsetenv(name_);
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    const char* name_;
    std::optional<std::string> old_;
};

TEST(AfxSoundLibrary, ListingNeedsNoSoundLibraryAndARenderSaysWhatIsMissing) {
    ScratchFolder folder;
    writeFloatWav(folder.file("in.wav"), 2, 44100, std::vector<float>(64, 0.25f));
    std::ofstream(folder.file("libsndfile.so.1")) << "not a library\n";
    const ScopedVariable searchFirst("LD_LIBRARY_PATH", folder.path());

    const Outcome list = runAfx({"list", "--module", kFakeModule});
    EXPECT_EQ(list.exitStatus, 0) << list.err;
    EXPECT_EQ(lines(list.out).size(), 4u) << list.out;

    const Outcome render = runAfx({"render", folder.file("in.wav"), folder.file("out.wav"), "-e", "Test Gain Stereo",
                                   "--module", kFakeModule});
    EXPECT_EQ(render.exitStatus, 1);
    const auto errorLines = lines(render.err);
    ASSERT_EQ(errorLines.size(), 1u) << render.err;
    EXPECT_EQ(errorLines[0].rfind("afx: error: cannot read input '", 0), 0u) << errorLines[0];
    EXPECT_NE(errorLines[0].find("cannot load libsndfile.so.1"), std::string::npos) << errorLines[0];
    EXPECT_FALSE(exists(folder.file("out.wav")));
}

}  // namespace
}  // namespace afxtest
