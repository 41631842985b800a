// Fuzzes the dispatcher of every registered effect: any opcode, index, value
// and opt, with ptr at a heap buffer of an exact size (or null), in sequences
// that may close and re-make the effect.
#include "FuzzHost.h"

namespace {

// Opcodes whose `value` the frame reads as a pointer to a pointer slot
// (speaker arrangements): the host must pass a real one.
bool valueIsPointer(std::int32_t opcode) {
    return opcode == effSetSpeakerArrangement || opcode == effGetSpeakerArrangement;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const std::size_t which = input.ConsumeIntegral<std::uint8_t>();
    AEffect* effect = affuzz::makeEffect(which);
    if (effect == nullptr) return 0;
    int calls = 0;
    while (input.remaining_bytes() > 0 && calls++ < 64) {
        std::int32_t opcode = input.ConsumeBool() ? input.ConsumeIntegralInRange<std::int32_t>(-2, 80)
                                                  : input.ConsumeIntegral<std::int32_t>();
        const std::int32_t index = input.ConsumeBool() ? input.ConsumeIntegralInRange<std::int32_t>(-2, 20)
                                                       : input.ConsumeIntegral<std::int32_t>();
        std::intptr_t value = input.ConsumeBool() ? input.ConsumeIntegralInRange<std::intptr_t>(-2, 20)
                                                  : input.ConsumeIntegral<std::intptr_t>();
        float opt = input.ConsumeBool() ? affuzz::parameterFrom(input) : input.ConsumeFloatingPoint<float>();
        if (opcode == effSetSampleRate || opcode == effSetBlockSizeAndSampleRate) opt = affuzz::sampleRateFrom(input);
        // Text requests copy whole localised strings: the module trusts a host to
        // pass at least 64 bytes (the validator checks nothing goes past them).
        static const std::size_t kSizes[] = {0, 64, 256, 4096};
        affuzz::ExactBuffer buffer(kSizes[input.ConsumeIntegralInRange<std::size_t>(0, std::size(kSizes) - 1)]);
        // Pointer slots for the speaker-arrangement requests.
        void* slots[2] = {nullptr, nullptr};
        if (valueIsPointer(opcode)) value = reinterpret_cast<std::intptr_t>(&slots[0]);
        void* ptr = buffer.data();
        if (valueIsPointer(opcode)) ptr = &slots[1];
        if (opcode == effClose) {
            affuzz::closeEffect(effect);
            effect = affuzz::makeEffect(input.ConsumeIntegral<std::uint8_t>());
            if (effect == nullptr) return 0;
            continue;
        }
        effect->dispatcher(effect, opcode, index, value, ptr, opt);
    }
    affuzz::closeEffect(effect);
    return 0;
}
