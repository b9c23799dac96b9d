#pragma once

#include "EngineApi/DeviceStatus.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Settings.h"
#include "EngineLayer/ApplicationManager.h"
#include "lowlayer/BytePool.h"
#include "platform/Logger.h"
#include "support/FakeAudio.h"
#include "support/FakeDevices.h"
#include "support/FakePageHandler.h"
#include "support/ProgramsFixture.h"
#include "support/ScratchUnit.h"

/** One application among fake pages; what it asks the scheduler for is read as "mbFM run auto". */
class ApplicationFixture : public ProgramsFixture
{
protected:
    using Texts = std::vector<std::string>;

    /** `settings` are lines of factory values. Every other page of `fakePages` is not the application's own. */
    ApplicationFixture(const juce::String& settings, std::initializer_list<int> fakePages)
    {
        ScratchUnit::emptySettings(settings);
        EngineApi::Provided<ChipManager>::set(&audio);
        EngineApi::Provided<EngineApi::WiredRemote>::set(&remote);
        EngineApi::Provided<EngineApi::VolumeBar>::set(&volumeBar);
        EngineApi::Provided<EngineApi::FavoriteBar>::set(&favoriteBar);
        EngineApi::Provided<EngineApi::AutoTestSession>::set(&session);
        for (const int page : fakePages)
        {
            pages[page] = new FakePageHandler(page);
            EngineApi::registerHandler(pages[page].get());
        }
    }

    ~ApplicationFixture() override
    {
        EngineApi::Provided<ChipManager>::set(nullptr);
        EngineApi::Provided<EngineApi::WiredRemote>::set(nullptr);
        EngineApi::Provided<EngineApi::VolumeBar>::set(nullptr);
        EngineApi::Provided<EngineApi::FavoriteBar>::set(nullptr);
        EngineApi::Provided<EngineApi::AutoTestSession>::set(nullptr);
        EngineApi::setEnterTestMode(false);
    }

    /** The page becomes the normal source; a fake one runs and is in front. */
    void playing(int page)
    {
        EngineLayer::ApplicationManager::getInstance()->schedule({ page, EngineLayer::AppAction::ToRun, false });
        if (pages.count(page) != 0)
            state(page, { 1, 1, 1, 1 });
        else
            EngineLayer::ApplicationManager::getInstance()->refreshSnapshot();
        takePosted();
    }

    void state(int page, const EngineLayer::PageStates& states)
    {
        pages.at(page)->carryOut(*order(page, EngineLayer::SwitchType::ToRun, states));
        EngineLayer::ApplicationManager::getInstance()->refreshSnapshot();
    }

    static EngineLayer::AppStateSwitch::Ptr order(int page, EngineLayer::SwitchType type,
                                                  const EngineLayer::PageStates& states = {},
                                                  const Platform::AppCommandLine::Ptr& commandLine = nullptr)
    {
        EngineLayer::AppStateSwitch::Ptr made = new EngineLayer::AppStateSwitch;
        made->page = page;
        made->switchType = type;
        made->states = states;
        made->commandLine = commandLine;
        return made;
    }

    /** An order of the scheduler to a page of the application, which carries it out. */
    void carryOut(int page, EngineLayer::SwitchType type, const EngineLayer::PageStates& states = {},
                  const Platform::AppCommandLine::Ptr& commandLine = nullptr)
    {
        toPage(page, Kernel::MSG_APP_SWITCH, static_cast<int>(type), 0, order(page, type, states, commandLine));
    }

    void toPage(int page, juce::int32 id, juce::int32 arg1 = 0, juce::int32 arg2 = 0, Kernel::Payload payload = nullptr)
    {
        Kernel::postHandlerMessage(EngineApi::getOwnerId(page), page, id, arg1, arg2, std::move(payload));
        run();
    }

    /** What the pages asked for since the last call. */
    Texts requests()
    {
        Texts seen;
        for (const auto& each : takePosted())
            if (each.id == Kernel::MSG_SCHEDULE_REQUEST)
            {
                constexpr const char* actions[] = { " none", " run", " play", " show", " hide", " stop" };
                seen.push_back(std::string(Pubhead::pageName(each.arg1)) + actions[each.arg2 & 0xffff] +
                               (each.arg2 >> 16 != 0 ? " auto" : ""));
            }
        return seen;
    }

    /** A command of the test equipment to the application, and what it answers. */
    Texts autoTest(Kernel::ComponentId application, std::initializer_list<std::uint8_t> request)
    {
        LowLayer::BytePool::Ptr bytes = new LowLayer::BytePool(static_cast<int>(request.size()), nullptr);
        bytes->assign(std::data(request), static_cast<int>(request.size()));
        send(application, Kernel::MSG_AUTOTEST_COMMAND, static_cast<int>(request.size()), 0, bytes);
        return answers();
    }
    Texts answers()
    {
        Texts said;
        for (const auto& message : std::exchange(session.messages, {}))
            said.push_back(Platform::hexPairs(message.getData(), static_cast<int>(message.getSize())).toStdString());
        return said;
    }

    ScratchUnit unit;
    FakeAudio audio;
    FakeRemote remote;
    FakeVolumeBar volumeBar;
    FakeFavoriteBar favoriteBar;
    FakeAutoTest session;
    std::map<int, FakePageHandler::Ptr> pages;
};
