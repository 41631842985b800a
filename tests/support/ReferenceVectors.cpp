#include "support/ReferenceVectors.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <sstream>

#include "support/MiniJson.h"

#ifndef AF_TEST_DATA_DIR
#error "AF_TEST_DATA_DIR must name the test data folder"
#endif

namespace aftest {

std::string referenceVectorDirectory() { return std::string(AF_TEST_DATA_DIR) + "/vectors"; }

std::vector<std::string> referenceVectorFiles() {
    std::vector<std::string> names;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(referenceVectorDirectory(), ignored)) {
        if (entry.path().extension() == ".json") names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

namespace {

bool readChannels(const JsonValue* list, int channels, std::size_t frames, Channels& out, std::string* error) {
    if (list == nullptr || list->kind != JsonValue::Kind::kArray || list->array.size() != std::size_t(channels)) {
        *error = "wrong number of channel strings";
        return false;
    }
    for (const JsonValue& encoded : list->array) {
        const auto bytes = decodeBase64(encoded.string);
        const auto samples = bytes ? floatsFromLittleEndian(*bytes) : std::nullopt;
        if (!samples || samples->size() != frames) {
            *error = "a channel does not decode to the expected number of samples";
            return false;
        }
        out.push_back(*samples);
    }
    return true;
}

}  // namespace

std::optional<ReferenceVector> loadReferenceVector(const std::string& path, std::string* error) {
    std::string ignored;
    if (error == nullptr) error = &ignored;
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        *error = "cannot open " + path;
        return std::nullopt;
    }
    std::stringstream contents;
    contents << file.rdbuf();
    const auto document = parseJson(contents.str(), error);
    if (!document) return std::nullopt;

    ReferenceVector vector;
    const JsonValue* effect = document->get("effect");
    const JsonValue* channels = document->get("channels");
    const JsonValue* sampleRate = document->get("sampleRate");
    const JsonValue* blockSize = document->get("blockSize");
    const JsonValue* blocks = document->get("blocks");
    if (!effect || !channels || !sampleRate || !blockSize || !blocks || blocks->kind != JsonValue::Kind::kArray) {
        *error = "a member is missing";
        return std::nullopt;
    }
    vector.identifier = effect->string;
    vector.channels = static_cast<int>(channels->number);
    vector.sampleRate = static_cast<float>(sampleRate->number);
    vector.blockSize = static_cast<int>(blockSize->number);
    for (const JsonValue& frames : blocks->array) vector.blocks.push_back(static_cast<int>(frames.number));
    const std::size_t totalFrames =
        static_cast<std::size_t>(std::accumulate(vector.blocks.begin(), vector.blocks.end(), 0));
    if (!readChannels(document->get("input_f32le_b64"), vector.channels, totalFrames, vector.input, error) ||
        !readChannels(document->get("expected_f32le_b64"), vector.channels, totalFrames, vector.expected, error)) {
        return std::nullopt;
    }
    return vector;
}

}  // namespace aftest
