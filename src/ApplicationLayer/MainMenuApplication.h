#pragma once

#include "ApplicationLayer/ApplicationTask.h"

namespace ApplicationLayer
{

class MainMenuHandler : public AppHandler
{
public:
    MainMenuHandler();
    bool isResident() const override { return true; }
};

/** The main menu program. */
class MainMenuApplication : public ApplicationTask
{
public:
    MainMenuApplication();
};

} // namespace ApplicationLayer
