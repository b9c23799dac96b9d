#pragma once

#include "ApplicationLayer/ApplicationTask.h"

namespace ApplicationLayer
{

class AMHandler : public AppHandler
{
public:
    AMHandler();
};

class FMHandler : public AppHandler
{
public:
    FMHandler();
};

class WBHandler : public AppHandler
{
public:
    WBHandler();
};

/** The radio program. The weather band comes last, so that it answers for the program. */
class RadioApplication : public ApplicationTask
{
public:
    RadioApplication();
};

} // namespace ApplicationLayer
