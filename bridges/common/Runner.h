#pragma once
// One plug-in instance of either bridge: a live effect, the host's port
// buffers, and the block loop. The effect processes in place, as the module
// expects of its hosts: each output is filled with its input and the same
// channel pointers go in and out of processReplacing.
//
// Nothing here allocates after create(): run() only copies, converts changed
// controls and calls the effect.
#include <cstdint>
#include <memory>
#include <vector>

#include "Catalog.h"

namespace AFBridge {

class Runner {
public:
    // Null when the effect cannot be made or the rate is not a positive number.
    static std::unique_ptr<Runner> create(const Plugin& plugin, double sampleRate);
    // The effect handle closes the effect when the runner goes.

    // Port numbering shared by both bridges: inputs, then outputs, then controls;
    // LV2 adds one output after those, the latency in frames (always 0).
    std::uint32_t portCount() const;
    void connect(std::uint32_t port, void* data);

    void activate();    // resume
    void deactivate();  // suspend

    // Converts controls whose value changed since the last run, then processes
    // `frames` frames in blocks of at most kPlannedBlock.
    void run(std::uint64_t frames);

    Runner(const Runner&) = delete;
    Runner& operator=(const Runner&) = delete;

private:
    explicit Runner(const Plugin& plugin) : plugin_(plugin) {}
    void applyControls();
    void processChunk(std::uint64_t first, std::int32_t frames, bool crossed);

    const Plugin& plugin_;
    hostkit::Effect effect_;
    std::vector<const float*> inputs_;
    std::vector<float*> outputs_;
    std::vector<const float*> controls_;
    float* latency_ = nullptr;
    std::vector<std::uint32_t> appliedBits_;  // the display value last converted, as bits
    std::vector<bool> applied_;               // false until a control's first conversion
    std::vector<float*> chunk_;               // per channel: where the effect works in this chunk
    std::vector<float> scratch_;              // channels x kPlannedBlock, for crosswise aliased buffers
};

}  // namespace AFBridge
