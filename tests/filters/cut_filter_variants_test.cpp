// Every channel variant of the high-pass, low-pass, band-pass and notch,
// driven through its plug-in record, against the independent transcription:
// the output and the filter memory must agree bit for bit after every block.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "CutFilterHarness.h"

namespace {

using namespace cuttest;

enum class Mode { Separate, InPlace, Accumulate, AccumulateInPlace };

constexpr float kStaleOutput = 7.25f;  // what an output held before a replacing call

void expectSameDesign(const AF::CascadeDesign& d, const cutref::Coefficients& c) {
    // Coefficients are stored floats: compared as bit patterns.
    EXPECT_TRUE(sameFloat(d.gain, c.gain)) << d.gain << " vs " << c.gain;
    EXPECT_TRUE(sameFloat(d.feedback1, c.feedback1)) << d.feedback1 << " vs " << c.feedback1;
    EXPECT_TRUE(sameFloat(d.feedback2, c.feedback2)) << d.feedback2 << " vs " << c.feedback2;
}
void expectSameDesign(const AF::SectionDesign& d, const cutref::Coefficients& c) {
    EXPECT_TRUE(sameFloat(d.b0, c.b0)) << d.b0 << " vs " << c.b0;
    EXPECT_TRUE(sameFloat(d.a1, c.a1)) << d.a1 << " vs " << c.a1;
    EXPECT_TRUE(sameFloat(d.a2, c.a2)) << d.a2 << " vs " << c.a2;
}

template <class V>
class CutFilterVariant : public ::testing::Test {
protected:
    using Effect = typename V::Type;
    static constexpr unsigned kChannels = V::channels;

    CutFilterVariant() : effect(new Effect(countingHost)), host{effect->getAeffect()}, model(V::kind, kChannels) {}
    ~CutFilterVariant() override { host.close(); }

    void setSampleRate(float rate) {
        host.setSampleRate(rate);
        model.setSampleRate(rate);
    }
    void setParameter(VstInt32 index, float value) {
        host.setParameter(index, value);
        model.setParameter(index, value);
    }
    void suspend() {
        host.suspend();
        model.suspend();
    }

    // One call of `frames` frames starting at `offset` of `input`, the same on
    // the effect and the model, then every output sample compared.
    void block(Buffers& input, std::size_t offset, VstInt32 frames, Mode mode) {
        const std::size_t n = frames > 0 ? static_cast<std::size_t>(frames) : 0;
        Buffers effectOut(kChannels, n + 1, kStaleOutput), modelOut(kChannels, n + 1, kStaleOutput);
        if (mode == Mode::Accumulate) {  // outputs that already hold a signal
            Buffers earlier = taggedSignal(kChannels, n + 1, 777u + static_cast<unsigned>(offset));
            effectOut.data = earlier.data;
            modelOut.data = earlier.data;
        }
        if (mode == Mode::InPlace || mode == Mode::AccumulateInPlace)
            for (unsigned c = 0; c < kChannels; ++c)
                for (std::size_t i = 0; i < n; ++i) effectOut.data[c][i] = modelOut.data[c][i] = input.data[c][offset + i];
        float** in = input.at(offset);
        const bool inPlace = mode == Mode::InPlace || mode == Mode::AccumulateInPlace;
        const bool accumulate = mode == Mode::Accumulate || mode == Mode::AccumulateInPlace;
        float** effectIn = inPlace ? effectOut.get() : in;
        float** modelIn = inPlace ? modelOut.get() : in;
        if (accumulate) host.process(effectIn, effectOut.get(), frames);
        else host.processReplacing(effectIn, effectOut.get(), frames);
        model.run(modelIn, modelOut.get(), frames, accumulate);
        for (unsigned c = 0; c < kChannels; ++c) {
            for (std::size_t i = 0; i <= n; ++i)  // the frame past the call must stay as it was
                ASSERT_TRUE(sameFloat(effectOut.data[c][i], modelOut.data[c][i]))
                    << "channel " << c << " frame " << offset + i << ": " << effectOut.data[c][i] << " vs "
                    << modelOut.data[c][i];
        }
        if (n > 0)
            for (unsigned c = 0; c < kChannels; ++c) lastOutput[c] = effectOut.data[c][n - 1];
        expectSameMemory();
    }

