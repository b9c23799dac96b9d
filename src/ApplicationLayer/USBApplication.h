#pragma once

#include "ApplicationLayer/ApplicationTask.h"

namespace ApplicationLayer
{

class USBAudioHandler : public AppHandler
{
public:
    USBAudioHandler();
    bool isResident() const override { return true; }
};

class USBVideoHandler : public AppHandler
{
public:
    USBVideoHandler();
};

/** The program that plays USB storage. */
class USBApplication : public ApplicationTask
{
public:
    USBApplication();
};

} // namespace ApplicationLayer
