// Interned identifiers: equal texts share one handle, so identifiers compare
// by identity, from any thread.
#include <gtest/gtest.h>

#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "Ordo/ImmutableString.h"

namespace {

TEST(PlatformImmutableString, SameTextFromTwoPlacesSharesTheHandle) {
    // Two separate buffers with the same characters.
    char first[] = "Internal Highpass Stereo";
    std::string second = std::string("Internal Highpass ") + "Stereo";
    ASSERT_NE(static_cast<const void*>(first), static_cast<const void*>(second.c_str()));
    Ordo::ImmutableString a = Ordo::ImmutableString::CreateStatic(first);
    Ordo::ImmutableString b = Ordo::ImmutableString::CreateStatic(second.c_str());
    EXPECT_EQ(a.Handle(), b.Handle());
    EXPECT_TRUE(a == b);
    EXPECT_STREQ(a.c_str(), "Internal Highpass Stereo");
    EXPECT_EQ(a.size(), 24u);
    // The interned text does not depend on the caller's buffer.
    first[0] = 'X';
    EXPECT_STREQ(a.c_str(), "Internal Highpass Stereo");
}

TEST(PlatformImmutableString, DifferentTextsDiffer) {
    auto a = Ordo::ImmutableString::CreateStatic("Internal Highpass Stereo");
    auto b = Ordo::ImmutableString::CreateStatic("Internal Highpass Mono");
    auto c = Ordo::ImmutableString::CreateStatic("internal highpass stereo");
    EXPECT_NE(a.Handle(), b.Handle());
    EXPECT_FALSE(a == b);
    EXPECT_FALSE(a == c);
    // A prefix is a different text.
    auto d = Ordo::ImmutableString::CreateStatic("Internal Highpass");
    EXPECT_FALSE(a == d);
}

TEST(PlatformImmutableString, EmptyAndNull) {
    Ordo::ImmutableString empty;
    auto fromEmpty = Ordo::ImmutableString::CreateStatic("");
    auto fromNull = Ordo::ImmutableString::CreateStatic(nullptr);
    EXPECT_TRUE(empty == fromEmpty);
    EXPECT_TRUE(empty == fromNull);
    EXPECT_STREQ(fromNull.c_str(), "");
    EXPECT_EQ(fromNull.size(), 0u);
    EXPECT_FALSE(empty == Ordo::ImmutableString::CreateStatic(" "));
}

TEST(PlatformImmutableString, CopiesKeepTheHandle) {
    auto a = Ordo::ImmutableString::CreateStatic("Internal Delay 5.1");
    Ordo::ImmutableString b = a;
    Ordo::ImmutableString c;
    c = a;
    EXPECT_EQ(b.Handle(), a.Handle());
    EXPECT_EQ(c.Handle(), a.Handle());
}

TEST(PlatformImmutableString, ConcurrentInterningGivesOneHandlePerText) {
    constexpr int kThreads = 8;
    constexpr int kTexts = 200;
    std::vector<std::vector<const void*>> handles(kThreads, std::vector<const void*>(kTexts));
    std::latch start(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            start.arrive_and_wait();
            // Each thread builds its own copies of the texts and walks them
            // from its own starting point, forwards or backwards, so that
            // first-time interning races from every side.
            for (int k = 0; k < kTexts; ++k) {
                int step = t % 2 == 0 ? k : kTexts - 1 - k;
                int n = (step + 25 * t) % kTexts;
                std::string text = "concurrent identifier " + std::to_string(n);
                handles[t][n] = Ordo::ImmutableString::CreateStatic(text.c_str()).Handle();
            }
        });
    }
    for (auto& thread : threads) thread.join();
    for (int n = 0; n < kTexts; ++n) {
        ASSERT_NE(handles[0][n], nullptr);
        for (int t = 1; t < kThreads; ++t) EXPECT_EQ(handles[t][n], handles[0][n]) << "text " << n << " thread " << t;
        std::string text = "concurrent identifier " + std::to_string(n);
        EXPECT_EQ(Ordo::ImmutableString::CreateStatic(text.c_str()).Handle(), handles[0][n]);
    }
    // Distinct texts, distinct handles.
    for (int n = 1; n < kTexts; ++n) EXPECT_NE(handles[0][n], handles[0][n - 1]);
}

}  // namespace
