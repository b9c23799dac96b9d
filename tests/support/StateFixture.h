#pragma once

#include "EngineApi/SystemState.h"
#include "EngineLayer/schedule/ApplicationManager.h"
#include "EngineLayer/system/SystemStateManager.h"
#include "support/FakePageHandler.h"
#include "support/ProgramsFixture.h"

/**
    The state machine and the application manager among fake pages. What leaves them is read as a transcript: "mbFM run"
    is an order, "mbFM = 1" a result, "mbFM off" the notice of power-off, "normal mbFM to 3" and "last source mbFM" the
    notices of a completed switch, "ready to 3" that the unit leaves booting or its lock.
*/
class StateFixture : public ProgramsFixture
{
protected:
    using Events = std::vector<std::string>;

    StateFixture()
    {
        using namespace Pubhead;
        for (const int page : { mbMainMenu, mbSetup, mbEQ, mbAntitheft, mbStandby, mbCamera, mbAVOff, mbFM, mbAM, mbWB,
                                mbUSBAudio, mbSirius, mbBTPhone, mbRearAV1, mbRearAV2 })
        {
            pages[page] = new FakePageHandler(page);
            EngineApi::registerHandler(pages[page].get());
        }
        add(&states, Kernel::systemStateManagerId);
    }

    void enter(int state)
    {
        EngineApi::switchSystemState(state, EngineApi::kIdle);
        run();
    }

    /** Normal run with the default source in front and nothing under way. */
    void enterNormalRun()
    {
        enter(EngineApi::kNormalRun);
        answerAll();
        events();
        ASSERT_EQ(EngineApi::getNormalSource(), Pubhead::mbAVOff);
    }

    void request(int page, EngineApi::AppAction action, bool autoSwitch = false)
    {
        const EngineApi::RequestInfo info { page, action, autoSwitch };
        send(Kernel::systemStateManagerId, Kernel::MSG_SCHEDULE_REQUEST, page, info.toArgument());
    }

    /** The request, and every order of it carried out. */
    void complete(int page, EngineApi::AppAction action = EngineApi::AppAction::ToRun)
    {
        request(page, action);
        answerAll();
        events();
        ASSERT_FALSE(EngineApi::isSystemBusy());
    }

    /** What was posted since the last call; its orders can be answered. */
    Events events()
    {
        note();
        return std::exchange(transcript, {});
    }

    /** The page carries out its oldest order and reports. */
    void answer(int page, bool ok = true)
    {
        note();
        const auto order =
            std::find_if(orders.begin(), orders.end(), [page](auto& each) { return each->page == page; });
        ASSERT_NE(order, orders.end()) << Pubhead::pageName(page) << " has no order";
        pages.at(page)->carryOut(**order);
        orders.erase(order);
        send(Kernel::systemStateManagerId, Kernel::MSG_SWITCH_REPORT, page, ok ? 1 : 0);
    }

    void answerAll()
    {
        for (note(); !orders.empty(); note())
            answer(orders.front()->page);
    }

    EngineLayer::SystemStateManager& states = *EngineLayer::SystemStateManager::getInstance();
    EngineLayer::ApplicationManager& applications = *EngineLayer::ApplicationManager::getInstance();
    std::map<int, FakePageHandler::Ptr> pages;
    std::vector<EngineApi::AppStateSwitch::Ptr> orders; ///< not carried out yet

private:
    void note()
    {
        for (const auto& each : takePosted())
            if (const auto text = describe(each); !text.empty())
                transcript.push_back(text);
    }

    std::string describe(const Posted& message)
    {
        const std::string receiver = Pubhead::pageName(message.handlerIndex);
        switch (message.id)
        {
        case Kernel::MSG_APP_SWITCH:
        {
            auto* order = Kernel::payloadAs<EngineApi::AppStateSwitch>(message.payload);
            orders.emplace_back(order);
            EXPECT_EQ(message.arg1, static_cast<int>(order->switchType));
            EXPECT_EQ(message.receiver, EngineApi::getOwnerId(order->page));
            constexpr const char* verbs[] { "?", "run", "stop", "change", "raise" };
            return receiver + ' ' + verbs[static_cast<std::size_t>(message.arg1)];
        }
        case Kernel::MSG_SCHEDULE_RESULT:
            return receiver + " = " + std::to_string(message.arg1);
        case Kernel::MSG_APP_PAGE_NOTIFY:
            return receiver + " off";
        case Kernel::MSG_NORMAL_SOURCE:
            return std::string("normal ") + Pubhead::pageName(message.arg1) + " to " + std::to_string(message.receiver);
        case Kernel::MSG_LAST_SOURCE_PAGE:
            return std::string("last source ") + Pubhead::pageName(message.arg1);
        case Kernel::MSG_SYS_READY:
            return message.receiver == Kernel::bluetoothApplicationId ? "ready to 3" : "";
        default:
            return {};
        }
    }

    Events transcript;
};
