// Real hosts through the bridges: FFmpeg (LADSPA and LV2), lv2file and SoX
// render float WAV files; analyseplugin, lv2ls, lv2info and sord_validate
// read what the bridges declare. Every result is compared with the effect
// made through the module's factory and driven directly with the same
// parameter values and the same block partition.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <set>
#include <fstream>
#include <sstream>

#include "Ordo/MakeStdString.h"
#include "bridges/BridgeSupport.h"
#include "bridges/Cases.h"
#include "bridges/Listing.h"

namespace {

using namespace bridgetest;
using aftest::HostEffect;
using aftest::LoadedModule;

// The block size the tests fix in every host (FFmpeg: asetnsamples without
// padding; lv2file: -b), so the partition is known: blocks of 1000 and a rest.
constexpr int kHostBlock = 1000;
constexpr int kFrames = 10007;

std::string withoutPrefix(const std::string& identifier) { return identifier.substr(std::string("Internal ").size()); }

std::string expectedLabel(const std::string& identifier) {
    std::string label = "af_";
    for (char ch : withoutPrefix(identifier)) {
        label += (ch == ' ' || ch == '.') ? '_' : static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    }
    return label;
}

std::string expectedUri(const std::string& identifier) {
    std::string slug;
    for (char ch : withoutPrefix(identifier)) {
        slug += (ch == ' ' || ch == '.') ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    }
    return "urn:audiofilters:" + slug;
}

std::string number(float value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
    return text;
}

std::string trim(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return std::string();
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::vector<std::string> makeableIdentifiers() {
    std::vector<std::string> out;
    for (const auto& registration : LoadedModule::Get().registrations()) {
        if (effectAvailable(registration.id.c_str())) out.push_back(registration.id.c_str());
    }
    return out;
}

bool nearlyEqual(double expected, double actual, double relative) {
    return std::fabs(expected - actual) <= relative * std::max(1.0, std::fabs(expected));
}

// Writes `input` at `rate`, returns the path.
std::string writeInput(const std::string& folder, const Channels& input, int rate) {
    const std::string path = folder + "/in.wav";
    EXPECT_TRUE(writeFloatWav(path, Wav{rate, input}));
    return path;
}

testing::AssertionResult renderedEquals(const std::string& path, const Channels& expected) {
    std::string why;
    const auto wav = readFloatWav(path, why);
    if (!wav) return testing::AssertionFailure() << why;
    return aftest::sameBits(expected, wav->channels);
}

class Hosts : public testing::TestWithParam<RenderCase> {
protected:
    void SetUp() override { ASSERT_TRUE(LoadedModule::Get().loaded()) << LoadedModule::Get().error(); }

    // The case's effect, or a skip naming a family this build does not make.
    bool available() {
        if (effectAvailable(GetParam().identifier)) return true;
        return false;
    }
    Channels input(int frames = kFrames) const { return aftest::taggedNoise(2, frames, 21); }
    std::optional<Channels> expected(double rate, const std::vector<int>& blocks, int frames = kFrames) const {
        return renderDirect(GetParam().identifier, rate, settingsOf(GetParam().controls), input(frames), blocks);
    }
    // lv2info's symbols for the control ports, in port order.
    std::vector<std::string> lv2Symbols() {
        const CommandResult info = runCommand("lv2info " + shellQuoted(expectedUri(GetParam().identifier)));
        std::vector<std::string> symbols;
        const auto plugin = parseLv2info(info.output);
        if (!plugin) return symbols;
        for (const ListedPort& port : plugin->ports) {
            if (!port.audio && port.input) symbols.push_back(port.symbol);
        }
        return symbols;
    }
};

#define SKIP_IF_NOT_MADE()                                                                                   \
    if (!available()) GTEST_SKIP() << GetParam().identifier << " is not made by this build of the module"

std::string ffmpegLadspaFilter(const RenderCase& c) {
    std::string controls;
    for (std::size_t k = 0; k < c.controls.size(); ++k) {
        if (k != 0) controls += '|';
        controls += 'c';
        controls += std::to_string(k);
        controls += '=';
        controls += number(c.controls[k]);
    }
    std::string filter = "ladspa=f=audiofilters-ladspa:p=" + expectedLabel(c.identifier);
    if (!controls.empty()) filter += ":c=" + controls;
    return filter;
}

TEST_P(Hosts, FfmpegThroughLadspaIsBitExact) {
    SKIP_IF_NOT_MADE();
    REQUIRE_TOOL("ffmpeg", "ffmpeg");
    const std::string folder = scratchFolder("ffmpeg-ladspa");
    const std::string in = writeInput(folder, input(), 44100);
    const std::string out = folder + "/out.wav";
    const std::string filter = "asetnsamples=n=" + std::to_string(kHostBlock) + ":p=0," + ffmpegLadspaFilter(GetParam());
    const CommandResult run = runCommand("ffmpeg -nostdin -hide_banner -loglevel error -y -i " + shellQuoted(in) +
                                         " -af " + shellQuoted(filter) + " -c:a pcm_f32le " + shellQuoted(out));
    ASSERT_EQ(run.status, 0) << run.output;
    const auto reference = expected(44100.0, partition(kFrames, kHostBlock));
    ASSERT_TRUE(reference);
    EXPECT_TRUE(renderedEquals(out, *reference));
}

TEST_P(Hosts, FfmpegThroughLv2IsBitExact) {
    SKIP_IF_NOT_MADE();
    REQUIRE_TOOL("ffmpeg", "ffmpeg");
    REQUIRE_TOOL("lv2info", "lilv-utils");
    const std::vector<std::string> symbols = lv2Symbols();
    ASSERT_EQ(symbols.size(), GetParam().controls.size());
    std::string controls;
    for (std::size_t k = 0; k < symbols.size(); ++k) {
        controls += (k == 0 ? "" : "|") + symbols[k] + "=" + number(GetParam().controls[k]);
    }
    std::string uri = expectedUri(GetParam().identifier);
    std::string escaped;
    for (char ch : uri) escaped += ch == ':' ? std::string("\\\\:") : std::string(1, ch);
    std::string filter = "asetnsamples=n=" + std::to_string(kHostBlock) + ":p=0,lv2=p=" + escaped;
    if (!controls.empty()) filter += ":c=" + controls;
    const std::string folder = scratchFolder("ffmpeg-lv2");
    const std::string in = writeInput(folder, input(), 44100);
    const std::string out = folder + "/out.wav";
    const CommandResult run = runCommand("ffmpeg -nostdin -hide_banner -loglevel error -y -i " + shellQuoted(in) +
                                         " -af " + shellQuoted(filter) + " -c:a pcm_f32le " + shellQuoted(out));
    ASSERT_EQ(run.status, 0) << run.output;
    const auto reference = expected(44100.0, partition(kFrames, kHostBlock));
    ASSERT_TRUE(reference);
    EXPECT_TRUE(renderedEquals(out, *reference));
}

TEST_P(Hosts, Lv2fileIsBitExact) {
    SKIP_IF_NOT_MADE();
    REQUIRE_TOOL("lv2file", "lv2file");
    REQUIRE_TOOL("lv2info", "lilv-utils");
    const std::vector<std::string> symbols = lv2Symbols();
    ASSERT_EQ(symbols.size(), GetParam().controls.size());
    const std::string folder = scratchFolder("lv2file");
    // lv2file always runs whole blocks (a short last block is padded), so the
    // file holds whole blocks only and the partition stays the one we name.
    const int frames = 10 * kHostBlock;
    const std::string in = writeInput(folder, input(frames), 44100);
    const std::string out = folder + "/out.wav";
    // Without --ignore-clipping lv2file clips its output to [-1, 1].
    std::string command = "lv2file --ignore-clipping -i " + shellQuoted(in) + " -o " + shellQuoted(out) + " -b " +
                          std::to_string(kHostBlock);
    for (std::size_t k = 0; k < symbols.size(); ++k) {
        command += " -p " + shellQuoted(symbols[k] + ":" + number(GetParam().controls[k]));
    }
    command += " " + shellQuoted(expectedUri(GetParam().identifier));
    const CommandResult run = runCommand(command);
    ASSERT_EQ(run.status, 0) << run.output;
    const auto reference = expected(44100.0, partition(frames, kHostBlock), frames);
    ASSERT_TRUE(reference);
    EXPECT_TRUE(renderedEquals(out, *reference));
}

// SoX carries samples as 32-bit integers between effects and rounds float
// output to its own precision: the bridge's result may differ from the direct
// one by no more than a plain SoX copy changes these very files.
TEST_P(Hosts, SoxThroughLadspaWithinItsOwnRounding) {
    SKIP_IF_NOT_MADE();
    REQUIRE_TOOL("sox", "sox");
    const std::string folder = scratchFolder("sox");
    const std::string in = writeInput(folder, input(), 44100);
    // SoX hands the plug-in 8192 samples at a time: 4096 stereo frames.
    const auto reference = expected(44100.0, partition(kFrames, 4096));
    ASSERT_TRUE(reference);
    const std::string directPath = folder + "/direct.wav";
    ASSERT_TRUE(writeFloatWav(directPath, Wav{44100, *reference}));
    std::string command = "sox " + shellQuoted(in) + " " + shellQuoted(folder + "/out.wav") + " ladspa audiofilters-ladspa " +
                          expectedLabel(GetParam().identifier);
    for (float value : GetParam().controls) command += " " + number(value);
    const CommandResult run = runCommand(command);
    ASSERT_EQ(run.status, 0) << run.output;
    ASSERT_EQ(runCommand("sox " + shellQuoted(in) + " " + shellQuoted(folder + "/in-copy.wav")).status, 0);
    ASSERT_EQ(runCommand("sox " + shellQuoted(directPath) + " " + shellQuoted(folder + "/direct-copy.wav")).status, 0);
    std::string why;
    const auto rendered = readFloatWav(folder + "/out.wav", why);
    const auto inCopy = readFloatWav(folder + "/in-copy.wav", why);
    const auto directCopy = readFloatWav(folder + "/direct-copy.wav", why);
    ASSERT_TRUE(rendered && inCopy && directCopy) << why;
    const Channels original = input();
    double allowed = 0.0;
    double worst = 0.0;
    for (std::size_t c = 0; c < 2; ++c) {
        ASSERT_EQ(rendered->channels[c].size(), static_cast<std::size_t>(kFrames));
        for (std::size_t i = 0; i < static_cast<std::size_t>(kFrames); ++i) {
            allowed = std::max(allowed, std::fabs(static_cast<double>(inCopy->channels[c][i]) - original[c][i]));
            allowed = std::max(allowed, std::fabs(static_cast<double>(directCopy->channels[c][i]) - (*reference)[c][i]));
            worst = std::max(worst, std::fabs(static_cast<double>(rendered->channels[c][i]) - (*reference)[c][i]));
        }
    }
    EXPECT_LE(worst, allowed) << "SoX's own copies change samples by up to " << allowed;
}

// The same effects at the ends of the rate range, through FFmpeg's LADSPA host.
TEST_P(Hosts, FfmpegAtEightAndThreeHundredEightyFourKilohertz) {
    SKIP_IF_NOT_MADE();
    REQUIRE_TOOL("ffmpeg", "ffmpeg");
    for (int rate : {8000, 384000}) {
        SCOPED_TRACE(rate);
        const std::string folder = scratchFolder("ffmpeg-rate");
        const std::string in = writeInput(folder, input(), rate);
        const std::string out = folder + "/out.wav";
        const std::string filter = "asetnsamples=n=" + std::to_string(kHostBlock) + ":p=0," + ffmpegLadspaFilter(GetParam());
        const CommandResult run = runCommand("ffmpeg -nostdin -hide_banner -loglevel error -y -i " + shellQuoted(in) +
                                             " -af " + shellQuoted(filter) + " -c:a pcm_f32le " + shellQuoted(out));
        ASSERT_EQ(run.status, 0) << run.output;
        const auto reference = expected(static_cast<double>(rate), partition(kFrames, kHostBlock));
        ASSERT_TRUE(reference);
        EXPECT_TRUE(renderedEquals(out, *reference));
    }
}

INSTANTIATE_TEST_SUITE_P(Effects, Hosts, testing::ValuesIn(renderCases()),
                         [](const testing::TestParamInfo<RenderCase>& info) {
                             std::string name;
                             for (char ch : info.param.identifier) {
                                 if (std::isalnum(static_cast<unsigned char>(ch))) name += ch;
                             }
                             return name;
                         });

class Listings : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(LoadedModule::Get().loaded()) << LoadedModule::Get().error(); }
};

