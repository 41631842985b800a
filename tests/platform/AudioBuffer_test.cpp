// The host's audio buffers: the owning buffer, the shell that wraps a host's
// channel arrays, and the single-channel view.
//
// Samples in these tests are small integers and halves, so every sum and
// product is exact; results are compared as bit patterns for that reason.
#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cstdint>
#include <vector>

#include "AR/AudioBuffer.h"
#include "support/Bits.h"

namespace {

using aftest::bits;

bool alignedTo(const void* p, std::uintptr_t alignment) {
    return reinterpret_cast<std::uintptr_t>(p) % alignment == 0;
}

// Writes c * 100 + i into every sample of a buffer.
void fillTagged(AR::AudioBuffer& buffer, float offset = 0.0f) {
    for (int c = 0; c < buffer.GetChannelCount(); ++c)
        for (int i = 0; i < buffer.GetFrameCount(); ++i)
            buffer.GetChannel(c)[i] = static_cast<float>(c * 100 + i) + offset;
}

// Two caller-owned channels of four frames, wrapped by the tests' shells.
struct HostArrays {
    float left[4] = {1.0f, 2.0f, 3.0f, 4.0f};
    float right[4] = {-1.0f, -2.0f, -3.0f, -4.0f};
    float* channels[2] = {left, right};
    bool unchanged() const {
        for (int i = 0; i < 4; ++i)
            if (bits(left[i]) != bits(static_cast<float>(i + 1)) || bits(right[i]) != bits(-static_cast<float>(i + 1)))
                return false;
        return true;
    }
};

// ---------------------------------------------------------------------------
// The owning buffer

TEST(PlatformAudioBuffer, InitAllocatesAlignedZeroedChannels) {
    AR::AudioBuffer buffer(16, true);
    EXPECT_EQ(buffer.GetChannelCount(), 0);
    EXPECT_EQ(buffer.GetFrameCount(), 0);
    ASSERT_TRUE(buffer.Init(3, 5));
    EXPECT_EQ(buffer.GetChannelCount(), 3);
    EXPECT_EQ(buffer.GetFrameCount(), 5);
    for (int c = 0; c < 3; ++c) {
        const float* samples = buffer.GetChannel(c);
        ASSERT_NE(samples, nullptr);
        EXPECT_TRUE(alignedTo(samples, 16)) << "channel " << c;
        for (int i = 0; i < 5; ++i) EXPECT_EQ(bits(samples[i]), 0u);
    }
}

TEST(PlatformAudioBuffer, ChannelsDoNotOverlap) {
    AR::AudioBuffer buffer(16, true);
    ASSERT_TRUE(buffer.Init(3, 5));
    fillTagged(buffer);
    for (int c = 0; c < 3; ++c)
        for (int i = 0; i < 5; ++i) EXPECT_EQ(bits(buffer.GetChannel(c)[i]), bits(static_cast<float>(c * 100 + i)));
}

TEST(PlatformAudioBuffer, OtherAlignments) {
    AR::AudioBuffer wide(64, true);
    ASSERT_TRUE(wide.Init(4, 3));
    for (int c = 0; c < 4; ++c) EXPECT_TRUE(alignedTo(wide.GetChannel(c), 64)) << c;
    // 3 rounds up to a power of two, and never below a float's alignment.
    AR::AudioBuffer odd(3, true);
    ASSERT_TRUE(odd.Init(2, 3));
    for (int c = 0; c < 2; ++c) EXPECT_TRUE(alignedTo(odd.GetChannel(c), 4)) << c;
    AR::AudioBuffer none(0, true);
    ASSERT_TRUE(none.Init(2, 3));
    for (int c = 0; c < 2; ++c) EXPECT_TRUE(alignedTo(none.GetChannel(c), alignof(float))) << c;
}

TEST(PlatformAudioBuffer, ChannelAccessOutOfRange) {
    AR::AudioBuffer buffer(16, true);
    EXPECT_EQ(buffer.GetChannel(0), nullptr);
    ASSERT_TRUE(buffer.Init(2, 4));
    EXPECT_EQ(buffer.GetChannel(-1), nullptr);
    EXPECT_EQ(buffer.GetChannel(2), nullptr);
    EXPECT_EQ(buffer.GetChannel(INT_MIN), nullptr);
    EXPECT_EQ(buffer.GetChannel(INT_MAX), nullptr);
    const AR::AudioBuffer& constant = buffer;
    EXPECT_EQ(constant.GetChannel(1), buffer.GetChannel(1));
    EXPECT_EQ(constant.GetChannel(2), nullptr);
}

TEST(PlatformAudioBuffer, InitAgainZeroesWhenAsked) {
    AR::AudioBuffer buffer(16, true);
    ASSERT_TRUE(buffer.Init(2, 64));
    fillTagged(buffer, 7.0f);
    ASSERT_TRUE(buffer.Init(2, 64));
    for (int c = 0; c < 2; ++c)
        for (int i = 0; i < 64; ++i) EXPECT_EQ(bits(buffer.GetChannel(c)[i]), 0u);
    // Without zeroing, Init still sizes the buffer.
    AR::AudioBuffer raw(16, false);
    ASSERT_TRUE(raw.Init(6, 33));
    EXPECT_EQ(raw.GetChannelCount(), 6);
    EXPECT_EQ(raw.GetFrameCount(), 33);
    for (int c = 0; c < 6; ++c) EXPECT_TRUE(alignedTo(raw.GetChannel(c), 16));
}

TEST(PlatformAudioBuffer, FailedInitKeepsThePreviousContents) {
    AR::AudioBuffer buffer(16, true);
    ASSERT_TRUE(buffer.Init(2, 4));
    fillTagged(buffer, 0.5f);
    float* left = buffer.GetChannel(0);
    // INT_MAX channels of INT_MAX frames: more bytes than an address space holds.
    EXPECT_FALSE(buffer.Init(INT_MAX, INT_MAX));
    EXPECT_EQ(buffer.GetChannelCount(), 2);
    EXPECT_EQ(buffer.GetFrameCount(), 4);
    EXPECT_EQ(buffer.GetChannel(0), left);
    for (int c = 0; c < 2; ++c)
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(bits(buffer.GetChannel(c)[i]), bits(static_cast<float>(c * 100 + i) + 0.5f));
}

TEST(PlatformAudioBuffer, NegativeCountsCountAsZero) {
    AR::AudioBuffer buffer(16, true);
    EXPECT_TRUE(buffer.Init(-1, 5));
    EXPECT_EQ(buffer.GetChannelCount(), 0);
    EXPECT_EQ(buffer.GetChannel(0), nullptr);
    EXPECT_TRUE(buffer.Init(2, -3));
    EXPECT_EQ(buffer.GetChannelCount(), 2);
    EXPECT_EQ(buffer.GetFrameCount(), 0);
    EXPECT_TRUE(buffer.Init(0, 0));
    EXPECT_EQ(buffer.GetChannelCount(), 0);
    EXPECT_EQ(buffer.GetFrameCount(), 0);
    // Operations on an empty buffer do nothing.
    buffer.Zero();
    buffer *= 2.0f;
}

TEST(PlatformAudioBuffer, Zero) {
    AR::AudioBuffer buffer(16, false);
    ASSERT_TRUE(buffer.Init(2, 5));
    fillTagged(buffer, 1.0f);
    buffer.Zero();
    for (int c = 0; c < 2; ++c)
        for (int i = 0; i < 5; ++i) EXPECT_EQ(bits(buffer.GetChannel(c)[i]), 0u);
}

TEST(PlatformAudioBuffer, MixAdds) {
    AR::AudioBuffer target(16, true);
    AR::AudioBuffer source(16, true);
    ASSERT_TRUE(target.Init(2, 4));
    ASSERT_TRUE(source.Init(2, 4));
    fillTagged(target);
    fillTagged(source, 0.5f);
    target.Mix(source);
    for (int c = 0; c < 2; ++c)
        for (int i = 0; i < 4; ++i) {
            // (c*100 + i) + (c*100 + i + 0.5)
            float expected = static_cast<float>(2 * (c * 100 + i)) + 0.5f;
            EXPECT_EQ(bits(target.GetChannel(c)[i]), bits(expected)) << c << "," << i;
            EXPECT_EQ(bits(source.GetChannel(c)[i]), bits(static_cast<float>(c * 100 + i) + 0.5f));
        }
}

TEST(PlatformAudioBuffer, ScaleInPlace) {
    AR::AudioBuffer buffer(16, true);
    ASSERT_TRUE(buffer.Init(2, 3));
    fillTagged(buffer);
    AR::AudioBuffer& same = (buffer *= 0.5f);
    EXPECT_EQ(&same, &buffer);
    for (int c = 0; c < 2; ++c)
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(bits(buffer.GetChannel(c)[i]), bits(static_cast<float>(c * 100 + i) * 0.5f));
}

TEST(PlatformAudioBuffer, CopyFromScale) {
    AR::AudioBuffer target(16, true);
    AR::AudioBuffer source(16, true);
    ASSERT_TRUE(target.Init(2, 3));
    ASSERT_TRUE(source.Init(2, 3));
    fillTagged(target, 9.0f);
    fillTagged(source);
    target.CopyFromScale(source, -2.0f);
    for (int c = 0; c < 2; ++c)
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(bits(target.GetChannel(c)[i]), bits(static_cast<float>(c * 100 + i) * -2.0f));
}

TEST(PlatformAudioBuffer, OperationsCoverOnlyWhatBothBuffersHave) {
    AR::AudioBuffer target(16, true);
    AR::AudioBuffer source(16, true);
    ASSERT_TRUE(target.Init(2, 5));
    ASSERT_TRUE(source.Init(1, 3));
    fillTagged(target);
    for (int i = 0; i < 3; ++i) source.GetChannel(0)[i] = 1000.0f;
    target.Mix(source);
    for (int i = 0; i < 5; ++i) {
        float expected = static_cast<float>(i) + (i < 3 ? 1000.0f : 0.0f);
        EXPECT_EQ(bits(target.GetChannel(0)[i]), bits(expected)) << i;
        EXPECT_EQ(bits(target.GetChannel(1)[i]), bits(static_cast<float>(100 + i))) << i;
    }
    fillTagged(target);
    target.CopyFromScale(source, 0.5f);
    for (int i = 0; i < 5; ++i) {
        float expected = i < 3 ? 500.0f : static_cast<float>(i);
        EXPECT_EQ(bits(target.GetChannel(0)[i]), bits(expected)) << i;
        EXPECT_EQ(bits(target.GetChannel(1)[i]), bits(static_cast<float>(100 + i))) << i;
    }
}

// ---------------------------------------------------------------------------
// The shell: wraps, never copies

TEST(PlatformAudioBufferShell, InitMakesRoomForChannels) {
    AR::AudioBufferShell shell;
    EXPECT_EQ(shell.GetChannelCount(), 0);
    ASSERT_TRUE(shell.Init(2));
    EXPECT_EQ(shell.GetChannelCount(), 2);
    EXPECT_EQ(shell.GetFrameCount(), 0);
    EXPECT_EQ(shell.GetChannel(0), nullptr);
    EXPECT_EQ(shell.GetChannel(1), nullptr);
    ASSERT_TRUE(shell.Init(6));
    EXPECT_EQ(shell.GetChannelCount(), 6);
    ASSERT_TRUE(shell.Init(-3));
    EXPECT_EQ(shell.GetChannelCount(), 0);
}

TEST(PlatformAudioBufferShell, AssignWrapsTheCallersArrays) {
    HostArrays host;
    AR::AudioBufferShell shell;
    ASSERT_TRUE(shell.Init(2));
    shell.Assign(host.channels, 4);
    EXPECT_EQ(shell.GetFrameCount(), 4);
    EXPECT_EQ(shell.GetChannel(0), host.left);
    EXPECT_EQ(shell.GetChannel(1), host.right);
    EXPECT_EQ(shell.GetChannel(2), nullptr);
    // Writing through the shell changes the caller's samples.
    shell *= 2.0f;
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(bits(host.left[i]), bits(2.0f * static_cast<float>(i + 1)));
        EXPECT_EQ(bits(host.right[i]), bits(-2.0f * static_cast<float>(i + 1)));
    }
    shell.Zero();
    for (int i = 0; i < 4; ++i) EXPECT_EQ(bits(host.left[i]), 0u);
}

