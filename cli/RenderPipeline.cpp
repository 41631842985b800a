#include "RenderPipeline.h"

#include <algorithm>
#include <thread>

namespace afx {

std::int64_t readFully(const std::function<std::int64_t(float*, std::int64_t)>& read, float* interleaved,
                       unsigned channels, std::int64_t frames) {
    std::int64_t done = 0;
    while (done < frames) {
        const std::int64_t got = read(interleaved + done * channels, frames - done);
        if (got <= 0) break;
        done += got;
    }
    return done;
}

std::int64_t chunkFramesFor(unsigned channels, int blockFrames, std::int64_t wantedFrames,
                            std::int64_t inputFrames) {
    const std::int64_t block = std::max(blockFrames, 1);
    std::int64_t wanted = wantedFrames;
    if (wanted <= 0) wanted = kChunkBytes / static_cast<std::int64_t>(sizeof(float) * std::max(channels, 1u));
    // A short file needs no buffers larger than itself.
    if (inputFrames > 0) wanted = std::min(wanted, inputFrames);
    const std::int64_t blocks = std::max<std::int64_t>(1, (wanted + block - 1) / block);
    return blocks * block;
}

RenderPipeline::RenderPipeline(std::size_t chunkFloats, std::int64_t chunkFrames, int depth, bool overlap)
    : chunkFrames_(std::max<std::int64_t>(chunkFrames, 1)), depth_(overlap ? std::max(depth, 2) : 1),
      overlap_(overlap), slots_(static_cast<std::size_t>(depth_)) {
    for (Slot& slot : slots_) slot.samples.resize(chunkFloats);
}

std::int64_t RenderPipeline::run(const Reader& read, const Processor& process, const Writer& write) {
    return run(read, std::vector<Processor>{process}, write);
}

std::int64_t RenderPipeline::runInTurn(const Reader& read, const std::vector<Processor>& processes,
                                      const Writer& write) {
    Slot& slot = slots_.front();
    std::int64_t written = 0;
    for (;;) {
        const std::int64_t frames = std::clamp<std::int64_t>(read(slot.samples.data()), 0, chunkFrames_);
        if (frames > 0) {
            for (const Processor& process : processes) process(slot.samples.data(), frames);
            write(slot.samples.data(), frames);
            written += frames;
        }
        if (frames < chunkFrames_) return written;
    }
}

std::int64_t RenderPipeline::run(const Reader& read, const std::vector<Processor>& processes, const Writer& write) {
    if (!overlap_) return runInTurn(read, processes, write);
    const std::size_t stages = processes.size() + 2;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        done_.assign(stages, 0);
        ended_.assign(stages, 0);
        progressed_ = std::make_unique<std::condition_variable[]>(stages);
        framesWritten_ = 0;
        failed_ = false;
        error_ = nullptr;
    }
    const std::size_t writer = stages - 1;
    auto processStage = [&](std::size_t stage) {
        passAll(stage, [&](Slot& slot) { processes[stage - 1](slot.samples.data(), slot.frames); });
    };
    auto writeStage = [&] {
        passAll(writer, [&](Slot& slot) {
            write(slot.samples.data(), slot.frames);
            framesWritten_ += slot.frames;  // the writing stage's alone until run() returns
        });
    };
    // The first chunk is read here. When the input ends within it (a short
    // file), that chunk is the whole job: processing and writing it on this
    // thread costs less than starting the threads would.
    if (!readChunk(read, 0)) {
        for (std::size_t stage = 1; stage < writer; ++stage) processStage(stage);
        writeStage();
        if (error_) std::rethrow_exception(error_);
        return framesWritten_;
    }
    std::vector<std::thread> threads;
    try {
        threads.emplace_back([&] { readAll(read, 1); });
        for (std::size_t stage = 2; stage < writer; ++stage) threads.emplace_back(processStage, stage);
        threads.emplace_back(writeStage);
    } catch (...) {
        fail(std::current_exception());
    }
    if (threads.size() == writer) processStage(1);
    for (std::thread& thread : threads) thread.join();
    if (error_) std::rethrow_exception(error_);
    return framesWritten_;
}

void RenderPipeline::fail(std::exception_ptr error) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!failed_) error_ = error;
        failed_ = true;
    }
    for (std::size_t stage = 0; stage < done_.size(); ++stage) progressed_[stage].notify_all();
}

bool RenderPipeline::readChunk(const Reader& read, std::int64_t sequence) {
    const std::size_t writer = done_.size() - 1;
    try {
        {
            std::unique_lock<std::mutex> lock(mutex_);
            progressed_[writer].wait(lock, [&] { return failed_ || sequence - done_[writer] < depth_; });
            if (failed_) return false;
        }
        // The slot is this thread's alone until the chunk is handed on.
        Slot& slot = slotOf(sequence);
        const std::int64_t frames = std::clamp<std::int64_t>(read(slot.samples.data()), 0, chunkFrames_);
        slot.frames = frames;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            if (frames > 0) done_[0] = sequence + 1;
            if (frames < chunkFrames_) ended_[0] = 1;
        }
        progressed_[0].notify_one();
        return frames == chunkFrames_;
    } catch (...) {
        fail(std::current_exception());
        return false;
    }
}

void RenderPipeline::readAll(const Reader& read, std::int64_t firstSequence) {
    for (std::int64_t sequence = firstSequence; readChunk(read, sequence); ++sequence) {
    }
}

void RenderPipeline::passAll(std::size_t stage, const std::function<void(Slot&)>& work) {
    const std::size_t before = stage - 1;
    try {
        for (std::int64_t sequence = 0;; ++sequence) {
            {
                std::unique_lock<std::mutex> lock(mutex_);
                progressed_[before].wait(lock,
                                         [&] { return failed_ || done_[before] > sequence || ended_[before]; });
                if (failed_ || done_[before] <= sequence) break;
            }
            work(slotOf(sequence));
            {
                const std::lock_guard<std::mutex> lock(mutex_);
                done_[stage] = sequence + 1;
            }
            progressed_[stage].notify_one();
        }
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            ended_[stage] = 1;
        }
        progressed_[stage].notify_one();
    } catch (...) {
        fail(std::current_exception());
    }
}

}  // namespace afx
