#pragma once

#include "EngineApi/Remote.h"

/** Launching and closing of source programs, and the page in front. Any thread. */
namespace EngineApi
{

/** Starts the program or hands it the command line; true when it runs or starts. */
bool launchApp(int appType, int page, const juce::String& path, Platform::Bundle::Ptr bundle, bool background);
/** A connected program is asked for the page and given the command line, any other is launched. */
bool showOrLaunchApp(int appType, int page, const juce::String& path, Platform::Bundle::Ptr bundle);
/** Ends its process by force. */
void terminateApp(int appType);
/** Tells it to quit. */
void closeApp(int appType);
void setAppState(int appType, int state);
int getAppState(int appType);
void addConnectListener(AppConnectStateInterface* listener);
void removeConnectListener(AppConnectStateInterface* listener);

/** Asks for a page to come to the front next. */
void setNextPage(int page);
/** The page in front gets a new command line: its order is reported when the program confirms it, or after 400 ms. */
void reportTopPage(int page);
/**
    A program is there: it is told to show the page in front, if that is one of its own and it has not been told.
    `again`: it was there before, and what it was told may have gone with the bus.
*/
void programSaidHello(int appType, bool again);
/** The page in front as far as the programs have confirmed it. */
int getCurrentPage();
/** True while one page goes and another comes. */
bool isPageChanging();

} // namespace EngineApi
