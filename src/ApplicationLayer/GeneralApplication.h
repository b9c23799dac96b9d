#pragma once

#include "ApplicationLayer/ApplicationTask.h"

namespace ApplicationLayer
{

class StandbyHandler : public AppHandler
{
public:
    StandbyHandler();
};

class EQHandler : public AppHandler
{
public:
    EQHandler();
};

class AntitheftHandler : public AppHandler
{
public:
    AntitheftHandler();
};

class AVOffHandler : public AppHandler
{
public:
    AVOffHandler();
};

class CameraHandler : public AppHandler
{
public:
    CameraHandler();
};

/** The programs that have one page each: standby, equaliser, anti-theft, silence and camera. */
class GeneralApplication : public ApplicationTask
{
public:
    GeneralApplication();
};

} // namespace ApplicationLayer
