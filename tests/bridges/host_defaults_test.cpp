// The bridges as a user meets them: plug-ins inserted with no control given
// in FFmpeg (LADSPA and LV2), lv2file and SoX (ecasound with the defaults typed), values a host does
// not check (out of range, NaN, infinity), the LV2 metadata hosts read, and
// 5.1 channel order. Expected levels are computed here from the filters'
// textbook responses, not from the bridges or the effects.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <map>
#include <sstream>

#include "bridges/BridgeSupport.h"

namespace {

using namespace bridgetest;

constexpr int kRate = 44100;
constexpr double kPi = 3.14159265358979323846;
constexpr double kToneHz = 1000.0;
// 1000 Hz at 44.1 kHz repeats every 441 frames: the level is measured over
// whole periods once the filters have settled.
constexpr int kFrames = 3 * kRate;
constexpr int kMeasured = 441 * 100;
// The default centre and cut-off frequency of the filters, in hertz.
constexpr double kDefaultCutoffHz = 1495.0;
// The default quality factor of the band-pass and the notch: 0.5 * 0.5 * 9.9 + 0.1.
constexpr double kDefaultQ = 2.575;

Channels tone(int channels, int frames, double hz, double amplitude) {
    Channels out(static_cast<std::size_t>(channels), std::vector<float>(static_cast<std::size_t>(frames)));
    for (auto& channel : out) {
        for (int i = 0; i < frames; ++i) channel[static_cast<std::size_t>(i)] = static_cast<float>(amplitude * std::sin(2.0 * kPi * hz * i / kRate));
    }
    return out;
}

double rmsOfEnd(const std::vector<float>& samples) {
    double sum = 0.0;
    for (std::size_t i = samples.size() - kMeasured; i < samples.size(); ++i) sum += static_cast<double>(samples[i]) * samples[i];
    return std::sqrt(sum / kMeasured);
}

// Two identical second-order Butterworth sections made by the bilinear
// transform: |H|^2 per section is 1 / (1 + r^4) with r the ratio of the
// prewarped frequencies, so the cascade's |H| is 1 / (1 + r^4).
double butterworthGain(bool highpass, double hz, double cutoffHz) {
    const double tone = std::tan(kPi * hz / kRate);
    const double corner = std::tan(kPi * cutoffHz / kRate);
    const double r = highpass ? corner / tone : tone / corner;
    return 1.0 / (1.0 + std::pow(r, 4.0));
}

// The band-pass (unity gain at the centre) and notch sections of the
// bilinear-transform cookbook, evaluated on the unit circle:
// band-pass H(z) = alpha (1 - z^-2) / D(z), notch H(z) = (1 - 2 cos w0 z^-1 + z^-2) / D(z),
// D(z) = (1 + alpha) - 2 cos w0 z^-1 + (1 - alpha) z^-2, alpha = sin w0 / 2Q.
double resonatorGain(bool notch, double hz, double centreHz, double q) {
    const double w0 = 2.0 * kPi * centreHz / kRate;
    const double alpha = std::sin(w0) / (2.0 * q);
    const std::complex<double> z1 = std::polar(1.0, -2.0 * kPi * hz / kRate);
    const std::complex<double> z2 = z1 * z1;
    const std::complex<double> numerator = notch ? 1.0 - 2.0 * std::cos(w0) * z1 + z2 : alpha * (1.0 - z2);
    const std::complex<double> denominator = (1.0 + alpha) - 2.0 * std::cos(w0) * z1 + (1.0 - alpha) * z2;
    return std::abs(numerator / denominator);
}

struct DefaultCase {
    const char* family;        // "highpass": label af_<family>_stereo, URI urn:audiofilters:<family>-stereo
    const char* identifier;    // the registered effect, to skip families not built
    double expectedGain;       // at 1 kHz, linear
    const char* defaults;      // the family's defaults in port order, for ecasound (see below)
};

void PrintTo(const DefaultCase& c, std::ostream* out) { *out << c.family; }

std::vector<DefaultCase> defaultCases() {
    return {
        {"highpass", "Internal Highpass Stereo", butterworthGain(true, kToneHz, kDefaultCutoffHz), "1495"},
        {"lowpass", "Internal Lowpass Stereo", butterworthGain(false, kToneHz, kDefaultCutoffHz), "1495"},
        {"bandpass", "Internal Bandpass Stereo", resonatorGain(false, kToneHz, kDefaultCutoffHz, kDefaultQ), "1495,2.575"},
        {"notch", "Internal Bandreject Stereo", resonatorGain(true, kToneHz, kDefaultCutoffHz, kDefaultQ), "1495,2.575"},
        // A bell, a shelf and a level at 0 dB leave the tone as it is.
        {"parametric_eq", "Internal Parametric EQ Stereo", 1.0, "1495,10.05,0"},
        {"bass", "Internal Bass Stereo", 1.0, "0"},
        {"treble", "Internal Treble Stereo", 1.0, "0"},
        {"volume", "Internal Volume Stereo", 1.0, "0"},
    };
}

std::string uriFor(const DefaultCase& c) {
    std::string slug = c.family;
    for (char& ch : slug) ch = ch == '_' ? '-' : ch;
    return "urn:audiofilters:" + slug + "-stereo";
}

std::string ffmpegUri(const std::string& uri) {
    std::string escaped;
    for (char ch : uri) escaped += ch == ':' ? std::string("\\\\:") : std::string(1, ch);
    return escaped;
}

// One host's command line, given the input, output and case.
using HostCommand = std::function<std::string(const std::string& in, const std::string& out, const DefaultCase& c)>;

struct Host {
    const char* name;
    const char* tool;
    const char* package;
    HostCommand command;
};

const std::vector<Host>& hosts() {
    static const std::vector<Host> all = {
        {"FFmpeg LADSPA", "ffmpeg", "ffmpeg",
         [](const std::string& in, const std::string& out, const DefaultCase& c) {
             return "ffmpeg -nostdin -hide_banner -loglevel error -y -i " + shellQuoted(in) +
                    " -af ladspa=f=audiofilters-ladspa:p=af_" + c.family + "_stereo -c:a pcm_f32le " + shellQuoted(out);
         }},
        {"FFmpeg LV2", "ffmpeg", "ffmpeg",
         [](const std::string& in, const std::string& out, const DefaultCase& c) {
             return "ffmpeg -nostdin -hide_banner -loglevel error -y -i " + shellQuoted(in) + " -af " +
                    shellQuoted("lv2=p=" + ffmpegUri(uriFor(c))) + " -c:a pcm_f32le " + shellQuoted(out);
         }},
        {"lv2file", "lv2file", "lv2file",
         [](const std::string& in, const std::string& out, const DefaultCase& c) {
             return "lv2file -i " + shellQuoted(in) + " -o " + shellQuoted(out) + " " + shellQuoted(uriFor(c));
         }},
        // ecasound 2.9.3 starts every control it is not given at 0 (its cop-status
        // shows it), whatever default the plug-in's hints name, ladspa-sdk's own
        // delay_5s too, and has no switch for it: the defaults are typed, as the
        // README tells users to.
        {"ecasound", "ecasound", "ecasound",
         [](const std::string& in, const std::string& out, const DefaultCase& c) {
             return "ecasound -q -f:f32_le,2," + std::to_string(kRate) + " -i " + shellQuoted(in) + " -o " +
                    shellQuoted(out) + " -el:af_" + c.family + "_stereo," + c.defaults;
         }},
        {"SoX", "sox", "sox",
         [](const std::string& in, const std::string& out, const DefaultCase& c) {
             return "sox " + shellQuoted(in) + " -e floating-point " + shellQuoted(out) + " ladspa audiofilters-ladspa af_" +
                    c.family + "_stereo";
         }},
    };
    return all;
}

class DefaultsInHosts : public testing::TestWithParam<DefaultCase> {};

TEST_P(DefaultsInHosts, AToneKeepsTheLevelTheDefaultImplies) {
    const DefaultCase& c = GetParam();
    if (!effectAvailable(c.identifier)) GTEST_SKIP() << c.identifier << " is not made by this build";
    const std::string folder = scratchFolder("defaults");
    const std::string in = folder + "/in.wav";
    constexpr double kAmplitude = 0.5;
    ASSERT_TRUE(writeFloatWav(in, Wav{kRate, tone(2, kFrames, kToneHz, kAmplitude)}));
    const double inputRms = kAmplitude / std::sqrt(2.0);
    const double expectedDb = 20.0 * std::log10(c.expectedGain);
    for (const Host& host : hosts()) {
        SCOPED_TRACE(host.name);
        REQUIRE_TOOL(host.tool, host.package);
        const std::string out = folder + "/out.wav";
        std::remove(out.c_str());
        const CommandResult run = runCommand(host.command(in, out, c));
        ASSERT_EQ(run.status, 0) << run.output;
        std::string why;
        const auto wav = readFloatWav(out, why);
        ASSERT_TRUE(wav) << why;
        ASSERT_EQ(wav->channels.size(), 2u);
        for (const auto& channel : wav->channels) {
            ASSERT_GE(channel.size(), static_cast<std::size_t>(kMeasured));
            const double gainDb = 20.0 * std::log10(rmsOfEnd(channel) / inputRms);
            EXPECT_NEAR(gainDb, expectedDb, 0.05) << host.name << ": " << c.family;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Bridges, DefaultsInHosts, testing::ValuesIn(defaultCases()),
                         [](const testing::TestParamInfo<DefaultCase>& info) {
                             std::string name;
                             for (const char* ch = info.param.family; *ch != '\0'; ++ch) {
                                 if (std::isalnum(static_cast<unsigned char>(*ch))) name += *ch;
                             }
                             return name;
                         });

// Renders noise through FFmpeg's LV2 filter with one control given as text.
std::optional<Channels> ffmpegLv2(const std::string& uri, const std::string& control) {
    const std::string folder = scratchFolder("unchecked");
    const std::string in = folder + "/in.wav";
    const std::string out = folder + "/out.wav";
    if (!writeFloatWav(in, Wav{kRate, aftest::taggedNoise(2, 20000, 5)})) return std::nullopt;
    const CommandResult run = runCommand("ffmpeg -nostdin -hide_banner -loglevel error -y -i " + shellQuoted(in) +
                                         " -af " + shellQuoted("lv2=p=" + ffmpegUri(uri) + ":c=" + control) +
                                         " -c:a pcm_f32le " + shellQuoted(out));
    if (run.status != 0) {
        ADD_FAILURE() << run.output;
        return std::nullopt;
    }
    std::string why;
    auto wav = readFloatWav(out, why);
    if (!wav) return std::nullopt;
    return wav->channels;
}

bool allFinite(const Channels& channels) {
    for (const auto& channel : channels) {
        for (float sample : channel) {
            if (!std::isfinite(sample)) return false;
        }
    }
    return true;
}

struct UncheckedCase {
    const char* uri;
    const char* identifier;
    const char* sent;     // what the user typed
    const char* clamped;  // the value it stands for: the range's end, or the default
};

TEST(UncheckedValues, FfmpegLv2RendersTheClampedValue) {
    REQUIRE_TOOL("ffmpeg", "ffmpeg");
    const std::vector<UncheckedCase> cases = {
        {"urn:audiofilters:volume-stereo", "Internal Volume Stereo", "level=20", "level=6"},
        {"urn:audiofilters:volume-stereo", "Internal Volume Stereo", "level=-500", "level=-90"},
        {"urn:audiofilters:volume-stereo", "Internal Volume Stereo", "level=nan", "level=0"},
        {"urn:audiofilters:volume-stereo", "Internal Volume Stereo", "level=inf", "level=0"},
        {"urn:audiofilters:delay-stereo", "Internal Delay Stereo", "delay=0.01|feedback=150", "delay=0.01|feedback=100"},
        {"urn:audiofilters:highpass-stereo", "Internal Highpass Stereo", "cutoff=1e6", "cutoff=20000"},
        {"urn:audiofilters:highpass-stereo", "Internal Highpass Stereo", "cutoff=-inf", "cutoff=1495"},
    };
    for (const UncheckedCase& c : cases) {
        SCOPED_TRACE(c.sent);
        if (!effectAvailable(c.identifier)) continue;
        const auto sent = ffmpegLv2(c.uri, c.sent);
        const auto clamped = ffmpegLv2(c.uri, c.clamped);
        ASSERT_TRUE(sent && clamped);
        EXPECT_TRUE(allFinite(*sent));
        EXPECT_TRUE(aftest::sameBits(*clamped, *sent));
    }
}

// Below the declared floor a level is silence.
TEST(UncheckedValues, TheLevelFloorIsSilence) {
    REQUIRE_TOOL("ffmpeg", "ffmpeg");
    if (!effectAvailable("Internal Volume Stereo")) GTEST_SKIP();
    const auto floor = ffmpegLv2("urn:audiofilters:volume-stereo", "level=-90");
    ASSERT_TRUE(floor);
    for (const auto& channel : *floor) {
        for (float sample : channel) ASSERT_EQ(sample, 0.0f);
    }
}

// (sord_validate checks the same files against the schemas: hosts_test.cpp.)
TEST(Lv2Metadata, Lv2ValidateIsClean) {
    REQUIRE_TOOL("lv2_validate", "lilv-utils");
    const std::string bundle = lv2Folder() + "/AudioFilters.lv2";
    const CommandResult lv2 = runCommand("lv2_validate " + shellQuoted(bundle + "/manifest.ttl") + " " +
                                         shellQuoted(bundle + "/AudioFilters.ttl") + " " + shellQuoted(bundle + "/presets.ttl"));
    EXPECT_EQ(lv2.status, 0) << lv2.output;
    EXPECT_NE(lv2.output.find("Found 0 errors"), std::string::npos) << lv2.output;
    EXPECT_EQ(lv2.output.find("error:"), std::string::npos) << lv2.output;
    EXPECT_EQ(lv2.output.find("warning"), std::string::npos) << lv2.output;
}

// The unit of each control port (by symbol) in what `lv2info -p` writes of a
// plug-in, read back as N-Triples through sordi.
std::map<std::string, std::string> unitsBySymbol(const std::string& uri) {
    const std::string file = scratchFolder("lv2info") + "/plugin.ttl";
    const CommandResult written = runCommand("lv2info -p " + shellQuoted(file) + " " + shellQuoted(uri));
    EXPECT_EQ(written.status, 0) << written.output;
    const CommandResult triples = runCommand("sordi " + shellQuoted(file));
    EXPECT_EQ(triples.status, 0) << triples.output;
    std::map<std::string, std::string> symbolOf;
    std::map<std::string, std::string> unitOf;
    std::istringstream lines(triples.output);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string subject, predicate, object;
        words >> subject >> predicate >> object;
        // A literal: "center"
        if (predicate == "<http://lv2plug.in/ns/lv2core#symbol>" && object.size() > 2) {
            symbolOf[subject] = object.substr(1, object.size() - 2);
        }
        if (predicate == "<http://lv2plug.in/ns/extensions/units#unit>") unitOf[subject] = object;
    }
    std::map<std::string, std::string> units;
    for (const auto& [port, symbol] : symbolOf) {
        if (unitOf.count(port) != 0) units[symbol] = unitOf[port];
    }
    return units;
}

TEST(Lv2Metadata, Lv2infoShowsClassesUnitsGroupsAndPresets) {
    REQUIRE_TOOL("lv2info", "lilv-utils");
    REQUIRE_TOOL("sordi", "sordi");
    if (!effectAvailable("Internal Parametric EQ 5.1")) GTEST_SKIP();
    const CommandResult eq = runCommand("lv2info urn:audiofilters:parametric-eq-5-1");
    ASSERT_EQ(eq.status, 0) << eq.output;
    EXPECT_NE(eq.output.find("Class:             Parametric EQ Plugin"), std::string::npos) << eq.output;
    EXPECT_NE(eq.output.find("Author:            AudioFilters"), std::string::npos) << eq.output;
    EXPECT_NE(eq.output.find("Has latency:       yes"), std::string::npos) << eq.output;
    EXPECT_NE(eq.output.find("Presets: \n\t         Default"), std::string::npos) << eq.output;
    EXPECT_NE(eq.output.find("Group:       urn:audiofilters:parametric-eq-5-1#in"), std::string::npos) << eq.output;
    // Buffer 3 is the LFE.
    EXPECT_NE(eq.output.find("Symbol:      in_4\n\t\tName:        LFE In\n\t\tGroup:       urn:audiofilters:parametric-eq-5-1#in\n"
                             "\t\tDesignation: http://lv2plug.in/ns/ext/port-groups#lowFrequencyEffects"),
              std::string::npos)
        << eq.output;
    EXPECT_NE(eq.output.find("http://lv2plug.in/ns/ext/port-props#logarithmic"), std::string::npos) << eq.output;
    const auto units = unitsBySymbol("urn:audiofilters:parametric-eq-5-1");
    EXPECT_EQ(units.count("q"), 0u);
    EXPECT_EQ(units.count("center") ? units.at("center") : "", "<http://lv2plug.in/ns/extensions/units#hz>");
    EXPECT_EQ(units.count("boost") ? units.at("boost") : "", "<http://lv2plug.in/ns/extensions/units#db>");
    if (effectAvailable("Internal Bass Stereo")) {
        const auto bass = unitsBySymbol("urn:audiofilters:bass-stereo");
        EXPECT_EQ(bass.count("boost") ? bass.at("boost") : "", "<http://lv2plug.in/ns/extensions/units#db>");
    }
    const CommandResult delay = runCommand("lv2info urn:audiofilters:multitap-delay-stereo");
    ASSERT_EQ(delay.status, 0) << delay.output;
    EXPECT_NE(delay.output.find("Class:             Delay Plugin"), std::string::npos) << delay.output;
    // The effect's repeated "Level 4" gives two ports told apart by number.
    EXPECT_NE(delay.output.find("Symbol:      level_4_p9"), std::string::npos) << delay.output;
    EXPECT_NE(delay.output.find("Symbol:      level_4_p12"), std::string::npos) << delay.output;
    const CommandResult highpass = runCommand("lv2info urn:audiofilters:highpass-mono");
    EXPECT_NE(highpass.output.find("Class:             Highpass Filter Plugin"), std::string::npos) << highpass.output;
    const CommandResult notch = runCommand("lv2info urn:audiofilters:notch-stereo");
    EXPECT_EQ(notch.status, 0) << notch.output;
    EXPECT_NE(notch.output.find("Class:             Filter Plugin"), std::string::npos) << notch.output;
}

// Goertzel: the power of `samples` at `hz`.
double powerAt(const std::vector<float>& samples, double hz) {
    const double coefficient = 2.0 * std::cos(2.0 * kPi * hz / kRate);
    double s1 = 0.0;
    double s2 = 0.0;
    for (float x : samples) {
        const double s = x + coefficient * s1 - s2;
        s2 = s1;
        s1 = s;
    }
    return s1 * s1 + s2 * s2 - coefficient * s1 * s2;
}

// Each channel of a 5.1 file carries its own tone (above the high-pass's
// default cut-off); after the plug-in, each tone is still on its channel.
TEST(FivePointOne, FfmpegKeepsEveryToneOnItsChannel) {
    REQUIRE_TOOL("ffmpeg", "ffmpeg");
    const double tones[6] = {3000.0, 4000.0, 5000.0, 6000.0, 7000.0, 8000.0};
    Channels input;
    for (double hz : tones) input.push_back(tone(1, kRate / 2, hz, 0.25)[0]);
    const std::string folder = scratchFolder("five-point-one");
    const std::string in = folder + "/in.wav";
    ASSERT_TRUE(writeFloatWav(in, Wav{kRate, input}));
    const std::vector<std::pair<std::string, std::string>> filters = {
        {"Internal Highpass 5.1", "lv2=p=" + ffmpegUri("urn:audiofilters:highpass-5-1")},
        {"Internal Highpass 5.1", "ladspa=f=audiofilters-ladspa:p=af_highpass_5_1"},
        {"Internal Channel Volume 5.1", "lv2=p=" + ffmpegUri("urn:audiofilters:channel-volume-5-1")},
        {"Internal Delay 5.1", "lv2=p=" + ffmpegUri("urn:audiofilters:delay-5-1") + ":c=delay=0.01"},
    };
    for (const auto& [identifier, filter] : filters) {
        SCOPED_TRACE(filter);
        if (!effectAvailable(identifier)) continue;
        const std::string out = folder + "/out.wav";
        const CommandResult run = runCommand("ffmpeg -nostdin -hide_banner -loglevel error -y -i " + shellQuoted(in) +
                                             " -af " + shellQuoted(filter) + " -c:a pcm_f32le " + shellQuoted(out));
        ASSERT_EQ(run.status, 0) << run.output;
        std::string why;
        const auto wav = readFloatWav(out, why);
        ASSERT_TRUE(wav) << why;
        ASSERT_EQ(wav->channels.size(), 6u);
        for (int c = 0; c < 6; ++c) {
            const auto& channel = wav->channels[static_cast<std::size_t>(c)];
            const double own = powerAt(channel, tones[c]);
            for (int other = 0; other < 6; ++other) {
                if (other == c) continue;
                EXPECT_GT(own, 1.0e6 * powerAt(channel, tones[other])) << "channel " << c << " holds the tone of " << other;
            }
        }
    }
}

}  // namespace
