#include "OutputFormat.h"

#include <sndfile.h>

#include <algorithm>
#include <iterator>

#include "CommandLine.h"
#include "Errors.h"

namespace afx {
namespace {

// Spellings libsndfile's table does not carry, each with the format it means.
struct Alias {
    const char* extension;
    int format;  // container, and the codec when the extension names one
};
constexpr Alias kAliases[] = {
    {"wave", SF_FORMAT_WAV},
    {"aif", SF_FORMAT_AIFF},
    {"aifc", SF_FORMAT_AIFF},
    {"snd", SF_FORMAT_AU},
    {"ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS},
    {"oga", SF_FORMAT_OGG | SF_FORMAT_VORBIS},
    {"opus", SF_FORMAT_OGG | SF_FORMAT_OPUS},
    {"mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III},
    {"m1a", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III},
};

struct Major {
    std::string extension;
    int container;
};

bool canWrite(int format, int channels, int sampleRate) {
    SF_INFO probe{};
    probe.format = format;
    probe.channels = channels;
    probe.samplerate = sampleRate;
    return ::sf_format_check(&probe) != 0;
}

int commandCount(int command) {
    int count = 0;
    ::sf_command(nullptr, command, &count, sizeof count);
    return count;
}

std::vector<int> subtypes() {
    std::vector<int> list;
    for (int i = 0; i < commandCount(SFC_GET_FORMAT_SUBTYPE_COUNT); ++i) {
        SF_FORMAT_INFO info{};
        info.format = i;
        if (::sf_command(nullptr, SFC_GET_FORMAT_SUBTYPE, &info, sizeof info) == 0) list.push_back(info.format);
    }
    return list;
}

bool writesAnything(int container) {
    for (int subtype : subtypes())
        if (canWrite(container | subtype, 1, 44100)) return true;
    return false;
}

// libsndfile's containers that write some samples, first of each extension.
const std::vector<Major>& majors() {
    static const std::vector<Major> table = [] {
        std::vector<Major> list;
        for (int i = 0; i < commandCount(SFC_GET_FORMAT_MAJOR_COUNT); ++i) {
            SF_FORMAT_INFO info{};
            info.format = i;
            if (::sf_command(nullptr, SFC_GET_FORMAT_MAJOR, &info, sizeof info) != 0 || info.extension == nullptr)
                continue;
            const std::string extension = toLower(info.extension);
            const bool seen = std::any_of(list.begin(), list.end(),
                                          [&](const Major& major) { return major.extension == extension; });
            // libsndfile writes Sound Designer II only through a file name of
            // its own (the resource fork), not into the file afx prepares.
            if (!seen && info.format != SF_FORMAT_SD2 && writesAnything(info.format))
                list.push_back({extension, info.format});
        }
        return list;
    }();
    return table;
}

std::string extensionOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash) || dot + 1 == path.size()) return {};
    return toLower(path.substr(dot + 1));
}

// 0 when afx does not know the extension.
int formatForExtension(const std::string& extension) {
    for (const Alias& alias : kAliases)
        if (extension == alias.extension) return alias.format;
    for (const Major& major : majors())
        if (extension == major.extension) return major.container;
    return 0;
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

bool isCodec(int container) { return container == SF_FORMAT_OGG || container == SF_FORMAT_MPEG; }

// The samples of `request`, in the order tried.
std::vector<int> requested(SampleRequest request) {
    switch (request) {
        case SampleRequest::Bits8: return {SF_FORMAT_PCM_S8, SF_FORMAT_PCM_U8};
        case SampleRequest::Bits16: return {SF_FORMAT_PCM_16};
        case SampleRequest::Bits24: return {SF_FORMAT_PCM_24};
        case SampleRequest::Bits32: return {SF_FORMAT_PCM_32};
        case SampleRequest::Float: return {SF_FORMAT_FLOAT};
        case SampleRequest::Double: return {SF_FORMAT_DOUBLE};
        case SampleRequest::AsInput: break;
    }
    return {};
}

// The samples nearest to INPUT's, best first: the same precision or more, then less.
std::vector<int> nearestTo(int inputSubtype) {
    switch (inputSubtype) {
        case SF_FORMAT_PCM_S8:
        case SF_FORMAT_PCM_U8:
            return {SF_FORMAT_PCM_S8, SF_FORMAT_PCM_U8, SF_FORMAT_PCM_16, SF_FORMAT_PCM_24, SF_FORMAT_FLOAT};
        case SF_FORMAT_PCM_24:
        case SF_FORMAT_ALAC_24:
        case SF_FORMAT_ALAC_20:
            return {SF_FORMAT_PCM_24, SF_FORMAT_PCM_32, SF_FORMAT_FLOAT, SF_FORMAT_PCM_16, SF_FORMAT_PCM_S8};
        case SF_FORMAT_PCM_32:
        case SF_FORMAT_ALAC_32:
            return {SF_FORMAT_PCM_32, SF_FORMAT_FLOAT, SF_FORMAT_DOUBLE, SF_FORMAT_PCM_24, SF_FORMAT_PCM_16};
        case SF_FORMAT_FLOAT:
            return {SF_FORMAT_FLOAT, SF_FORMAT_DOUBLE, SF_FORMAT_PCM_32, SF_FORMAT_PCM_24, SF_FORMAT_PCM_16};
        case SF_FORMAT_DOUBLE:
            return {SF_FORMAT_DOUBLE, SF_FORMAT_FLOAT, SF_FORMAT_PCM_32, SF_FORMAT_PCM_24, SF_FORMAT_PCM_16};
        default:
            // 16-bit samples and the codecs (lossy ones keep less than 16 bits).
            return {SF_FORMAT_PCM_16, SF_FORMAT_PCM_24, SF_FORMAT_FLOAT, SF_FORMAT_PCM_S8, SF_FORMAT_PCM_U8};
    }
}

std::string subtypeName(int subtype) {
    SF_FORMAT_INFO info{};
    info.format = subtype & SF_FORMAT_SUBMASK;
    return ::sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) == 0 ? info.name : "unknown samples";
}

std::string containerName(int container) {
    SF_FORMAT_INFO info{};
    info.format = container & SF_FORMAT_TYPEMASK;
    return ::sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) == 0 ? info.name : "an unknown container";
}

