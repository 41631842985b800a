// Speaker arrangements: a header of 8 bytes and one 112-byte record per
// speaker, allocated, copied and freed by the extended effect.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "tests/frame/RecordingEffect.h"

using namespace frame_test;

namespace {

// Speaker i, addressed from the start of the block (the declared array of 8
// is the interface's; a block holds only its own count).
VstSpeakerProperties& speaker(VstSpeakerArrangement* arrangement, int i) {
    return *reinterpret_cast<VstSpeakerProperties*>(reinterpret_cast<char*>(arrangement) + 8 + 112 * i);
}

// A speaker whose every field differs from zero and from its neighbours'.
void fillSpeaker(VstSpeakerProperties& s, int seed) {
    s.azimuth = 0.25f * static_cast<float>(seed + 1);
    s.elevation = -0.5f * static_cast<float>(seed + 1);
    s.radius = 2.0f + static_cast<float>(seed);
    s.reserved = 1024.0f + static_cast<float>(seed);
    std::memset(s.name, 0, sizeof s.name);
    std::snprintf(s.name, sizeof s.name, "Speaker %d", seed);
    s.type = 100 + seed;
    for (int i = 0; i < 28; ++i) s.future[i] = static_cast<char>(seed * 31 + i + 1);
}

// Floats compared by bit pattern: a copy must be exact.
void expectSameSpeaker(const VstSpeakerProperties& a, const VstSpeakerProperties& b) {
    EXPECT_EQ(std::bit_cast<std::uint32_t>(a.azimuth), std::bit_cast<std::uint32_t>(b.azimuth));
    EXPECT_EQ(std::bit_cast<std::uint32_t>(a.elevation), std::bit_cast<std::uint32_t>(b.elevation));
    EXPECT_EQ(std::bit_cast<std::uint32_t>(a.radius), std::bit_cast<std::uint32_t>(b.radius));
    EXPECT_EQ(std::bit_cast<std::uint32_t>(a.reserved), std::bit_cast<std::uint32_t>(b.reserved));
    EXPECT_STREQ(a.name, b.name);
    EXPECT_EQ(a.type, b.type);
    EXPECT_EQ(std::memcmp(a.future, b.future, sizeof a.future), 0);
}

TEST(FrameSpeakers, AllocateZeroesAndSetsTheCount) {
    PlainEffect effect;
    VstSpeakerArrangement* arrangement = nullptr;
    ASSERT_TRUE(effect.allocateArrangement(&arrangement, 3));
    ASSERT_NE(arrangement, nullptr);
    EXPECT_EQ(arrangement->type, 0);
    EXPECT_EQ(arrangement->numChannels, 3);
    // Every byte after the count, through the last speaker, is zero. Reading
    // exactly 8 + 112 * 3 bytes: the sanitizer build sees a short block.
    const auto* bytes = reinterpret_cast<const unsigned char*>(arrangement);
    for (int i = 8; i < 8 + 112 * 3; ++i) ASSERT_EQ(bytes[i], 0) << "byte " << i;
    // The last byte of the last speaker is writable.
    speaker(arrangement, 2).future[27] = 1;
    EXPECT_TRUE(effect.deallocateArrangement(&arrangement));
    EXPECT_EQ(arrangement, nullptr);
}

TEST(FrameSpeakers, AllocateFreesThePreviousArrangement) {
    // The leak checker of the sanitizer build sees the first block if it is not freed.
    PlainEffect effect;
    VstSpeakerArrangement* arrangement = nullptr;
    ASSERT_TRUE(effect.allocateArrangement(&arrangement, 2));
    fillSpeaker(speaker(arrangement, 0), 1);
    arrangement->type = 7;
    ASSERT_TRUE(effect.allocateArrangement(&arrangement, 5));
    EXPECT_EQ(arrangement->numChannels, 5);
    EXPECT_EQ(arrangement->type, 0);
    EXPECT_EQ(speaker(arrangement, 0).type, 0);
    EXPECT_EQ(speaker(arrangement, 0).name[0], '\0');
    EXPECT_TRUE(effect.deallocateArrangement(&arrangement));
}

TEST(FrameSpeakers, AllocateWithACountBelowOne) {
    PlainEffect effect;
    VstSpeakerArrangement* arrangement = nullptr;
    ASSERT_TRUE(effect.allocateArrangement(&arrangement, 0));
    ASSERT_NE(arrangement, nullptr);
    EXPECT_EQ(arrangement->numChannels, 0);
    EXPECT_EQ(arrangement->type, 0);
    EXPECT_TRUE(effect.deallocateArrangement(&arrangement));
    // A negative count allocates no speaker and does not wrap to a huge size.
    ASSERT_TRUE(effect.allocateArrangement(&arrangement, -4));
    ASSERT_NE(arrangement, nullptr);
    EXPECT_EQ(arrangement->numChannels, -4);
    EXPECT_TRUE(effect.deallocateArrangement(&arrangement));
}

TEST(FrameSpeakers, NullSlots) {
    PlainEffect effect;
    EXPECT_FALSE(effect.allocateArrangement(nullptr, 2));
    EXPECT_TRUE(effect.deallocateArrangement(nullptr));
    VstSpeakerArrangement* none = nullptr;
    EXPECT_TRUE(effect.deallocateArrangement(&none));
    EXPECT_EQ(none, nullptr);
}

TEST(FrameSpeakers, CopySpeakerCopiesEveryField) {
    PlainEffect effect;
    VstSpeakerProperties from{};
    VstSpeakerProperties to{};
    fillSpeaker(from, 3);
    EXPECT_TRUE(effect.copySpeaker(&to, &from));
    expectSameSpeaker(to, from);
}

TEST(FrameSpeakers, CopySpeakerCutsTheNameAtSixtyThree) {
    PlainEffect effect;
    VstSpeakerProperties from{};
    fillSpeaker(from, 1);
    std::memset(from.name, 'n', sizeof from.name);  // 64 characters, no terminator
    VstSpeakerProperties to{};
    std::memset(to.name, 'x', sizeof to.name);
    EXPECT_TRUE(effect.copySpeaker(&to, &from));
    for (int i = 0; i < 63; ++i) EXPECT_EQ(to.name[i], 'n') << i;
    EXPECT_EQ(to.name[63], '\0');
    EXPECT_EQ(std::strlen(to.name), 63u);
}

TEST(FrameSpeakers, CopySpeakerRefusesNull) {
    PlainEffect effect;
    VstSpeakerProperties s{};
    fillSpeaker(s, 2);
    VstSpeakerProperties before = s;
    EXPECT_FALSE(effect.copySpeaker(nullptr, &s));
    EXPECT_FALSE(effect.copySpeaker(&s, nullptr));
    EXPECT_FALSE(effect.copySpeaker(nullptr, nullptr));
    EXPECT_EQ(std::memcmp(&s, &before, sizeof s), 0);
}

TEST(FrameSpeakers, MatchCopiesTypeAndSpeakers) {
    PlainEffect effect;
    VstSpeakerArrangement* from = nullptr;
    ASSERT_TRUE(effect.allocateArrangement(&from, 3));
    from->type = 5;
    for (int i = 0; i < 3; ++i) fillSpeaker(speaker(from, i), i + 10);

    VstSpeakerArrangement* to = nullptr;
    ASSERT_TRUE(effect.allocateArrangement(&to, 1));  // replaced (and freed) by the match
    EXPECT_TRUE(effect.matchArrangement(&to, from));
    ASSERT_NE(to, nullptr);
    EXPECT_NE(to, from);
    EXPECT_EQ(to->type, 5);
    EXPECT_EQ(to->numChannels, 3);
    for (int i = 0; i < 3; ++i) expectSameSpeaker(speaker(to, i), speaker(from, i));

    effect.deallocateArrangement(&to);
    effect.deallocateArrangement(&from);
}

TEST(FrameSpeakers, MatchOfAnEmptyArrangement) {
    PlainEffect effect;
    VstSpeakerArrangement* from = nullptr;
    ASSERT_TRUE(effect.allocateArrangement(&from, 0));
    from->type = -2;
    VstSpeakerArrangement* to = nullptr;
    EXPECT_TRUE(effect.matchArrangement(&to, from));
    ASSERT_NE(to, nullptr);
    EXPECT_EQ(to->type, -2);
    EXPECT_EQ(to->numChannels, 0);
    effect.deallocateArrangement(&to);

    // A negative count copies no speaker and still succeeds.
    from->numChannels = -1;
    EXPECT_TRUE(effect.matchArrangement(&to, from));
    ASSERT_NE(to, nullptr);
    EXPECT_EQ(to->type, -2);
    effect.deallocateArrangement(&to);
    effect.deallocateArrangement(&from);
}

TEST(FrameSpeakers, MatchRefusesNull) {
    PlainEffect effect;
    VstSpeakerArrangement* to = nullptr;
    ASSERT_TRUE(effect.allocateArrangement(&to, 2));
    VstSpeakerArrangement* kept = to;
    EXPECT_FALSE(effect.matchArrangement(&to, nullptr));
    EXPECT_EQ(to, kept);  // untouched: still the caller's arrangement
    EXPECT_EQ(to->numChannels, 2);
    VstSpeakerArrangement* from = nullptr;
    ASSERT_TRUE(effect.allocateArrangement(&from, 1));
    EXPECT_FALSE(effect.matchArrangement(nullptr, from));
    effect.deallocateArrangement(&to);
    effect.deallocateArrangement(&from);
}

}  // namespace
