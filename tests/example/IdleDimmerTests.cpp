#include "example/IdleDimmer.h"

#include "kernel/MessageIds.h"
#include "support/KernelFixture.h"

namespace
{

class IdleDimmerTest : public KernelFixture
{
protected:
    IdleDimmerTest() { add(&dimmer, IdleDimmer::componentId); }

    IdleDimmer& dimmer = *IdleDimmer::getInstance();
};

} // namespace

/** The unit starts, nobody touches it, the panel goes dim; a key brings the light back and the wait starts again. */
TEST_F(IdleDimmerTest, DimsWhenIdleAndBrightensWithAKey)
{
    send(IdleDimmer::componentId, Kernel::MSG_SYS_START);
    ASSERT_TRUE(dimmer.isTimerRunning(IdleDimmer::idleTimer));

    dimmer.expire(IdleDimmer::idleTimer);
    run();
    EXPECT_LT(dimmer.getLevel(), 15);
    EXPECT_FALSE(dimmer.isTimerRunning(IdleDimmer::idleTimer));

    send(IdleDimmer::componentId, Kernel::MSG_APP_KEY);
    EXPECT_EQ(dimmer.getLevel(), 15);
    EXPECT_TRUE(dimmer.isTimerRunning(IdleDimmer::idleTimer));
}
