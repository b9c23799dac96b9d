#pragma once

#include "EngineApi/HostLink.h"
#include "EngineLayer/hostlink/HostSessionManager.h"
#include "kernel/MessageIds.h"
#include "lowlayer/HostcommDev.h"
#include "support/McuLink.h"

/** A fixture with the real link to the microcontroller, and the test at its other end. */
template <typename Fixture>
class WithMcu : public Fixture
{
protected:
    template <typename... Arguments>
    explicit WithMcu(Arguments&&... arguments)
        : Fixture(std::forward<Arguments>(arguments)...)
    {
        this->add(LowLayer::HostcommDev::getInstance(), Kernel::hostcommDevId);
        this->add(EngineLayer::HostSessionManager::getInstance(), Kernel::hostSessionManagerId);
    }

    /** The microcontroller answers the unit's first question; what it sends from now on is dispatched. */
    void synchronise()
    {
        mcu.send({ 200, EngineApi::EVENT_GET_LAST_MEMORY, {} });
        mcuHears();
    }

    /** What the microcontroller is told, command and data: "15 05 00 22 2E". */
    std::vector<std::string> mcuHears()
    {
        return mcu.hear([this] { this->run(); });
    }

    McuLink mcu;
};