// analyseplugin's view of every plug-in: name, ports, ranges, as the
// module's record and property interface describe the effect.
TEST_F(Listings, AnalysepluginAgreesWithTheModule) {
    REQUIRE_TOOL("analyseplugin", "ladspa-sdk");
    const auto identifiers = makeableIdentifiers();
    ASSERT_FALSE(identifiers.empty());
    for (const std::string& identifier : identifiers) {
        SCOPED_TRACE(identifier);
        const CommandResult run = runCommand("analyseplugin audiofilters-ladspa " + expectedLabel(identifier));
        ASSERT_EQ(run.status, 0) << run.output;
        const auto listed = parseAnalyseplugin(run.output);
        ASSERT_TRUE(listed) << run.output;
        const auto* registration = LoadedModule::Get().find(identifier);
        ASSERT_NE(registration, nullptr);
        EXPECT_EQ(listed->name.rfind(Ordo::MakeStdString(registration->displayName), 0), 0u) << listed->name;
        EXPECT_EQ(listed->label, expectedLabel(identifier));
        auto fx = HostEffect::Create(identifier);
        fx->start(48000.0f, 8192);
        fx->setProgram(0);  // the defaults hosts are given are the default program's
        const int channels = fx->channels();
        const int controls = fx->properties() != nullptr ? fx->effect()->numParams : 0;
        ASSERT_EQ(listed->ports.size(), static_cast<std::size_t>(2 * channels + controls)) << run.output;
        for (int c = 0; c < 2 * channels; ++c) {
            EXPECT_TRUE(listed->ports[static_cast<std::size_t>(c)].audio);
            EXPECT_EQ(listed->ports[static_cast<std::size_t>(c)].input, c < channels);
        }
        for (int k = 0; k < controls; ++k) {
            const ListedPort& port = listed->ports[static_cast<std::size_t>(2 * channels + k)];
            const auto index = static_cast<unsigned>(k);
            EXPECT_EQ(port.name, expectedPortName(*fx, k));
            EXPECT_TRUE(port.input);
            EXPECT_FALSE(port.audio);
            const auto type = fx->properties()->GetParameterType(index);
            const float minimum = fx->properties()->GetParameterMin(index);
            const float maximum = fx->properties()->GetParameterMax(index);
            if (type == ML::VSTPropertySupportMixin::kNumber && minimum == 0.0f && maximum == 1.0f) {
                EXPECT_TRUE(port.toggled) << port.name;
                continue;
            }
            const auto [lower, upper] = hostRange(*fx, index);
            ASSERT_TRUE(port.minimum && port.maximum) << run.output;
            EXPECT_FALSE(port.sampleRate) << port.name;
            // analyseplugin prints six significant digits.
            EXPECT_TRUE(nearlyEqual(lower, *port.minimum, 1e-5)) << port.name << " " << *port.minimum;
            EXPECT_TRUE(nearlyEqual(upper, *port.maximum, 1e-5)) << port.name << " " << *port.maximum;
            ASSERT_TRUE(port.defaultValue.has_value()) << port.name;
            // The default hint lands on the effect's own default, except where
            // none of LADSPA's fixed points is it: Multitap Delay's 0.8 s and
            // 1.2 s taps and -6.02 dB levels.
            const float initial = fx->properties()->ConvertParameterValueToDisplay(index, fx->getParameter(k));
            if (identifier.rfind("Internal Multitap Delay", 0) == 0) continue;
            EXPECT_TRUE(nearlyEqual(initial, *port.defaultValue, 1e-4)) << port.name << " " << *port.defaultValue;
        }
    }
}

