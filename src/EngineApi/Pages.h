#pragma once

#include "EngineApi/PageHandler.h"
#include "EngineApi/ScheduleRecords.h"

/** Access to the pages from everywhere in the engine. Any thread. For a page without a handler nothing happens. */
namespace EngineApi
{

PageHandler::Ptr getHandler(int page);
Kernel::ComponentId getOwnerId(int page); ///< 0 for an unknown page
int getSource(int page);                  ///< NUM_OF_SOURCES for an unknown page
/**
    Where the page's sound comes from now: its handler may have another channel than its configuration. noAudioChannel
    for an unknown page.
*/
int getAudioChannel(int page);
int appTypeOfPage(int page);       ///< AppUnknown for an unknown page
int getPageOfAppType(int appType); ///< the page of the type that was registered last, or NUM_OF_PAGES
bool isNormalSource(int page);
bool isRearPage(int page);
bool isAvailable(int page);

int getNormalSource();
int getLastNormalSource(); ///< the scheduler's remembered normal source, ahead of getNormalSource during a switch
int getLastSourcePage();
int getRearPage(); ///< mbRearOff when none runs
int getFrontShow();

void requestShowPage(int page, bool autoSwitch);
void requestStopPage(int page);
void requestPageState(int page, AppAction action, bool autoSwitch);
void postSwitchOrder(int page, AppStateSwitch::Ptr order);
void postScheduleResult(int page, ScheduleStatus status);
void notifyPage(int page);
void postToPage(int page, juce::int32 id, juce::int32 arg1, juce::int32 arg2, Kernel::Payload payload = nullptr);
/** Launches the page's background program, with an empty bundle. */
void launchBackProgram(int page);

/** Pages are known from registration on. Message thread. */
void registerHandler(PageHandler::Ptr handler);
void unregisterHandler(PageHandler::Ptr handler);

} // namespace EngineApi
