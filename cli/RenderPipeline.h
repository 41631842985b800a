#pragma once
// A bounded pipeline of chunks for the render: one thread reads chunks, the
// calling thread processes them, one thread writes them, so that file
// reading, the effects and file writing overlap on separate cores. Processing
// may itself be split into several stages in a row, each on its own thread
// (the first on the calling one): stage k works on chunk n while stage k + 1
// works on chunk n - 1, and every stage sees every chunk in order. A fixed
// ring of `depth` chunk buffers, made once, is all the memory it holds; a
// stage that gets ahead waits for a free or a filled slot, and chunks reach
// the writer in the order they were read. How samples are laid out in a
// chunk is the stages' business.
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace afx {

class RenderPipeline {
public:
    // Fills a chunk and returns its frames: fewer than a chunk's only at the end of the input.
    using Reader = std::function<std::int64_t(float* chunk)>;
    // Changes a chunk's `frames` frames in place.
    using Processor = std::function<void(float* chunk, std::int64_t frames)>;
    using Writer = std::function<void(const float* chunk, std::int64_t frames)>;

    // Chunks of `chunkFrames` frames in `chunkFloats` floats each, `depth` (at least 2) chunks in all.
    // Without `overlap`, run() reads, processes and writes each chunk in turn
    // on the calling thread and holds a single chunk: for renders that run
    // side by side, one per core, where more threads would only take turns.
    RenderPipeline(std::size_t chunkFloats, std::int64_t chunkFrames, int depth, bool overlap = true);
    RenderPipeline(const RenderPipeline&) = delete;
    RenderPipeline& operator=(const RenderPipeline&) = delete;

    // Runs the three stages to the end of the input (the first chunk that is
    // not full, which is also processed and written when it holds frames) and
    // returns the frames that passed. When a stage throws, the others stop at
    // their next chunk and the first exception thrown is rethrown here, once
    // both threads are joined. An input that ends within its first chunk
    // starts no thread: its one chunk goes through the stages in turn.
    std::int64_t run(const Reader& read, const Processor& process, const Writer& write);
    // The same with the processing in `processes.size()` (at least 1) stages, one after the other on every chunk.
    std::int64_t run(const Reader& read, const std::vector<Processor>& processes, const Writer& write);

    std::int64_t chunkFrames() const { return chunkFrames_; }
    int depth() const { return depth_; }

private:
    struct Slot {
        std::vector<float> samples;
        std::int64_t frames = 0;
    };

    // Reads chunk `sequence` into its slot once the slot is free; false when
    // the input ended with it or a stage failed.
    bool readChunk(const Reader& read, std::int64_t sequence);
    void readAll(const Reader& read, std::int64_t firstSequence);
    // Every chunk through every stage on the calling thread, one chunk at a time.
    std::int64_t runInTurn(const Reader& read, const std::vector<Processor>& processes, const Writer& write);
    // Stage `stage` (1 for the first processor, the last for the writer) over every chunk the stage before passes.
    void passAll(std::size_t stage, const std::function<void(Slot&)>& work);
    void fail(std::exception_ptr error);
    Slot& slotOf(std::int64_t sequence) { return slots_[static_cast<std::size_t>(sequence % depth_)]; }

    std::int64_t chunkFrames_;
    int depth_;
    bool overlap_;
    std::vector<Slot> slots_;

    // Stage 0 reads, the stages after it process, the last one writes.
    // Chunks are numbered from 0 in reading order; done_[k] counts the chunks
    // stage k has finished, ended_[k] says it will pass no more, and
    // progressed_[k] wakes the stage after it (the reader waits on the
    // writer's). Slot `n % depth` is free once chunk n - depth is written.
    std::mutex mutex_;
    std::vector<std::int64_t> done_;
    std::vector<char> ended_;
    std::unique_ptr<std::condition_variable[]> progressed_;
    std::int64_t framesWritten_ = 0;
    bool failed_ = false;
    std::exception_ptr error_;
};

// Reads up to `frames` interleaved frames through `read`, which may deliver
// fewer per call (as decoders do), asking again until they are all there or
// `read` gives 0. Returns the frames read.
std::int64_t readFully(const std::function<std::int64_t(float*, std::int64_t)>& read, float* interleaved,
                       unsigned channels, std::int64_t frames);

// The frames per chunk for a render: `wantedFrames` (when 0, about
// kChunkBytes of samples) rounded up to a whole number of host blocks, so that
// every processing call but the last is a full block, whatever the chunking;
// no more blocks than the input's `inputFrames` fill, when it says (> 0).
inline constexpr std::int64_t kChunkBytes = 256 * 1024;
std::int64_t chunkFramesFor(unsigned channels, int blockFrames, std::int64_t wantedFrames,
                            std::int64_t inputFrames = 0);

}  // namespace afx
