#pragma once
// The one-knob shelving tone control behind Bass and Treble: a second-order
// shelf per channel with a fixed corner and a boost or cut of up to 24 dB.
// The two families are the same code with their own constants and texts:
//   Bass    a low shelf with its corner fixed at 200 Hz
//   Treble  a high shelf with its corner fixed at 4000 Hz
#include <array>

#include "effects/filters/EqChannels.h"
#include "effects/filters/FilterFamily.h"
#include "frame/Numeric.h"

namespace AF {

enum class ShelfKind { low, high };

// What tells a bass control from a treble control.
struct ShelfShape {
    double cornerScale;  // K: w = pi K / fs, so K / 2 is the corner in Hz
    double slope;        // C of the slope term built from the angle
    ShelfKind kind;
    std::array<Parameter, 1> parameters;  // the boost, under the family's own name
};

// The angle and the slope term, which depend on the sample rate only.
struct ShelfAngle {
    float w = 0.0f;
    float beta = 0.0f;
    float sinW = 0.0f;
    float cosW = 0.0f;
};

// Feed-forward c0, c1, c2 and feedback c3, c4 (signs already turned for
// addition). All start at 0: a host that stores the stale marker before the
// first buffer gets no computation and a section running on zero coefficients.
struct ShelfDesign {
    float c0 = 0.0f;
    float c1 = 0.0f;
    float c2 = 0.0f;
    float c3 = 0.0f;
    float c4 = 0.0f;
};

ShelfAngle shelfAngle(const ShelfShape& shape, float sampleRate) noexcept;
ShelfDesign designShelf(const ShelfShape& shape, float sampleRate, float boost) noexcept;

// The section's sum before the anti-denormal bias, in its one order of
// evaluation, for a double (the plain loop) or lanes of doubles (several
// channels at once); sharing the text keeps the two paths identical.
struct ShelfSection {
    static constexpr unsigned kCoefficients = 5;
    // (The result is written through a reference: a wide vector returned by
    // value would change the calling convention outside the AVX2 code.)
    template <class T>
    [[gnu::always_inline]] static inline void sum(T& result, const T* c, const T& x, const T& x1, const T& x2,
                                                  const T& y1, const T& y2) noexcept {
        result = (((c[1] * x1 + c[0] * x) + c[3] * y1) + c[2] * x2) + c[4] * y2;
    }
    static std::array<float, kCoefficients> coefficientArray(const ShelfDesign& d) noexcept {
        return {d.c0, d.c1, d.c2, d.c3, d.c4};
    }
};

// The family behind Bass and Treble: the boost and the lazy design. The
// channel variants (EqChannels.h) add the processing calls.
class AF_EXPORT AudioShelf : public FilterFamily<ShelfDesign, 1> {
public:
    using Section = ShelfSection;
    static float step(const ShelfDesign& design, EqHistory& memory, const float& input) noexcept {
        return stepEqSection<Section>(Section::coefficientArray(design), memory, input);
    }

    AudioShelf(unsigned channels, audioMasterCallback audioMaster, const ShelfShape& shape);
    ~AudioShelf() override;

protected:
    // At the current sample rate: the corner is fixed in hertz.
    ShelfDesign designFor(const Values& parameters) noexcept override;

private:
    const ShelfShape& shape_;
};

class AF_EXPORT AudioBass : public AudioShelf { public: AudioBass(unsigned channels, audioMasterCallback audioMaster); ~AudioBass() override; };
class AF_EXPORT AudioTreble : public AudioShelf { public: AudioTreble(unsigned channels, audioMasterCallback audioMaster); ~AudioTreble() override; };

}  // namespace AF
