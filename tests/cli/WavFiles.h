#pragma once
// WAV files written and read by hand, independently of the audio library afx
// uses: 32-bit float and 16-bit PCM, interleaved samples, any chunk layout on
// reading (libsndfile adds fact and PEAK chunks, and the extensible header
// for more than two channels).
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace afxtest {

struct WavData {
    int formatCode = 0;  // 1 PCM, 3 float (the extensible header's sub-format)
    int channels = 0;
    int sampleRate = 0;
    int bitsPerSample = 0;
    std::vector<std::uint8_t> bytes;  // the data chunk as stored
    std::vector<float> floats() const {
        std::vector<float> samples(bytes.size() / 4);
        if (!samples.empty()) std::memcpy(samples.data(), bytes.data(), samples.size() * 4);
        return samples;
    }
    std::vector<std::int16_t> pcm16() const {
        std::vector<std::int16_t> samples(bytes.size() / 2);
        if (!samples.empty()) std::memcpy(samples.data(), bytes.data(), samples.size() * 2);
        return samples;
    }
};

namespace detail {
inline void put32(std::string& out, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) out += static_cast<char>((value >> (8 * i)) & 0xFF);
}
inline void put16(std::string& out, std::uint16_t value) {
    out += static_cast<char>(value & 0xFF);
    out += static_cast<char>(value >> 8);
}
inline std::uint32_t get32(const std::string& in, std::size_t at) {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) value = (value << 8) | static_cast<unsigned char>(in[at + i]);
    return value;
}
inline void writeWav(const std::string& path, int formatCode, int channels, int rate, int bits,
                     const void* samples, std::size_t byteCount) {
    std::string out = "RIFF";
    put32(out, static_cast<std::uint32_t>(36 + byteCount));
    out += "WAVEfmt ";
    put32(out, 16);
    put16(out, static_cast<std::uint16_t>(formatCode));
    put16(out, static_cast<std::uint16_t>(channels));
    put32(out, static_cast<std::uint32_t>(rate));
    put32(out, static_cast<std::uint32_t>(rate * channels * bits / 8));
    put16(out, static_cast<std::uint16_t>(channels * bits / 8));
    put16(out, static_cast<std::uint16_t>(bits));
    out += "data";
    put32(out, static_cast<std::uint32_t>(byteCount));
    out.append(static_cast<const char*>(samples), byteCount);
    std::ofstream(path, std::ios::binary) << out;
}
}  // namespace detail

inline void writeFloatWav(const std::string& path, int channels, int rate, const std::vector<float>& interleaved) {
    detail::writeWav(path, 3, channels, rate, 32, interleaved.data(), interleaved.size() * 4);
}

inline void writePcm16Wav(const std::string& path, int channels, int rate, const std::vector<std::int16_t>& interleaved) {
    detail::writeWav(path, 1, channels, rate, 16, interleaved.data(), interleaved.size() * 2);
}

// False when the file is not a WAV file this reader understands.
inline bool readWav(const std::string& path, WavData& wav) {
    std::ifstream in(path, std::ios::binary);
    const std::string file((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (file.size() < 12 || file.compare(0, 4, "RIFF") != 0 || file.compare(8, 4, "WAVE") != 0) return false;
    bool haveFormat = false;
    std::size_t at = 12;
    while (at + 8 <= file.size()) {
        const std::string id = file.substr(at, 4);
        const std::size_t size = detail::get32(file, at + 4);
        const std::size_t body = at + 8;
        if (body + size > file.size()) return false;
        if (id == "fmt ") {
            wav.formatCode = static_cast<int>(detail::get32(file, body) & 0xFFFF);
            wav.channels = static_cast<int>(detail::get32(file, body + 2) & 0xFFFF);
            wav.sampleRate = static_cast<int>(detail::get32(file, body + 4));
            wav.bitsPerSample = static_cast<int>(detail::get32(file, body + 14) & 0xFFFF);
            if (wav.formatCode == 0xFFFE && size >= 26) wav.formatCode = static_cast<int>(detail::get32(file, body + 24) & 0xFFFF);
            haveFormat = true;
        } else if (id == "data") {
            wav.bytes.assign(file.begin() + static_cast<long>(body), file.begin() + static_cast<long>(body + size));
            return haveFormat;
        }
        at = body + size + (size & 1);
    }
    return false;
}

}  // namespace afxtest