TEST_F(Listings, Lv2lsAndLv2infoAgreeWithTheModule) {
    REQUIRE_TOOL("lv2ls", "lilv-utils");
    REQUIRE_TOOL("lv2info", "lilv-utils");
    const auto identifiers = makeableIdentifiers();
    ASSERT_FALSE(identifiers.empty());
    const CommandResult list = runCommand("lv2ls");
    ASSERT_EQ(list.status, 0) << list.output;
    std::set<std::string> uris;
    std::istringstream lines(list.output);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("urn:audiofilters:", 0) == 0) uris.insert(line);
    }
    // Every effect, and the band-reject once more under its users' name, notch.
    std::size_t aliases = 0;
    for (const std::string& identifier : identifiers) aliases += identifier.rfind("Internal Bandreject", 0) == 0 ? 1 : 0;
    EXPECT_EQ(uris.size(), identifiers.size() + aliases) << list.output;
    for (const std::string& identifier : identifiers) {
        SCOPED_TRACE(identifier);
        EXPECT_EQ(uris.count(expectedUri(identifier)), 1u);
        const CommandResult run = runCommand("lv2info " + shellQuoted(expectedUri(identifier)));
        ASSERT_EQ(run.status, 0) << run.output;
        const auto listed = parseLv2info(run.output);
        ASSERT_TRUE(listed) << run.output;
        auto fx = HostEffect::Create(identifier);
        fx->start(48000.0f, 8192);
        fx->setProgram(0);  // the defaults hosts are given are the default program's
        const int channels = fx->channels();
        const int controls = fx->properties() != nullptr ? fx->effect()->numParams : 0;
        // Audio, controls, then the latency output.
        ASSERT_EQ(listed->ports.size(), static_cast<std::size_t>(2 * channels + controls + 1)) << run.output;
        std::set<std::string> symbols;
        for (const ListedPort& port : listed->ports) symbols.insert(port.symbol);
        EXPECT_EQ(symbols.size(), listed->ports.size()) << "symbols are unique within a plug-in";
        for (int c = 0; c < 2 * channels; ++c) {
            EXPECT_TRUE(listed->ports[static_cast<std::size_t>(c)].audio);
            EXPECT_EQ(listed->ports[static_cast<std::size_t>(c)].input, c < channels);
        }
        const ListedPort& latency = listed->ports.back();
        EXPECT_EQ(latency.symbol, "latency");
        EXPECT_FALSE(latency.input);
        EXPECT_FALSE(latency.audio);
        for (int k = 0; k < controls; ++k) {
            const ListedPort& port = listed->ports[static_cast<std::size_t>(2 * channels + k)];
            const auto index = static_cast<unsigned>(k);
            const auto type = fx->properties()->GetParameterType(index);
            const float minimum = fx->properties()->GetParameterMin(index);
            const float maximum = fx->properties()->GetParameterMax(index);
            const float initial = fx->properties()->ConvertParameterValueToDisplay(index, fx->getParameter(k));
            EXPECT_EQ(port.name.rfind(trim(fx->parameterName(k)), 0), 0u) << port.name;
            ASSERT_TRUE(port.minimum && port.maximum && port.defaultValue) << run.output;
            EXPECT_EQ(port.toggled, type == ML::VSTPropertySupportMixin::kNumber && minimum == 0.0f && maximum == 1.0f);
            EXPECT_FALSE(port.sampleRate) << "absolute units only";
            const auto [lower, upper] = hostRange(*fx, index);
            // lv2info prints six decimals.
            EXPECT_NEAR(*port.minimum, lower, 1e-6 * std::max(1.0, std::fabs(lower)));
            EXPECT_NEAR(*port.maximum, upper, 1e-6 * std::max(1.0, std::fabs(upper)));
            EXPECT_NEAR(*port.defaultValue, initial, 1e-6 * std::max(1.0f, std::fabs(initial)));
            EXPECT_EQ(port.logarithmic, type == ML::VSTPropertySupportMixin::kHertz) << port.name;
        }
    }
}