TEST(PlatformAudioBufferShell, CopyBetweenShellAndOwnedBuffer) {
    HostArrays host;
    AR::AudioBufferShell shell;
    ASSERT_TRUE(shell.Init(2));
    shell.Assign(host.channels, 4);
    AR::AudioBuffer owned(16, true);
    ASSERT_TRUE(owned.Init(2, 4));
    owned.CopyFromScale(shell, 1.0f);
    EXPECT_EQ(bits(owned.GetChannel(1)[3]), bits(-4.0f));
    fillTagged(owned);
    shell.CopyFromScale(owned, 0.5f);
    EXPECT_EQ(bits(host.left[2]), bits(1.0f));     // (0 + 2) * 0.5
    EXPECT_EQ(bits(host.right[3]), bits(51.5f));   // (100 + 3) * 0.5
    shell.Mix(owned);
    EXPECT_EQ(bits(host.right[3]), bits(154.5f));  // 51.5 + 103
}

TEST(PlatformAudioBufferShell, InPlaceScaleThroughTwoShells) {
    // The families wrap the same arrays as inputs and outputs.
    HostArrays host;
    AR::AudioBufferShell in;
    AR::AudioBufferShell out;
    ASSERT_TRUE(in.Init(2));
    ASSERT_TRUE(out.Init(2));
    in.Assign(host.channels, 4);
    out.Assign(host.channels, 4);
    out.CopyFromScale(in, -1.0f);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(bits(host.left[i]), bits(-static_cast<float>(i + 1)));
        EXPECT_EQ(bits(host.right[i]), bits(static_cast<float>(i + 1)));
    }
}

