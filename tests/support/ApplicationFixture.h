#pragma once

#include "ApplicationLayer/framework/AppHandler.h"
#include "EngineApi/DeviceStatus.h"
#include "EngineApi/Settings.h"
#include "EngineLayer/schedule/ApplicationManager.h"
#include "lowlayer/BytePool.h"
#include "support/FakeDevices.h"
#include "support/FakePageHandler.h"
#include "support/ProgramsFixture.h"
#include "support/ScratchUnit.h"

/** One application among fake pages; what it asks the scheduler for is read as "mbFM run auto". */
class ApplicationFixture : public ProgramsFixture, protected ProvidedFakes
{
protected:
    using Texts = std::vector<std::string>;

    using SwitchType = EngineApi::SwitchType;
    using CommandLine = Platform::AppCommandLine;

    /** `settings` are lines of factory values; the fake pages belong to other applications. */
    explicit ApplicationFixture(const juce::String& settings = {}, std::initializer_list<int> fakePages = {})
    {
        ScratchUnit::emptySettings(settings);
        addFakePages(fakePages);
    }

    ~ApplicationFixture() override { EngineApi::setEnterTestMode(false); }

    void addFakePages(std::initializer_list<int> added)
    {
        for (const int page : added)
        {
            pages[page] = new FakePageHandler(page);
            EngineApi::registerHandler(pages[page].get());
        }
    }

    /** The page becomes the normal source; a fake one runs and is in front. */
    void playing(int page)
    {
        EngineLayer::ApplicationManager::getInstance()->schedule({ page, EngineApi::AppAction::ToRun, false });
        if (pages.count(page) != 0)
            state(page, { 1, 1, 1, 1 });
        else
            EngineLayer::ApplicationManager::getInstance()->refreshSnapshot();
        takePosted();
    }

    void state(int page, const EngineApi::PageStates& states)
    {
        pages.at(page)->carryOut(*made(page, SwitchType::ToRun, states));
        EngineLayer::ApplicationManager::getInstance()->refreshSnapshot();
    }

    /** An order of the scheduler to a page of the application, which carries it out. */
    void carryOut(int page, SwitchType type, const EngineApi::PageStates& states = {},
                  const CommandLine::Ptr& commandLine = nullptr)
    {
        toPage(page, Kernel::MSG_APP_SWITCH, static_cast<int>(type), 0, made(page, type, states, commandLine));
    }

    /** The same without what follows from it; answers what the handler attached to the command line. */
    Platform::Bundle::Ptr order(int page, SwitchType type, const EngineApi::PageStates& states,
                                const CommandLine::Ptr& commandLine = nullptr)
    {
        ProgramsFixture::order(page, type, states, commandLine);
        return commandLine == nullptr ? nullptr : commandLine->getExtraData();
    }

    void key(int page, int code, int value = 0) { toPage(page, Kernel::MSG_APP_KEY, code, value); }

    static Kernel::SystemTimer& timersOf(int page)
    {
        return dynamic_cast<ApplicationLayer::AppHandler&>(*EngineApi::getHandler(page)).getTimers();
    }

    void toPage(int page, juce::int32 id, juce::int32 arg1 = 0, juce::int32 arg2 = 0, Kernel::Payload payload = nullptr)
    {
        Kernel::postHandlerMessage(EngineApi::getOwnerId(page), page, id, arg1, arg2, std::move(payload));
        run();
    }

    /** Data as the session passes it on. */
    static LowLayer::BytePool::Ptr pooled(const std::vector<std::uint8_t>& bytes)
    {
        LowLayer::BytePool::Ptr pool = new LowLayer::BytePool(static_cast<int>(bytes.size()), nullptr);
        pool->assign(bytes.data(), static_cast<int>(bytes.size()));
        return pool;
    }

    /** A command of the test equipment to the application, and what it answers. */
    Texts autoTest(Kernel::ComponentId application, const std::vector<std::uint8_t>& request)
    {
        send(application, Kernel::MSG_AUTOTEST_COMMAND, static_cast<int>(request.size()), 0, pooled(request));
        return answers();
    }
    Texts answers() { return session.takeAnswers(); }

    ScratchUnit unit;
    std::map<int, FakePageHandler::Ptr> pages;
};
