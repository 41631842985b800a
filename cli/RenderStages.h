#pragma once
// What each stage of the render pipeline does to a chunk. A chunk holds one
// array per channel: the reading thread splits the file's interleaved frames
// into them and meters the input, the calling thread runs the chain over them
// in place block by block and meters each block it leaves, the writing thread
// interleaves them again and writes them. So the effects' thread does little
// besides the effects. A chain split across threads runs a part of its links
// on each (ChainPart), every part over the whole chunk.
#include <cstdint>
#include <vector>

#include "AudioFile.h"
#include "Chain.h"
#include "ChainSplit.h"
#include "Progress.h"
#include "Tail.h"

namespace afx {

class RenderStages {
public:
    // `chainParts`: the most threads the chain may be split across, each with its own block pointers.
    RenderStages(unsigned channels, std::int64_t chunkFrames, int blockFrames, std::size_t chainParts = 1);

    // The floats one chunk takes.
    std::size_t chunkFloats() const { return stride_ * channels_; }

    // On the reading thread: fills a chunk, returns its frames (fewer only at the end).
    std::int64_t read(InputFile& input, float* chunk);
    // On the reading thread: silence in frames `from` to `to` of a chunk (the tail's input).
    void silence(float* chunk, std::int64_t from, std::int64_t to) const;
    // On the effects' thread of part `part` (numbered from 0): its links over
    // the chunk, `blockFrames` per call; the chunk starts at frame `first` of
    // the render, and on the last part `tail` sees every block.
    void process(const Chain& chain, const ChainPart& part, std::size_t partIndex, float* chunk, std::int64_t frames,
                 std::int64_t first, TailWatch& tail);
    // The whole chain over a chunk as process() does as one part, adding each
    // link's time to `linkSeconds` (one entry per link).
    void processTimed(const Chain& chain, float* chunk, std::int64_t frames, std::int64_t first, TailWatch& tail,
                      std::vector<double>& linkSeconds);
    // On the writing thread.
    void write(OutputFile& output, const float* chunk, std::int64_t frames);

    // Read them once the pipeline has finished.
    const PeakMeter& before() const { return before_; }
    const PeakMeter& after() const { return after_; }

private:
    // A part's links over a chunk, block by block; each link timed into `linkSeconds` when given.
    void passBlocks(const Chain& chain, const ChainPart& part, std::vector<float*>& planes, float* chunk,
                    std::int64_t frames, std::int64_t first, TailWatch& tail, std::vector<double>* linkSeconds);
    // Each channel's array in `chunk`, from frame `start` on.
    template <class Sample>
    void pointInto(Sample* chunk, std::int64_t start, std::vector<Sample*>& pointers) const {
        for (unsigned c = 0; c < channels_; ++c) pointers[c] = chunk + c * stride_ + start;
    }

    unsigned channels_;
    std::int64_t chunkFrames_;
    int blockFrames_;
    std::size_t stride_;  // floats from one channel's array to the next
    // Each stage's own buffers, made once.
    std::vector<float> readFrames_;
    std::vector<float*> readPlanes_;
    std::vector<std::vector<float*>> blockPlanes_;  // one set per chain part
    std::vector<float> writeFrames_;
    std::vector<const float*> writePlanes_;
    PeakMeter before_;
    PeakMeter after_;
};

}  // namespace afx
