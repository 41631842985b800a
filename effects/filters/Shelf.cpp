#include "effects/filters/Shelf.h"

#include "Math.h"

#include "MF/Constants.h"
#include "effects/filters/Boost.h"

namespace AF {

namespace {

constexpr double kDecibelsToExponent = 0.025;  // 10^(dB / 40): the shelf's amplitude factor
constexpr float kStale = -1.0f;

// Bass: w = pi 400 / fs puts the corner at 200 Hz; the slope term uses C = 1.5.
constexpr ShelfShape kBassShape{
    400.0, 1.5, ShelfKind::low, {boostScale::parameter("$$$/Korvex/AudioFilters/Boost=Boost")}};

// Treble: w = pi 8000 / fs puts the corner at 4000 Hz; the slope term uses C = 5.
// The parameter's name key (blanks around the word included) is its own, not Bass's.
constexpr ShelfShape kTrebleShape{
    8000.0, 5.0, ShelfKind::high, {boostScale::parameter("$$$/Korvex/AudioFilters/Boost2= Boost ")}};

}  // namespace

ShelfAngle shelfAngle(const ShelfShape& shape, float sampleRate) noexcept {
    // Each rounded step is kept as a double holding the float's value, so the
    // steps after it run in double precision as written.
    const double fs = sampleRate;
    const double w = toFloat(MF::kPi * shape.cornerScale / fs);
    // The slope term is the usual shelving term with the gain replaced by the
    // angle: the steepness follows the sample rate, not the boost.
    const double wMinusOne = w - 1.0;
    const double beta = toFloat(math::sqrt((w * w + 1.0) * shape.slope - wMinusOne * wMinusOne));
    ShelfAngle angle;
    angle.w = toFloat(w);
    angle.beta = toFloat(beta);
    angle.sinW = toFloat(math::sin(w));
    angle.cosW = toFloat(math::cos(w));
    return angle;
}

ShelfDesign designShelf(const ShelfShape& shape, float sampleRate, float boost) noexcept {
    const ShelfAngle angle = shelfAngle(shape, sampleRate);
    const double beta = angle.beta;
    const double s = angle.sinW;
    // The high shelf is the low shelf mirrored about a quarter of the sample
    // rate: cos w changes sign, and so do the odd coefficients c1 and c3.
    // Negation is exact, so every sum below is the one each shelf's own
    // formula writes, term for term.
    const double mirror = shape.kind == ShelfKind::low ? 1.0 : -1.0;
    const double k = mirror * angle.cosW;
    const double a = toFloat(math::pow(10.0, boostScale::decibels(boost) * kDecibelsToExponent));
    const double a0 = toFloat((a + 1.0) + (a - 1.0) * k + beta * s);
    ShelfDesign design;
    design.c0 = toFloat(a * ((a + 1.0) - (a - 1.0) * k + beta * s) / a0);
    design.c1 = toFloat(mirror * 2.0 * a * ((a - 1.0) - (a + 1.0) * k) / a0);
    design.c2 = toFloat(a * ((a + 1.0) - (a - 1.0) * k - beta * s) / a0);
    design.c3 = toFloat(mirror * 2.0 * ((a - 1.0) + (a + 1.0) * k) / a0);
    design.c4 = toFloat(-((a + 1.0) + (a - 1.0) * k - beta * s) / a0);
    return design;
}

AudioShelf::AudioShelf(unsigned channels, audioMasterCallback audioMaster, const ShelfShape& shape)
    : FilterFamily(audioMaster, shape.parameters, channels, kEqHistoryLength, ProgramReset::automated,
                   {boostScale::kFlat}, {kStale}),
      shape_(shape) {}

AudioShelf::~AudioShelf() = default;

ShelfDesign AudioShelf::designFor(const Values& parameters) noexcept {
    return designShelf(shape_, getSampleRate(), parameters[0]);
}

AudioBass::AudioBass(unsigned channels, audioMasterCallback audioMaster) : AudioShelf(channels, audioMaster, kBassShape) {}
AudioBass::~AudioBass() = default;
AudioTreble::AudioTreble(unsigned channels, audioMasterCallback audioMaster) : AudioShelf(channels, audioMaster, kTrebleShape) {}
AudioTreble::~AudioTreble() = default;

}  // namespace AF
