#include "bridges/BridgeSupport.h"

#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#ifndef AF_BINARY_DIR
#error "AF_BINARY_DIR must name the build's bin folder"
#endif

namespace bridgetest {

namespace {

std::uint32_t readU32(const unsigned char* p) {
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
           (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

std::uint16_t readU16(const unsigned char* p) {
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}

void putU32(std::string& out, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) out += static_cast<char>((value >> (8 * i)) & 0xFF);
}

void putU16(std::string& out, std::uint16_t value) {
    out += static_cast<char>(value & 0xFF);
    out += static_cast<char>(value >> 8);
}

constexpr std::uint16_t kFormatFloat = 3;
constexpr std::uint16_t kFormatExtensible = 0xFFFE;

// In a sanitizer build the bridges carry the sanitizer runtimes, which must
// come first in a host program that was not built with them.
std::string sanitizerPrefix() {
#if defined(__SANITIZE_ADDRESS__)
    std::string preload;
    for (const char* runtime : {"libasan.so", "libubsan.so"}) {
        CommandResult found;
        std::string command = std::string("gcc -print-file-name=") + runtime;
        FILE* pipe = popen(command.c_str(), "r");
        if (pipe == nullptr) continue;
        char line[512] = {};
        if (std::fgets(line, sizeof line, pipe) != nullptr) {
            std::string path = line;
            while (!path.empty() && (path.back() == '\n' || path.back() == '\r')) path.pop_back();
            if (path.find('/') != std::string::npos) preload += (preload.empty() ? "" : ":") + path;
        }
        pclose(pipe);
    }
    return "LD_PRELOAD=" + shellQuoted(preload) + " ASAN_OPTIONS=detect_leaks=0 ";
#else
    return std::string();
#endif
}

}  // namespace

std::string ladspaFolder() { return AF_BINARY_DIR; }
std::string ladspaLibrary() { return ladspaFolder() + "/audiofilters-ladspa.so"; }
std::string lv2Folder() { return std::string(AF_BINARY_DIR) + "/../lv2"; }
std::string lv2Binary() { return lv2Folder() + "/AudioFilters.lv2/audiofilters-lv2.so"; }

std::string scratchFolder(const std::string& name) {
    const std::filesystem::path folder = std::filesystem::temp_directory_path() /
                                         ("af-bridges-" + std::to_string(getpid())) / name;
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    return folder.string();
}

std::string shellQuoted(const std::string& text) {
    std::string out = "'";
    for (char ch : text) {
        if (ch == '\'') out += "'\\''";
        else out += ch;
    }
    return out + "'";
}

bool haveTool(const std::string& tool) {
    const std::string command = "command -v " + shellQuoted(tool) + " >/dev/null 2>&1";
    return std::system(command.c_str()) == 0;
}

CommandResult runCommand(const std::string& command) {
    CommandResult result;
    // The system bundles after ours: the LV2 vocabulary (classes, units) hosts read along.
    const std::string full = "LADSPA_PATH=" + shellQuoted(ladspaFolder()) + " LV2_PATH=" + shellQuoted(lv2Folder() + ":/usr/lib/lv2") + " " +
                             sanitizerPrefix() + "sh -c " + shellQuoted(command) + " 2>&1";
    FILE* pipe = popen(full.c_str(), "r");
    if (pipe == nullptr) return result;
    std::array<char, 4096> chunk{};
    std::size_t got = 0;
    while ((got = std::fread(chunk.data(), 1, chunk.size(), pipe)) > 0) result.output.append(chunk.data(), got);
    const int status = pclose(pipe);
    if (WIFEXITED(status)) result.status = WEXITSTATUS(status);
    else if (WIFSIGNALED(status)) result.status = 128 + WTERMSIG(status);
    return result;
}

bool writeFloatWav(const std::string& path, const Wav& wav) {
    const auto channels = static_cast<std::uint16_t>(wav.channels.size());
    const std::size_t frames = wav.channels.empty() ? 0 : wav.channels.front().size();
    const auto dataBytes = static_cast<std::uint32_t>(frames * channels * 4);
    std::string out = "RIFF";
    putU32(out, 4 + 24 + 8 + dataBytes);
    out += "WAVEfmt ";
    putU32(out, 16);
    putU16(out, kFormatFloat);
    putU16(out, channels);
    putU32(out, static_cast<std::uint32_t>(wav.rate));
    putU32(out, static_cast<std::uint32_t>(wav.rate) * channels * 4);
    putU16(out, static_cast<std::uint16_t>(channels * 4));
    putU16(out, 32);
    out += "data";
    putU32(out, dataBytes);
    for (std::size_t i = 0; i < frames; ++i) {
        for (const auto& channel : wav.channels) putU32(out, std::bit_cast<std::uint32_t>(channel[i]));
    }
    std::ofstream file(path, std::ios::binary);
    file.write(out.data(), static_cast<std::streamsize>(out.size()));
    return static_cast<bool>(file);
}

std::optional<Wav> readFloatWav(const std::string& path, std::string& why) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        why = "cannot open " + path;
        return std::nullopt;
    }
    const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
    if (bytes.size() < 12 || bytes.compare(0, 4, "RIFF") != 0 || bytes.compare(8, 4, "WAVE") != 0) {
        why = path + " is not a RIFF WAVE file";
        return std::nullopt;
    }
    Wav wav;
    int channels = 0;
    bool isFloat = false;
    std::size_t at = 12;
    while (at + 8 <= bytes.size()) {
        const std::string id = bytes.substr(at, 4);
        const std::uint32_t size = readU32(p + at + 4);
        const std::size_t body = at + 8;
        if (body + size > bytes.size() && id != "data") break;
        if (id == "fmt " && size >= 16) {
            std::uint16_t format = readU16(p + body);
            channels = readU16(p + body + 2);
            wav.rate = static_cast<int>(readU32(p + body + 4));
            const std::uint16_t bitsPerSample = readU16(p + body + 14);
            if (format == kFormatExtensible && size >= 26) format = readU16(p + body + 24);
            isFloat = format == kFormatFloat && bitsPerSample == 32;
        } else if (id == "data") {
            if (!isFloat || channels <= 0) {
                why = path + " does not hold 32-bit float samples";
                return std::nullopt;
            }
            const std::size_t available = std::min<std::size_t>(size, bytes.size() - body);
            const std::size_t frames = available / (4u * static_cast<std::size_t>(channels));
            wav.channels.assign(static_cast<std::size_t>(channels), std::vector<float>(frames));
            for (std::size_t i = 0; i < frames; ++i) {
                for (int c = 0; c < channels; ++c) {
                    const std::size_t offset = body + (i * static_cast<std::size_t>(channels) + static_cast<std::size_t>(c)) * 4;
                    wav.channels[static_cast<std::size_t>(c)][i] = std::bit_cast<float>(readU32(p + offset));
                }
            }
            return wav;
        }
        at = body + size + (size & 1u);
    }
    why = path + " has no data chunk";
    return std::nullopt;
}