    void expectSameMemory() {
        const AR::AudioBuffer& memory = effect->historyBuffer();
        ASSERT_EQ(memory.GetChannelCount(), static_cast<int>(kChannels));
        ASSERT_EQ(memory.GetFrameCount(), model.memorySize());
        for (unsigned c = 0; c < kChannels; ++c)
            for (int k = 0; k < model.memorySize(); ++k)
                ASSERT_TRUE(sameFloat(memory.GetChannel(static_cast<int>(c))[k], model.memory[c][static_cast<std::size_t>(k)]))
                    << "channel " << c << " slot " << k;
    }

    // Blocks of 1, 3, 4, 5 and 64 frames in turn, the last one cut short, with
    // parameter changes, a suspend, rate changes and a program between them.
    // `scale` 1e-24 brings the signal down to the size of the anti-denormal
    // offset, where the offset pattern of each family decides the result.
    void scenario(Mode mode, float scale = 1.0f) {
        constexpr std::size_t kTotal = 400;
        Buffers input = taggedSignal(kChannels, kTotal);
        for (auto& channel : input.data)
            for (std::size_t i = 0; i < kTotal; ++i) channel[i] = (i >= 150 && i < 230) ? 0.0f : channel[i] * scale;
        setSampleRate(48000.0f);
        const VstInt32 sizes[] = {1, 3, 4, 5, 64};
        std::size_t offset = 0;
        for (int b = 0; offset < kTotal; ++b) {
            const VstInt32 frames = std::min<VstInt32>(sizes[b % 5], static_cast<VstInt32>(kTotal - offset));
            block(input, offset, frames, mode);
            offset += static_cast<std::size_t>(frames);
            expectSameDesign(effect->currentDesign(), model.coefficients);
            switch (b) {
                case 2: setParameter(0, 0.6f); break;
                case 4: setParameter(1, 0.9f); break;  // only Q: the sections still recompute
                case 5: block(input, offset, 0, mode); block(input, offset, -3, mode); break;
                case 6: suspend(); break;
                case 8: setSampleRate(44100.0f); break;
                case 9: setSampleRate(44100.0f); break;  // the same rate: memory kept
                case 11:
                    host.setProgram(0);  // a program resets the parameters, not the memory
                    model.setProgram();
                    break;
                case 13: setParameter(0, 0.1f); setParameter(1, 0.2f); break;
                default: break;
            }
        }
    }

