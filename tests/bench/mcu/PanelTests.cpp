#include "bench/mcu/McuDevice.h"
#include "bench/mcu/Panel.h"

namespace
{

using namespace Bench;
using namespace std::chrono_literals;

class PanelDevice : public McuDevice
{
protected:
    Panel panel { journal, mcu };
};

// A key that is held behind a unit that acknowledges nothing for a while: each frame goes out three times, is given up,
// and no second one waits behind it.
TEST_F(PanelDevice, holdsAKeyAtTheSpeedOfTheLink)
{
    pass();
    panel.hold(42, 1, 700ms);
    for (int transmission = 0; transmission < Mcu::transmissions; ++transmission)
    {
        EXPECT_EQ(get(), (McuFrame { 1, Mcu::key, { 1, 42 } }));
        EXPECT_EQ(get().command, 0xFFFF);
        pass(199ms);
        EXPECT_EQ(get().command, 0xFFFF);
        pass(1ms);
    }
    EXPECT_TRUE(sees("mcu link", "gave up IND_KEY"));
    EXPECT_EQ(getAndAcknowledge(), (McuFrame { 2, Mcu::key, { 1, 42 } }));
    pass(100ms);
    EXPECT_TRUE(sees("mcu hold", "2 sent, 5 skipped"));
    EXPECT_EQ(get(), (McuFrame { 3, Mcu::key, { 255, 42 } }));
}

} // namespace
