#include "Runner.h"

#include "HostRanges.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <new>

namespace AFBridge {

std::unique_ptr<Runner> Runner::create(const Plugin& plugin, double sampleRate) {
    if (!(sampleRate > 0.0) || !std::isfinite(sampleRate)) return nullptr;
    std::unique_ptr<Runner> runner(new (std::nothrow) Runner(plugin));
    if (!runner) return nullptr;
    try {
        runner->inputs_.assign(static_cast<std::size_t>(plugin.inputs), nullptr);
        runner->outputs_.assign(static_cast<std::size_t>(plugin.outputs), nullptr);
        runner->controls_.assign(plugin.controls.size(), nullptr);
        runner->appliedBits_.assign(plugin.controls.size(), 0u);
        runner->applied_.assign(plugin.controls.size(), false);
        runner->chunk_.assign(static_cast<std::size_t>(plugin.outputs), nullptr);
        runner->scratch_.assign(static_cast<std::size_t>(plugin.outputs) * kPlannedBlock, 0.0f);
    } catch (...) {
        return nullptr;
    }
    runner->effect_ = makeEffect(plugin, sampleRate);
    if (!runner->effect_) return nullptr;
    return runner;
}

std::uint32_t Runner::portCount() const {
    return static_cast<std::uint32_t>(inputs_.size() + outputs_.size() + controls_.size());
}

void Runner::connect(std::uint32_t port, void* data) {
    std::size_t index = port;
    if (index < inputs_.size()) {
        inputs_[index] = static_cast<const float*>(data);
        return;
    }
    index -= inputs_.size();
    if (index < outputs_.size()) {
        outputs_[index] = static_cast<float*>(data);
        return;
    }
    index -= outputs_.size();
    if (index < controls_.size()) {
        controls_[index] = static_cast<const float*>(data);
        return;
    }
    if (index == controls_.size()) latency_ = static_cast<float*>(data);
}

void Runner::activate() { effect_.resume(); }

void Runner::deactivate() { effect_.suspend(); }

void Runner::applyControls() {
    if (effect_.properties() == nullptr) return;
    for (std::size_t k = 0; k < controls_.size(); ++k) {
        if (controls_[k] == nullptr) continue;
        const float display = *controls_[k];
        // Compared as bits, so that a NaN that stays NaN is converted once.
        const std::uint32_t bits = std::bit_cast<std::uint32_t>(display);
        if (applied_[k] && bits == appliedBits_[k]) continue;
        const Control& control = plugin_.controls[k];
        const float safe = displayValueFor(control, display, *effect_.properties());
        const float normalised = effect_.properties()->ConvertDisplayValueToParameter(control.index, safe);
        effect_.setParameter(static_cast<VstInt32>(control.index), normalised);
        appliedBits_[k] = bits;
        applied_[k] = true;
    }
}

void Runner::run(std::uint64_t frames) {
    if (latency_ != nullptr) *latency_ = 0.0f;
    applyControls();
    if (frames == 0) return;
    for (float* output : outputs_) {
        if (output == nullptr) return;  // nowhere to write: the host broke its promise
    }
    // An output that is some other channel's input would be overwritten before
    // that channel is copied: such hosts go through the scratch buffers.
    bool crossed = false;
    for (std::size_t c = 0; c < outputs_.size(); ++c) {
        for (std::size_t k = 0; k < inputs_.size(); ++k) {
            if (k != c && inputs_[k] != nullptr && inputs_[k] == outputs_[c]) crossed = true;
        }
    }
    for (std::uint64_t first = 0; first < frames; first += kPlannedBlock) {
        const std::uint64_t rest = frames - first;
        const auto count = static_cast<std::int32_t>(std::min<std::uint64_t>(rest, kPlannedBlock));
        processChunk(first, count, crossed);
    }
}

void Runner::processChunk(std::uint64_t first, std::int32_t frames, bool crossed) {
    const std::size_t bytes = static_cast<std::size_t>(frames) * sizeof(float);
    if (crossed) {
        for (std::size_t c = 0; c < outputs_.size(); ++c) {
            float* keep = scratch_.data() + c * kPlannedBlock;
            if (c < inputs_.size() && inputs_[c] != nullptr) std::memcpy(keep, inputs_[c] + first, bytes);
            else std::memset(keep, 0, bytes);
        }
    }
    for (std::size_t c = 0; c < outputs_.size(); ++c) {
        float* out = outputs_[c] + first;
        if (crossed) {
            std::memcpy(out, scratch_.data() + c * kPlannedBlock, bytes);
        } else if (c >= inputs_.size() || inputs_[c] == nullptr) {
            std::memset(out, 0, bytes);  // an unconnected input is silence
        } else if (inputs_[c] + first != out) {
            std::memmove(out, inputs_[c] + first, bytes);
        }
        chunk_[c] = out;
    }
    effect_.processReplacing(chunk_.data(), frames);
}

}  // namespace AFBridge