TEST_F(Listings, BundleValidatesAgainstTheLv2Schemas) {
    REQUIRE_TOOL("sord_validate", "sordi");
    const std::string bundle = lv2Folder() + "/AudioFilters.lv2";
    const CommandResult run = runCommand(
        "sord_validate /usr/lib/lv2/core.lv2/*.ttl /usr/lib/lv2/port-props.lv2/*.ttl /usr/lib/lv2/units.lv2/*.ttl "
        "/usr/lib/lv2/port-groups.lv2/*.ttl /usr/lib/lv2/presets.lv2/*.ttl /usr/lib/lv2/schemas.lv2/*.ttl " +
        shellQuoted(bundle + "/manifest.ttl") + " " + shellQuoted(bundle + "/AudioFilters.ttl") + " " +
        shellQuoted(bundle + "/presets.ttl"));
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_NE(run.output.find("Found 0 errors"), std::string::npos) << run.output;
    EXPECT_EQ(run.output.find("warning"), std::string::npos) << run.output;
    // Units from the LV2 vocabulary, as the effects' kinds say.
    std::ifstream file(bundle + "/AudioFilters.ttl");
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    EXPECT_NE(text.find("units:unit units:db"), std::string::npos);
    EXPECT_NE(text.find("lv2:optionalFeature lv2:hardRTCapable"), std::string::npos);
    EXPECT_EQ(text.find("inPlaceBroken"), std::string::npos);
}

