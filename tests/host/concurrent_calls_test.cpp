// What a DAW does: its GUI thread sets parameters and reads their texts while
// the audio thread runs processReplacing. Every registered effect is driven
// that way for a while; under the thread sanitizer (-DAF_SANITIZE_THREAD=ON)
// any unsynchronised access between the two is reported. Afterwards the
// effect must be as sound as a fresh one: with the same final values, after a
// suspend and resume, it produces the fresh effect's bits.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "support/Buffers.h"
#include "support/HostFixture.h"

namespace {

constexpr int kBlock = 256;
constexpr int kGuiRounds = 200;
// The GUI thread goes on until the audio thread has run at least this many blocks.
constexpr int kMinimumBlocks = 50;
constexpr float kFinalValue = 0.6875f;
constexpr float kSampleRate = 48000.0f;

std::vector<std::string> identifiers() {
    std::vector<std::string> all;
    for (const auto& registration : aftest::LoadedModule::Get().registrations()) all.push_back(registration.id.c_str());
    return all;
}

class ConcurrentCalls : public ::testing::TestWithParam<std::string> {};

TEST_P(ConcurrentCalls, GuiThreadCallsDuringProcessingLeaveTheEffectSound) {
    auto busy = aftest::HostEffect::Create(GetParam(), false);
    auto fresh = aftest::HostEffect::Create(GetParam(), false);
    ASSERT_TRUE(busy);
    ASSERT_TRUE(fresh);
    busy->start(kSampleRate, kBlock);
    fresh->start(kSampleRate, kBlock);
    const int channels = busy->effect()->numInputs;
    const int parameters = busy->effect()->numParams;

    std::atomic<bool> guiDone{false};
    std::atomic<int> blocks{0};
    std::thread audio([&] {
        aftest::Channels block = aftest::taggedNoise(channels, kBlock, 7);
        while (!guiDone.load(std::memory_order_acquire)) {
            busy->processReplacing(block);
            blocks.fetch_add(1, std::memory_order_release);
        }
    });
    // The GUI thread: values, read-backs, texts, as a DAW's automation lane and
    // parameter window would do.
    std::size_t textBytes = 0;
    for (int round = 0; round < kGuiRounds || blocks.load(std::memory_order_acquire) < kMinimumBlocks; ++round) {
        for (int index = 0; index < parameters; ++index) {
            busy->setParameter(index, static_cast<float>((round * 37 + index * 11) % 97) / 96.0f);
            (void)busy->getParameter(index);
            textBytes += busy->parameterDisplay(index).size() + busy->parameterName(index).size() +
                         busy->parameterLabel(index).size();
        }
    }
    guiDone.store(true, std::memory_order_release);
    audio.join();
    if (parameters > 0) EXPECT_GT(textBytes, 0u);

    for (auto* fx : {busy.get(), fresh.get()}) {
        for (int index = 0; index < parameters; ++index) fx->setParameter(index, kFinalValue);
        fx->suspend();
        fx->resume();
    }
    aftest::Channels a = aftest::taggedNoise(channels, kBlock, 3);
    aftest::Channels b = a;
    busy->processReplacing(a);
    fresh->processReplacing(b);
    for (int c = 0; c < channels; ++c)
        EXPECT_EQ(std::memcmp(a[c].data(), b[c].data(), kBlock * sizeof(float)), 0) << "channel " << c;
}

INSTANTIATE_TEST_SUITE_P(EveryEffect, ConcurrentCalls, ::testing::ValuesIn(identifiers()),
                         [](const ::testing::TestParamInfo<std::string>& info) {
                             std::string name;
                             for (char ch : info.param) name += std::isalnum(static_cast<unsigned char>(ch)) ? ch : '_';
                             return name;
                         });

}  // namespace
