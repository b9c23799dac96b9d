#pragma once

#include "ApplicationLayer/framework/AppHandler.h"
#include "kernel/SystemTask.h"

#include <map>
#include <vector>

namespace ApplicationLayer
{

/**
    The component for one family of source programs: it has one handler for each page and gives it the messages for its
    page. Runs on its group's thread; handlers are added and removed on the message thread while no group runs.
*/
class ApplicationTask : public Kernel::ComponentTask
{
public:
    /** `initialize` adds the handlers in this order. */
    explicit ApplicationTask(std::vector<AppHandler::Ptr> ownHandlers);
    ~ApplicationTask() override;

    void dispatchMessage(const Kernel::SystemMessage& message) override;
    /** Overrides call this first and then register their listeners. */
    void initialize() override;
    void onStop() override {}
    /** Removes the handlers. */
    void onRelease() override;
    void handleMessage(juce::int32, juce::int32, juce::int32, const Kernel::Payload&) override {}
    /** Messages for no page, and messages of its programs that are not common to all applications. */
    virtual void handleOwnMessage(const Kernel::SystemMessage& message);

    /** Nothing happens when the page has a handler already. */
    void addHandler(const AppHandler::Ptr& handler);
    void removeHandler(const AppHandler::Ptr& handler);
    /** Null for a page without a handler. */
    AppHandler::Ptr findHandler(int page) const;

private:
    const std::vector<AppHandler::Ptr> ownHandlers;
    std::map<int, AppHandler::Ptr> handlers;
};

} // namespace ApplicationLayer
