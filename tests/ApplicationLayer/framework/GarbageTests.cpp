#include "EngineApi/HostLink.h"
#include "EngineLayer/settings/DataManager.h"
#include "kernel/ComponentRegistration.h"
#include "support/ApplicationFixture.h"
#include "support/ErrorLog.h"

#include <limits>
#include <random>

using namespace EngineApi;
using namespace EngineLayer;
using Platform::AppCommandLine;
using Platform::Bundle;

namespace
{

/** All applications, their programs connected. What is random here is the same in every run. */
class GarbageTest : public ApplicationFixture
{
protected:
    GarbageTest()
    {
        add(DataManager::getInstance(), Kernel::dataManagerId);
        for (const auto* each = Kernel::ComponentRegistration::head(); each != nullptr; each = each->next)
            add(each->creator(), each->id);
        for (const auto& [page, handler] : ApplicationManager::getInstance()->getAllHandlers())
            handlers.push_back(handler);
        for (int program = Pubhead::AppMainMenu; program < Pubhead::AppUnknown; ++program)
            connect(program);
        takePosted();
    }

    int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }
    int between(int first, int last) { return first + below(last - first + 1); }
    juce::int32 oneOf(std::initializer_list<juce::int32> values)
    {
        return values.begin()[below(static_cast<int>(values.size()))];
    }
    juce::int32 number()
    {
        using Limits = std::numeric_limits<juce::int32>;
        constexpr int subCodes = 26;
        return below(4) == 0 ? oneOf({ Limits::min(), -1, 130, 255, 256, 65535, 65536, 234567, Limits::max() })
                             : below(below(2) == 0 ? subCodes : Pubhead::NUM_OF_PAGES + 2);
    }

    Kernel::Payload message()
    {
        auto made = Platform::RemoteMessage::obtain();
        made->what = below(3) != 0 ? between(RMSG_APP_EVENT, RMSG_STATE_TO_SYSTEM)
                                   : oneOf({ RMSG_RADIO_CONTROL, RMSG_N2K_TX, RMSG_N2K_TX_2, RMSG_N2K_TX_3,
                                             RMSG_SETTING_CHANGED, RMSG_IPOD_AUDIO_PATH, WM_MESSAGE_IPOD_DRIVER });
        made->arg1 = number();
        made->arg2 = number();
        made->appType = number();
        if (below(3) != 0)
            made->bundle = Bundle::obtain();
        for (const auto* key : { "value", "bytes", "string1", "pos1" })
        {
            const int kind = made->bundle == nullptr ? -1 : below(5);
            if (kind == 0)
                made->bundle->putInt(key, number());
            else if (kind == 1)
                made->bundle->putString(key, juce::String::repeatedString(juce::String::charToString(0x20ac), 500));
            else if (kind == 2)
                made->bundle->putByteArray(key, key, below(5));
            else if (kind == 3)
                made->bundle->putBundle(key, Bundle::obtain());
        }
        return made.get();
    }

    Kernel::Payload bytes()
    {
        std::array<std::uint8_t, 100> noise {};
        for (auto& byte : noise)
            byte = static_cast<std::uint8_t>(below(3) == 0 ? number() : below(8));
        LowLayer::BytePool::Ptr made = new LowLayer::BytePool(static_cast<int>(noise.size()), nullptr);
        made->assign(noise.data(), below(below(2) == 0 ? 4 : static_cast<int>(noise.size())));
        return made.get();
    }

    Kernel::Payload order()
    {
        const AppCommandLine::Ptr commandLines[] { AppCommandLine::genCmdPageShow(number(), true),
                                                   AppCommandLine::genCmdPageHide(number(), number()),
                                                   AppCommandLine::genCmdSourceEnter(number(), true, true),
                                                   AppCommandLine::genCmdSourceExit(number(), number()), nullptr };
        return made(number(), static_cast<SwitchType>(below(7)), { number(), number(), number(), number() },
                    commandLines[below(5)])
            .get();
    }

    /** To a page, or to its application itself; now and then with a payload that does not go with it. */
    void throwSomething()
    {
        const Kernel::Payload payloads[] { message(), bytes(), order(), nullptr };
        const int which = below(4);
        const juce::int32 ids[] { Kernel::MSG_APP_REMOTE,
                                  oneOf({ Kernel::MSG_HOST_EVENT, Kernel::MSG_AUTOTEST_COMMAND }),
                                  Kernel::MSG_APP_SWITCH, Kernel::MSG_APP_KEY };
        auto id = ids[which];
        if (below(2) == 0)
            id = below(5) == 0 ? below(4) : between(Kernel::MSG_SYS_INIT, Kernel::MSG_HEARTBEAT_STOP + 1);
        const auto& handler = handlers[static_cast<std::size_t>(below(static_cast<int>(handlers.size())))];
        const bool fromMcu = id == Kernel::MSG_HOST_EVENT;
        Kernel::postHandlerMessage(handler->getConfig().ownerId, below(3) != 0 ? -1 : handler->getPage(), id,
                                   fromMcu ? between(EVENT_RADIO_INFO, EVENT_RADIO_TESTMODE) : number(), number(),
                                   payloads[which]);
        run();
    }

    std::mt19937 random { 20'240'611 };
    std::vector<PageHandler::Ptr> handlers;
};

} // namespace

/** Whatever a message carries, nobody falls over, nothing multiplies, and every page goes on obeying the scheduler. */
TEST_F(GarbageTest, WhateverIsThrownAtThemTheApplicationsGoOn)
{
    const ErrorLog quiet;
    constexpr std::size_t most = 20;
    for (int count = 0; count < 40'000; ++count)
    {
        setEnterTestMode(count % 2 == 0);
        throwSomething();
        ASSERT_LT(takePosted().size(), most) << count;
        ASSERT_LT(takeSent().size(), most) << count;
        ASSERT_LE(answers().size(), 1u) << count;
        ASSERT_LE(ErrorLog::take().size(), most) << count;
    }
    for (const auto& handler : handlers)
    {
        carryOut(handler->getPage(), SwitchType::ToStop);
        expectPosted(Kernel::systemStateManagerId, Kernel::MSG_SWITCH_REPORT, handler->getPage(), 1);
        EXPECT_FALSE(handler->isRunning());
    }
}