TEST_F(Listings, UnknownPluginsAreRefusedWithoutACrash) {
    REQUIRE_TOOL("sox", "sox");
    REQUIRE_TOOL("ffmpeg", "ffmpeg");
    REQUIRE_TOOL("lv2file", "lv2file");
    const std::string folder = scratchFolder("unknown");
    const std::string in = writeInput(folder, aftest::taggedNoise(2, 100, 1), 44100);
    const std::string out = folder + "/out.wav";
    const CommandResult sox = runCommand("sox " + shellQuoted(in) + " " + shellQuoted(out) + " ladspa audiofilters-ladspa af_no_such_effect");
    EXPECT_NE(sox.status, 0) << sox.output;
    EXPECT_LT(sox.status, 128) << "no signal: " << sox.output;
    const CommandResult ffmpeg = runCommand("ffmpeg -nostdin -hide_banner -loglevel error -y -i " + shellQuoted(in) +
                                            " -af ladspa=f=audiofilters-ladspa:p=af_no_such_effect " + shellQuoted(out));
    EXPECT_NE(ffmpeg.status, 0) << ffmpeg.output;
    EXPECT_LT(ffmpeg.status, 128) << "no signal: " << ffmpeg.output;
    const CommandResult lv2 = runCommand("lv2file -i " + shellQuoted(in) + " -o " + shellQuoted(out) + " urn:audiofilters:no-such-effect");
    EXPECT_NE(lv2.status, 0) << lv2.output;
    EXPECT_LT(lv2.status, 128) << "no signal: " << lv2.output;
}

}  // namespace
