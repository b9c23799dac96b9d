#pragma once

#include "ApplicationLayer/ApplicationTask.h"

namespace ApplicationLayer
{

class SetupHandler : public AppHandler
{
public:
    SetupHandler();
};

/** The setup program. */
class SetupApplication : public ApplicationTask
{
public:
    SetupApplication();
};

} // namespace ApplicationLayer
