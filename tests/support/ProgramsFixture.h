#pragma once

#include "EngineApi/Pages.h"
#include "EngineLayer/channel/RemoteSessionManager.h"
#include "Extend/ExeMonitor.h"
#include "Extend/ViewManager.h"
#include "doubles/IpcDouble.h"
#include "doubles/ProcessDouble.h"
#include "doubles/WindowDouble.h"
#include "kernel/MessageIds.h"
#include "platform/base/CommandLine.h"
#include "support/Eventually.h"
#include "support/KernelFixture.h"

#include <gmock/gmock.h>

/** The message channel and the executable monitor among programs, windows and a bus that exist in memory only. */
class ProgramsFixture : public KernelFixture
{
protected:
    /** One message to a program, as far as the tests compare it. */
    struct Sent
    {
        int appType;
        juce::int32 what;
        juce::int32 arg1;
        juce::int32 arg2 = 0;

        bool operator==(const Sent&) const = default;
        friend void PrintTo(const Sent& sent, std::ostream* stream)
        {
            *stream << sent.what << " to " << Pubhead::appTypeName(sent.appType) << " (" << sent.arg1 << ", "
                    << sent.arg2 << ")";
        }
    };

    ProgramsFixture()
    {
        Platform::IpcDouble::reset();
        Platform::doubles::ProcessDouble::reset();
        Platform::doubles::WindowDouble::reset();
        add(EngineLayer::RemoteSessionManager::getInstance(), Kernel::remoteSessionManagerId);
        add(&monitor, Kernel::exeMonitorId);
        send(Kernel::remoteSessionManagerId, Kernel::MSG_SYS_START);
        send(Kernel::exeMonitorId, Kernel::MSG_SYS_START);
        Platform::IpcDouble::takePosted();
    }

    /** The program is on the bus and has said hello, whatever process it is. */
    void connect(int appType)
    {
        Platform::IpcDouble::setPresent(appType, true);
        monitor.setAppState(appType, EngineApi::kConnected);
        run();
        Platform::IpcDouble::takePosted();
    }

    void fromProgram(int appType, juce::int32 what, juce::int32 arg1 = 0, juce::int32 arg2 = 0,
                     Platform::Bundle::Ptr bundle = nullptr)
    {
        ASSERT_TRUE(Platform::IpcDouble::injectMessage(appType, what, arg1, arg2, std::move(bundle)));
        run();
    }

    /** Everything that programs were told since the last call, in order. */
    static std::vector<Sent> takeSent()
    {
        std::vector<Sent> sent;
        for (const auto& each : Platform::IpcDouble::takePosted())
            sent.push_back({ each.appType, each.what, each.arg1, each.arg2 });
        return sent;
    }

    /** What pages asked the scheduler for since the last call, as "mbFM run auto". Other posted messages are gone. */
    std::vector<std::string> requests() { return requestsIn(takePosted()); }

    static std::vector<std::string> requestsIn(const std::vector<Posted>& posted)
    {
        std::vector<std::string> seen;
        for (const auto& each : posted)
            if (each.id == Kernel::MSG_SCHEDULE_REQUEST)
            {
                constexpr const char* actions[] = { " none", " run", " play", " show", " hide", " stop" };
                seen.push_back(std::string(Pubhead::pageName(each.arg1)) + actions[each.arg2 & 0xffff] +
                               (each.arg2 >> 16 != 0 ? " auto" : ""));
            }
        return seen;
    }

    static EngineApi::AppStateSwitch::Ptr made(int page, EngineApi::SwitchType type,
                                               const EngineApi::PageStates& states = {},
                                               const Platform::AppCommandLine::Ptr& commandLine = nullptr)
    {
        EngineApi::AppStateSwitch::Ptr order = new EngineApi::AppStateSwitch;
        order->page = page;
        order->switchType = type;
        order->states = states;
        order->commandLine = commandLine;
        return order;
    }

    /** The scheduler's order to a page; what follows from it, its report included, is left out. */
    void order(int page, EngineApi::SwitchType type, const EngineApi::PageStates& states,
               const Platform::AppCommandLine::Ptr& commandLine = nullptr)
    {
        EngineApi::postSwitchOrder(page, made(page, type, states, commandLine));
        run();
        takeSent();
        takePosted();
    }

    void fire(Kernel::SystemTimer& owner, int timerId)
    {
        ASSERT_TRUE(owner.isTimerRunning(timerId));
        owner.expire(timerId);
        run();
    }

    /** The watching thread is real: its report comes when it comes. */
    void awaitState(int appType, int state)
    {
        ASSERT_TRUE(eventually(
            [&]
            {
                run();
                return monitor.getAppState(appType) == state;
            }));
        run();
    }

    Extend::ExeMonitor& monitor = *Extend::ExeMonitor::getInstance();
};