TEST(PlatformAudioBufferShell, FrameCountsOfZeroOrLessChangeNothing) {
    for (int frames : {0, -1, -4, INT_MIN}) {
        HostArrays host;
        HostArrays other;
        AR::AudioBufferShell shell;
        AR::AudioBufferShell source;
        ASSERT_TRUE(shell.Init(2));
        ASSERT_TRUE(source.Init(2));
        shell.Assign(host.channels, frames);
        source.Assign(other.channels, 4);
        shell.Zero();
        shell *= 3.0f;
        shell.Mix(source);
        shell.CopyFromScale(source, 2.0f);
        EXPECT_TRUE(host.unchanged()) << frames;

        // As the source of a longer buffer, too.
        AR::AudioBuffer owned(16, true);
        ASSERT_TRUE(owned.Init(2, 4));
        fillTagged(owned);
        owned.Mix(shell);
        owned.CopyFromScale(shell, 2.0f);
        for (int c = 0; c < 2; ++c)
            for (int i = 0; i < 4; ++i) EXPECT_EQ(bits(owned.GetChannel(c)[i]), bits(static_cast<float>(c * 100 + i)));

        AR::AudioBufferChannel view;
        view.Assign(shell, 0);
        view.Zero();
        view *= 2.0f;
        EXPECT_TRUE(host.unchanged()) << frames;
    }
}

