#pragma once

#include "ApplicationLayer/ApplicationTask.h"

namespace ApplicationLayer
{

class SiriusHandler : public AppHandler
{
public:
    SiriusHandler();
    bool isResident() const override { return true; }
};

/** The satellite radio program. */
class SiriusApplication : public ApplicationTask
{
public:
    SiriusApplication();
};

} // namespace ApplicationLayer
