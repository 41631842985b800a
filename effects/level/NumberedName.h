#pragma once
// Parameter names made of a localised text and a number ("Mute 3", "Channel 12").
#include <cstdint>

namespace AF {

// Copies the localised text of `key` followed by `number` in decimal, with its
// terminating zero and no length limit (the host's buffer is trusted, as for
// every localised text). A null text, or memory too short to build the name,
// writes nothing.
void copyNumberedName(const char* key, std::int64_t number, char* text) noexcept;

}  // namespace AF