TEST(PlatformAudioBufferShell, EmptyAssignLetsGoOfTheEarlierArrays) {
    // After a call with frames, a call without any must not reach back into
    // the arrays of the earlier call (the host may have freed them).
    HostArrays earlier;
    HostArrays later;
    AR::AudioBufferShell shell;
    ASSERT_TRUE(shell.Init(2));
    shell.Assign(earlier.channels, 4);
    shell.Assign(later.channels, 0);
    EXPECT_EQ(shell.GetFrameCount(), 0);
    shell.Zero();
    shell *= 2.0f;
    AR::AudioBufferChannel view;
    view.Assign(shell, 1);
    view.Zero();
    EXPECT_TRUE(earlier.unchanged());
    EXPECT_TRUE(later.unchanged());
}

TEST(PlatformAudioBufferShell, NullArrayLeavesTheShellEmpty) {
    HostArrays host;
    AR::AudioBufferShell shell;
    ASSERT_TRUE(shell.Init(2));
    shell.Assign(host.channels, 4);
    shell.Assign(nullptr, 4);
    EXPECT_EQ(shell.GetChannel(0), nullptr);
    EXPECT_EQ(shell.GetFrameCount(), 0);
    shell.Zero();
    shell *= 0.0f;
    EXPECT_TRUE(host.unchanged());
    // Assign before Init: nothing to point, nothing happens.
    AR::AudioBufferShell bare;
    bare.Assign(host.channels, 4);
    bare.Zero();
    EXPECT_TRUE(host.unchanged());
}

