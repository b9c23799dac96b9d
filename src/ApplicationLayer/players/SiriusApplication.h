#pragma once

#include "ApplicationLayer/framework/ApplicationTask.h"
#include "ApplicationLayer/framework/FavouriteHandler.h"

namespace ApplicationLayer
{

class SiriusHandler : public FavouriteHandler
{
public:
    SiriusHandler();
    bool isResident() const override { return true; }
};

/** The satellite radio program: follows whether there is a tuner, its favourites, and the factory reset. */
class SiriusApplication : public ApplicationTask
{
public:
    SiriusApplication();
    void handleOwnMessage(const Kernel::SystemMessage& message) override;
};

} // namespace ApplicationLayer
