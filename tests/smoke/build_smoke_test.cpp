// Temporary: proves the test program links the frame and the platform.
#include <gtest/gtest.h>

#include "AudioEffectX.h"

namespace {
class SilentEffect final : public AudioEffectX {
public:
    SilentEffect() : AudioEffectX(nullptr, 0, 0) {}
    void processReplacing(float**, float**, VstInt32) override {}
};
}  // namespace

TEST(BuildSmoke, RecordIsFilled) {
    SilentEffect effect;
    EXPECT_EQ(effect.getAeffect()->magic, fourCharCode("VstP"));
}