TEST(PlatformAudioBufferShell, ViewsCannotBeInitialisedAsOwners) {
    HostArrays host;
    AR::AudioBufferShell shell;
    ASSERT_TRUE(shell.Init(2));
    shell.Assign(host.channels, 4);
    AR::AudioBuffer& base = shell;
    EXPECT_FALSE(base.Init(2, 8));
    EXPECT_EQ(shell.GetChannel(0), host.left);
    EXPECT_EQ(shell.GetFrameCount(), 4);
}

// ---------------------------------------------------------------------------
// The single-channel view

TEST(PlatformAudioBufferChannel, ViewsOneChannel) {
    HostArrays host;
    AR::AudioBufferShell shell;
    ASSERT_TRUE(shell.Init(2));
    shell.Assign(host.channels, 4);
    AR::AudioBufferChannel right;
    right.Assign(shell, 1);
    EXPECT_EQ(right.GetChannelCount(), 1);
    EXPECT_EQ(right.GetFrameCount(), 4);
    EXPECT_EQ(right.GetChannel(0), host.right);
    EXPECT_EQ(right.GetChannel(1), nullptr);
    right *= 3.0f;
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(bits(host.left[i]), bits(static_cast<float>(i + 1)));
        EXPECT_EQ(bits(host.right[i]), bits(-3.0f * static_cast<float>(i + 1)));
    }
}

TEST(PlatformAudioBufferChannel, ChannelToChannelCopy) {
    HostArrays host;
    AR::AudioBufferShell shell;
    ASSERT_TRUE(shell.Init(2));
    shell.Assign(host.channels, 4);
    AR::AudioBufferChannel left;
    AR::AudioBufferChannel right;
    left.Assign(shell, 0);
    right.Assign(shell, 1);
    left.CopyFromScale(right, 0.5f);
    right.Mix(left);
    for (int i = 0; i < 4; ++i) {
        float r = -static_cast<float>(i + 1);
        EXPECT_EQ(bits(host.left[i]), bits(r * 0.5f));
        EXPECT_EQ(bits(host.right[i]), bits(r + r * 0.5f));
    }
}

TEST(PlatformAudioBufferChannel, ViewOfAnOwnedBuffer) {
    AR::AudioBuffer owned(16, true);
    ASSERT_TRUE(owned.Init(3, 2));
    AR::AudioBufferChannel view;
    view.Assign(owned, 2);
    EXPECT_EQ(view.GetChannel(0), owned.GetChannel(2));
    EXPECT_EQ(view.GetFrameCount(), 2);
    view.GetChannel(0)[1] = 5.0f;
    EXPECT_EQ(bits(owned.GetChannel(2)[1]), bits(5.0f));
}

TEST(PlatformAudioBufferChannel, AbsentChannelGivesAnEmptyView) {
    HostArrays host;
    AR::AudioBufferShell shell;
    ASSERT_TRUE(shell.Init(2));
    shell.Assign(host.channels, 4);
    for (int channel : {2, -1, INT_MAX, INT_MIN}) {
        AR::AudioBufferChannel view;
        view.Assign(shell, 0);
        view.Assign(shell, channel);
        EXPECT_EQ(view.GetChannel(0), nullptr) << channel;
        EXPECT_EQ(view.GetFrameCount(), 0) << channel;
        view.Zero();
        view *= 2.0f;
        view.Mix(shell);
        view.CopyFromScale(shell, 2.0f);
        EXPECT_TRUE(host.unchanged()) << channel;
    }
    AR::AudioBufferChannel unassigned;
    EXPECT_EQ(unassigned.GetChannel(0), nullptr);
    EXPECT_EQ(unassigned.GetFrameCount(), 0);
    unassigned.Zero();
    AR::AudioBuffer& base = unassigned;
    EXPECT_FALSE(base.Init(1, 4));
}

}  // namespace