std::vector<int> partition(int frames, int blockSize) {
    std::vector<int> blocks;
    for (int first = 0; first < frames; first += blockSize) blocks.push_back(std::min(blockSize, frames - first));
    return blocks;
}

bool effectAvailable(const std::string& identifier) {
    return aftest::HostEffect::Create(identifier) != nullptr;
}

std::optional<Channels> renderDirect(const std::string& identifier, double rate, const std::vector<Setting>& settings,
                                     const Channels& input, const std::vector<int>& blocks) {
    auto fx = aftest::HostEffect::Create(identifier);
    if (!fx) return std::nullopt;
    // The bridges' start: open, rate, their planned block size, resume.
    fx->start(static_cast<float>(rate), 8192);
    for (const auto& [index, display] : settings) {
        const float normalised = fx->properties()->ConvertDisplayValueToParameter(static_cast<unsigned>(index), display);
        fx->setParameter(index, normalised);
    }
    Channels audio = input;
    fx->processReplacingInBlocks(audio, blocks);
    return audio;
}

std::vector<Setting> settingsOf(const std::vector<float>& controls) {
    std::vector<Setting> settings;
    for (std::size_t k = 0; k < controls.size(); ++k) settings.emplace_back(static_cast<int>(k), controls[k]);
    return settings;
}

// The range a host is given for a control, worked out here from the effect's
// own description at 48 kHz, its default program chosen: a frequency runs to 20 kHz from where the
// logarithmic "high" point (three quarters of the way up) is the default; a
// level whose floor is -999 dB starts at -90 dB; anything else keeps its range.
std::pair<double, double> hostRange(aftest::HostEffect& fx, unsigned index) {
    const auto type = fx.properties()->GetParameterType(index);
    const double minimum = fx.properties()->GetParameterMin(index);
    const double maximum = fx.properties()->GetParameterMax(index);
    if (type == ML::VSTPropertySupportMixin::kHertz) {
        const double initial = fx.properties()->ConvertParameterValueToDisplay(index, fx.getParameter(static_cast<int>(index)));
        return {std::min(10.0, std::pow(initial, 4.0) / std::pow(20000.0, 3.0)), 20000.0};
    }
    if (minimum == -999.0) return {-90.0, maximum};
    return {minimum, maximum};
}

// "Name (label)" without blanks around either, the label left out when the
// name starts with it; a name the effect uses twice gets the parameter number.
std::string expectedPortName(aftest::HostEffect& fx, int index) {
    auto trim = [](const std::string& text) {
        const std::size_t first = text.find_first_not_of(' ');
        return first == std::string::npos ? std::string() : text.substr(first, text.find_last_not_of(' ') - first + 1);
    };
    const std::string name = trim(fx.parameterName(index));
    const std::string label = trim(fx.parameterLabel(index));
    std::string port = label.empty() || name.rfind(label, 0) == 0 ? name : name + " (" + label + ")";
    int sameName = 0;
    for (int other = 0; other < fx.effect()->numParams; ++other) sameName += trim(fx.parameterName(other)) == name ? 1 : 0;
    if (sameName > 1) port += " [" + std::to_string(index + 1) + "]";
    return port;
}

}  // namespace bridgetest
