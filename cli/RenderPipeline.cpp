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

RenderPipeline::RenderPipeline(std::size_t chunkFloats, std::int64_t chunkFrames, int depth)
    : chunkFrames_(std::max<std::int64_t>(chunkFrames, 1)), depth_(std::max(depth, 2)),
      slots_(static_cast<std::size_t>(depth_)) {
    for (Slot& slot : slots_) slot.samples.resize(chunkFloats);
}

std::int64_t RenderPipeline::run(const Reader& read, const Processor& process, const Writer& write) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        read_ = processed_ = written_ = framesWritten_ = 0;
        inputEnded_ = processingEnded_ = failed_ = false;
        error_ = nullptr;
    }
    // The first chunk is read here. When the input ends within it (a short
    // file), that chunk is the whole job: processing and writing it on this
    // thread costs less than starting the two threads would.
    if (!readChunk(read, 0)) {
        processAll(process);
        writeAll(write);
        if (error_) std::rethrow_exception(error_);
        return framesWritten_;
    }
    std::thread reader([&] { readAll(read, 1); });
    std::thread writer;
    try {
        writer = std::thread([&] { writeAll(write); });
    } catch (...) {
        fail(std::current_exception());
    }
    if (writer.joinable()) processAll(process);
    reader.join();
    if (writer.joinable()) writer.join();
    if (error_) std::rethrow_exception(error_);
    return framesWritten_;
}

void RenderPipeline::fail(std::exception_ptr error) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!failed_) error_ = error;
        failed_ = true;
    }
    slotFreed_.notify_all();
    chunkRead_.notify_all();
    chunkProcessed_.notify_all();
}

bool RenderPipeline::readChunk(const Reader& read, std::int64_t sequence) {
    try {
        {
            std::unique_lock<std::mutex> lock(mutex_);
            slotFreed_.wait(lock, [&] { return failed_ || sequence - written_ < depth_; });
            if (failed_) return false;
        }
        // The slot is this thread's alone until the chunk is handed on.
        Slot& slot = slotOf(sequence);
        const std::int64_t frames = std::clamp<std::int64_t>(read(slot.samples.data()), 0, chunkFrames_);
        slot.frames = frames;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            if (frames > 0) read_ = sequence + 1;
            if (frames < chunkFrames_) inputEnded_ = true;
        }
        chunkRead_.notify_one();
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

void RenderPipeline::processAll(const Processor& process) {
    try {
        for (std::int64_t sequence = 0;; ++sequence) {
            {
                std::unique_lock<std::mutex> lock(mutex_);
                chunkRead_.wait(lock, [&] { return failed_ || read_ > sequence || inputEnded_; });
                if (failed_ || read_ <= sequence) break;
            }
            Slot& slot = slotOf(sequence);
            process(slot.samples.data(), slot.frames);
            {
                const std::lock_guard<std::mutex> lock(mutex_);
                processed_ = sequence + 1;
            }
            chunkProcessed_.notify_one();
        }
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            processingEnded_ = true;
        }
        chunkProcessed_.notify_one();
    } catch (...) {
        fail(std::current_exception());
    }
}

void RenderPipeline::writeAll(const Writer& write) {
    try {
        for (std::int64_t sequence = 0;; ++sequence) {
            {
                std::unique_lock<std::mutex> lock(mutex_);
                chunkProcessed_.wait(lock, [&] { return failed_ || processed_ > sequence || processingEnded_; });
                if (failed_ || processed_ <= sequence) return;
            }
            const Slot& slot = slotOf(sequence);
            write(slot.samples.data(), slot.frames);
            {
                const std::lock_guard<std::mutex> lock(mutex_);
                written_ = sequence + 1;
                framesWritten_ += slot.frames;
            }
            slotFreed_.notify_one();
        }
    } catch (...) {
        fail(std::current_exception());
    }
}

}  // namespace afx