// What the container holds among the samples afx lets users choose.
std::string choicesFor(int container, int channels, int sampleRate) {
    static const struct {
        SampleRequest request;
        const char* option;
    } kOptions[] = {{SampleRequest::Bits8, "--bits 8"},   {SampleRequest::Bits16, "--bits 16"},
                    {SampleRequest::Bits24, "--bits 24"}, {SampleRequest::Bits32, "--bits 32"},
                    {SampleRequest::Float, "--float"},    {SampleRequest::Double, "--double"}};
    std::vector<std::string> options;
    for (const auto& option : kOptions)
        for (int subtype : requested(option.request))
            if (canWrite(container | subtype, channels, sampleRate)) {
                options.push_back(option.option);
                break;
            }
    if (options.empty()) return "it takes none of --bits, --float and --double";
    std::string text = "it takes ";
    for (std::size_t i = 0; i < options.size(); ++i)
        text += (i == 0 ? "" : (i + 1 == options.size() ? " or " : ", ")) + options[i];
    return text;
}

}  // namespace

std::vector<std::string> writableExtensions() {
    std::vector<std::string> list;
    for (const Major& major : majors()) list.push_back(major.extension);
    for (const Alias& alias : kAliases)
        if (std::find(list.begin(), list.end(), alias.extension) == list.end() &&
            writesAnything(alias.format & SF_FORMAT_TYPEMASK) && canWrite(alias.format, 1, 48000))
            list.push_back(alias.extension);
    return list;
}

std::string describeFormat(int format) { return subtypeName(format) + " in " + containerName(format); }

FormatChoice chooseOutputFormat(const std::string& outputName, bool isStream, int inputFormat,
                                SampleRequest request, int channels, int sampleRate) {
    const std::string extension = extensionOf(outputName);
    int chosen = formatForExtension(extension);
    if (chosen == 0) {
        if (!extension.empty() || !isStream)
            throw UsageError((extension.empty() ? "OUTPUT '" + outputName + "' has no extension"
                                                : "unknown OUTPUT extension '." + extension + "'") +
                             "; afx writes " + joined(writableExtensions()));
        chosen = inputFormat & SF_FORMAT_TYPEMASK;
    }
    const int container = chosen & SF_FORMAT_TYPEMASK;
    const int inputSubtype = inputFormat & SF_FORMAT_SUBMASK;
    FormatChoice choice;
    if (isCodec(container)) {
        int codec = chosen & SF_FORMAT_SUBMASK;
        if (codec == 0) codec = (inputFormat & SF_FORMAT_TYPEMASK) == container ? inputSubtype : SF_FORMAT_VORBIS;
        if (request != SampleRequest::AsInput)
            throw UsageError("OUTPUT '" + outputName + "' is " + subtypeName(codec) +
                             ", a lossy codec: --bits, --float and --double do not apply");
        choice.format = container | codec;
        // libsndfile's Opus encoder takes only the rates of the codec itself.
        constexpr int kOpusRates[] = {8000, 12000, 16000, 24000, 48000};
        if (codec == SF_FORMAT_OPUS && std::find(std::begin(kOpusRates), std::end(kOpusRates), sampleRate) ==
                                           std::end(kOpusRates))
            throw UsageError("Opus takes audio at 8000, 12000, 16000, 24000 or 48000 Hz, not " +
                             std::to_string(sampleRate) + " Hz; choose another OUTPUT extension");
        if (!canWrite(choice.format, channels, sampleRate))
            throw UsageError("the libsndfile installed here cannot write " + describeFormat(choice.format) + " (" +
                             std::to_string(channels) + " channels at " + std::to_string(sampleRate) +
                             " Hz); choose another OUTPUT extension");
        return choice;
    }
    const std::vector<int> wanted = requested(request);
    if (!wanted.empty()) {
        for (int subtype : wanted)
            if (canWrite(container | subtype, channels, sampleRate)) {
                choice.format = container | subtype;
                return choice;
            }
        throw UsageError(containerName(container) + " cannot hold " + subtypeName(wanted.front()) + " samples (" +
                         std::to_string(channels) + " channels at " + std::to_string(sampleRate) + " Hz); " +
                         choicesFor(container, channels, sampleRate));
    }
    if (canWrite(container | inputSubtype, channels, sampleRate)) {
        choice.format = container | inputSubtype;
        return choice;
    }
    for (int subtype : nearestTo(inputSubtype))
        if (canWrite(container | subtype, channels, sampleRate)) {
            choice.format = container | subtype;
            choice.note = "nearest to the input's " + subtypeName(inputSubtype);
            return choice;
        }
    throw UsageError("cannot write " + std::to_string(channels) + " channels at " + std::to_string(sampleRate) +
                     " Hz in " + containerName(container) + "; choose another OUTPUT extension");
}

}  // namespace afx