    Effect* effect;
    Record host;
    cutref::Model model;
    std::array<float, kChannels> lastOutput{};
};

TYPED_TEST_SUITE(CutFilterVariant, AllVariants, VariantNames);

TYPED_TEST(CutFilterVariant, SeparateBuffersMatchReference) { this->scenario(Mode::Separate); }
TYPED_TEST(CutFilterVariant, TinySignalMatchesReferenceOffsetByOffset) { this->scenario(Mode::Separate, 1e-24f); }
TYPED_TEST(CutFilterVariant, TinySignalInPlaceAndAddedMatchReference) {
    this->scenario(Mode::InPlace, 1e-24f);
    this->scenario(Mode::AccumulateInPlace, 1e-24f);
}
TYPED_TEST(CutFilterVariant, InPlaceMatchesReference) { this->scenario(Mode::InPlace); }
TYPED_TEST(CutFilterVariant, ProcessAddsIntoExistingOutput) { this->scenario(Mode::Accumulate); }
TYPED_TEST(CutFilterVariant, ProcessInPlaceLeavesInputPlusFiltered) { this->scenario(Mode::AccumulateInPlace); }

TYPED_TEST(CutFilterVariant, CoefficientsStartAtZeroUntilFirstBuffer) {
    expectSameDesign(this->effect->currentDesign(), cutref::Coefficients{});
    // A host that stores the stale marker itself gets no computation: the
    // sections run on zero coefficients.
    this->setParameter(0, -1.0f);
    this->setParameter(1, -1.0f);
    Buffers input = taggedSignal(TestFixture::kChannels, 40);
    this->block(input, 0, 40, Mode::Separate);
    expectSameDesign(this->effect->currentDesign(), cutref::Coefficients{});
}

TYPED_TEST(CutFilterVariant, CoefficientsEqualTranscriptionAcrossTheRange) {
    Buffers input = taggedSignal(TestFixture::kChannels, 4);
    for (float p : {0.0f, 0.05f, 0.25f, 0.333f, 0.5f, 0.77f, 0.99f, 1.0f}) {
        for (float q : {0.0f, 0.5f, 1.0f}) {
            this->setParameter(0, p);
            this->setParameter(1, q);
            this->block(input, 0, 4, Mode::Separate);
            expectSameDesign(this->effect->currentDesign(), this->model.coefficients);
        }
    }
}

TYPED_TEST(CutFilterVariant, ZeroFrameCallStillRefreshesCoefficients) {
    this->setParameter(0, 0.7f);
    float* none[TestFixture::kChannels] = {};
    this->host.processReplacing(none, none, 0);
    const auto expected = cutref::isCascade(TypeParam::kind) ? cutref::cascadeCoefficients(TypeParam::kind, 0.7f)
                                                              : cutref::sectionCoefficients(TypeParam::kind, 0.7f, 0.5f);
    expectSameDesign(this->effect->currentDesign(), expected);
}

// Outside 0..1, NaN and infinities are used as they come; NaN coefficients
// (and the NaN memory they leave) stay NaN until a suspend clears the memory.
TYPED_TEST(CutFilterVariant, BadParametersFollowTheArithmetic) {
    constexpr std::size_t kTotal = 16 * 12;
    Buffers input = taggedSignal(TestFixture::kChannels, kTotal);
    const float inf = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float values[] = {-0.5f, 1.7f, 3.0f, inf, -inf, nan, 0.25f, 0.25f, -7.0f, 0.4f, 0.4f, 0.4f};
    std::size_t offset = 0;
    for (std::size_t i = 0; i < std::size(values); ++i) {
        this->setParameter(0, values[i]);
        this->setParameter(1, values[(i + 3) % std::size(values)]);
        this->setParameter(2, values[i]);  // not a parameter: ignored
        if (i == 9) this->suspend();
        this->block(input, offset, 16, Mode::InPlace);
        if (i == 5) {
            EXPECT_TRUE(std::isnan(this->lastOutput[0])) << "NaN coefficients give NaN samples";
        }
        expectSameDesign(this->effect->currentDesign(), this->model.coefficients);
        offset += 16;
    }
    // After the suspend the memory is clean again and the output finite.
    for (unsigned c = 0; c < TestFixture::kChannels; ++c) EXPECT_TRUE(std::isfinite(this->lastOutput[c]));
}

TYPED_TEST(CutFilterVariant, NaNParameterGivesNaNCoefficientsOnEveryCall) {
    this->setParameter(0, std::numeric_limits<float>::quiet_NaN());
    Buffers input = taggedSignal(TestFixture::kChannels, 8);
    this->block(input, 0, 4, Mode::Separate);
    this->block(input, 4, 4, Mode::Separate);
    const auto design = this->effect->currentDesign();
    if constexpr (cutref::isCascade(TypeParam::kind)) EXPECT_TRUE(std::isnan(design.gain));
    else EXPECT_TRUE(std::isnan(design.b0));
}

TYPED_TEST(CutFilterVariant, OddSampleRatesAndNullBuffersDoNoHarm) {
    Buffers input = taggedSignal(TestFixture::kChannels, 64);
    for (float rate : {0.0f, -48000.0f, 3.0e38f, std::numeric_limits<float>::infinity(), 48000.0f}) {
        this->setSampleRate(rate);
        this->block(input, 0, 32, Mode::Separate);
    }
    this->host.processReplacing(nullptr, nullptr, 32);  // a host bug: nothing happens
    float* none[TestFixture::kChannels] = {};
    this->host.process(none, none, 32);
    this->expectSameMemory();
    this->block(input, 32, 32, Mode::Separate);
}

TYPED_TEST(CutFilterVariant, SetProgramStoresAnyNumberResetsParametersAndTellsHostNothing) {
    this->setParameter(0, 0.8f);
    this->setParameter(1, 0.1f);
    gHostLog = HostLog{};
    this->effect->setProgram(5);
    EXPECT_EQ(this->host.getProgram(), 5);
    EXPECT_EQ(this->host.getParameter(0), 0.25f);
    if (cutref::parameterCount(TypeParam::kind) == 2) {
        EXPECT_EQ(this->host.getParameter(1), 0.5f);
    }
    EXPECT_EQ(gHostLog.calls[0], 0) << "no automation report";
    int total = 0;
    for (int c : gHostLog.calls) total += c;
    EXPECT_EQ(total, 0);
}

TYPED_TEST(CutFilterVariant, RecordCarriesVariantSettings) {
    AEffect* e = this->effect->getAeffect();
    EXPECT_EQ(e->numInputs, static_cast<VstInt32>(TestFixture::kChannels));
    EXPECT_EQ(e->numOutputs, static_cast<VstInt32>(TestFixture::kChannels));
    const VstInt32 ids[] = {0x41466C31, 0x41466C32, 0x41466C36, 0x41463136};
    const unsigned counts[] = {1, 2, 6, 16};
    for (int i = 0; i < 4; ++i)
        if (counts[i] == TestFixture::kChannels) {
            EXPECT_EQ(e->uniqueID, ids[i]);
        }
    EXPECT_NE(e->flags & effFlagsCanReplacing, 0);
    EXPECT_EQ(e->numPrograms, 1);
    EXPECT_EQ(e->numParams, cutref::parameterCount(TypeParam::kind));
}

// A signal, then ten seconds of silence at 48 kHz: no output sample and no
// memory value ever becomes subnormal.
TYPED_TEST(CutFilterVariant, SilenceNeverGoesSubnormal) {
    constexpr VstInt32 kBlock = 512;
    constexpr int kSignalBlocks = 10;
    constexpr int kSilentBlocks = 48000 * 10 / kBlock + 1;
    this->setSampleRate(48000.0f);
    Buffers signal = taggedSignal(TestFixture::kChannels, kBlock * kSignalBlocks);
    Buffers work(TestFixture::kChannels, kBlock);
    std::vector<float> last(TestFixture::kChannels * 8);
    for (int b = 0; b < kSignalBlocks + kSilentBlocks; ++b) {
        for (unsigned c = 0; c < TestFixture::kChannels; ++c)
            for (VstInt32 i = 0; i < kBlock; ++i)
                work.data[c][static_cast<std::size_t>(i)] =
                    b < kSignalBlocks ? signal.data[c][static_cast<std::size_t>(b * kBlock + i)] : 0.0f;
        this->host.processReplacing(work.get(), work.get(), kBlock);
        for (unsigned c = 0; c < TestFixture::kChannels; ++c) {
            for (float y : work.data[c]) ASSERT_NE(std::fpclassify(y), FP_SUBNORMAL) << "block " << b;
            const float* m = this->effect->historyBuffer().GetChannel(static_cast<int>(c));
            for (int k = 0; k < this->model.memorySize(); ++k) ASSERT_NE(std::fpclassify(m[k]), FP_SUBNORMAL);
        }
    }
    // Where each family settles in silence.
    for (unsigned c = 0; c < TestFixture::kChannels; ++c) {
        const std::vector<float>& y = work.data[c];
        const float a = y[kBlock - 2], b = y[kBlock - 1];
        EXPECT_LT(std::fabs(a), 1e-20f);
        EXPECT_LT(std::fabs(b), 1e-20f);
        switch (TypeParam::kind) {
            case Kind::Lowpass:  // a tiny positive constant
            case Kind::Notch:
                EXPECT_GT(b, 0.0f);
                EXPECT_EQ(a, b);
                break;
            case Kind::Highpass:  // a tiny alternating signal
                EXPECT_LT(a * 1e20f * b * 1e20f, 0.0f);
                break;
            case Kind::Bandpass: {  // tiny, not all zero
                float largest = 0.0f;
                for (float v : y) largest = std::max(largest, std::fabs(v));
                EXPECT_GT(largest, 0.0f);
                break;
            }
        }
    }
}

}  // namespace
