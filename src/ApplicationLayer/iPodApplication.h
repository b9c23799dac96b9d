#pragma once

#include "ApplicationLayer/ApplicationTask.h"

namespace ApplicationLayer
{

class iPodAudioHandler : public AppHandler
{
public:
    iPodAudioHandler();
    bool isResident() const override { return true; }
};

class iPodVideoHandler : public AppHandler
{
public:
    iPodVideoHandler();
    bool isResident() const override { return true; }
};

class ReariPodHandler : public AppHandler
{
public:
    ReariPodHandler();
    bool isResident() const override { return true; }
};

class PandoraHandler : public AppHandler
{
public:
    PandoraHandler();
};

/** The iPod program and the Pandora program. */
class iPodApplication : public ApplicationTask
{
public:
    iPodApplication();
};

} // namespace ApplicationLayer
