#pragma once
// OUTPUT's container and sample format. The container follows OUTPUT's
// extension through libsndfile's own table of formats (plus the usual other
// spellings: .wave, .aif, .snd, .ogg, .opus, .mp3); a name without an
// extension takes INPUT's container only when it is a stream (a device, a
// FIFO or standard output). The samples are what the user asked for
// (--bits, --float, --double), else INPUT's where the container holds them,
// else the nearest it does.
#include <string>
#include <vector>

namespace afx {

enum class SampleRequest { AsInput, Bits8, Bits16, Bits24, Bits32, Float, Double };

struct FormatChoice {
    int format = 0;
    // Why the samples differ from INPUT's ("" when they do not or the user chose them).
    std::string note;
};

// UsageError for an unknown extension, a container libsndfile cannot write
// here, or samples it does not hold (naming those it does).
FormatChoice chooseOutputFormat(const std::string& outputName, bool isStream, int inputFormat,
                                SampleRequest request, int channels, int sampleRate);

// "Signed 16 bit PCM in WAV (Microsoft)".
std::string describeFormat(int format);

// The extensions afx writes, as the user may type them, in libsndfile's order.
std::vector<std::string> writableExtensions();

}  // namespace afx
