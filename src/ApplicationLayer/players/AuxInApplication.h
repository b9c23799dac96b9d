#pragma once

#include "ApplicationLayer/framework/ApplicationTask.h"

namespace ApplicationLayer
{

class AuxIn1Handler : public AppHandler
{
public:
    AuxIn1Handler();
};

class AuxIn2Handler : public AppHandler
{
public:
    AuxIn2Handler();
};

class RearAuxIn1Handler : public AppHandler
{
public:
    RearAuxIn1Handler();
};

class RearAuxIn2Handler : public AppHandler
{
public:
    RearAuxIn2Handler();
};

/** The program of the AUX inputs, front and rear. */
class AuxInApplication : public ApplicationTask
{
public:
    AuxInApplication();
};

} // namespace ApplicationLayer
