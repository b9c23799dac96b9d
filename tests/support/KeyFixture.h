#pragma once

#include "EngineApi/DeviceStatus.h"
#include "EngineApi/HostLink.h"
#include "EngineApi/KeyCodes.h"
#include "EngineLayer/hostlink/HostSessionManager.h"
#include "EngineLayer/keys/KeyManager.h"
#include "doubles/LinesDouble.h"
#include "doubles/SystemDouble.h"
#include "lowlayer/HostcommDev.h"
#include "support/FakeDevices.h"
#include "support/McuLink.h"
#include "support/ScratchUnit.h"
#include "support/StateFixture.h"

/** The radio plays in front; the key manager among fake devices, with the real link to the microcontroller. */
class KeyFixture : public StateFixture, protected ProvidedFakes
{
protected:
    KeyFixture()
    {
        Platform::doubles::SystemDouble::reset();
        Platform::doubles::LinesDouble::reset();
        ScratchUnit::emptySettings(
            "7 = 1\n24 = 52\n25 = 53\n281 = 0\n286 = 11\n1028 = \"\"\n1031 = \"\"\n1042 = \"\"\n");
        add(LowLayer::HostcommDev::getInstance(), Kernel::hostcommDevId);
        add(EngineLayer::HostSessionManager::getInstance(), Kernel::hostSessionManagerId);
        add(&keys, Kernel::keyManagerId);
        pages[Pubhead::mbCamera] = new FakePageHandler(Pubhead::mbCamera);
        EngineApi::registerHandler(pages[Pubhead::mbCamera].get());
        enterNormalRun();
        complete(Pubhead::mbFM);
        connect(Pubhead::AppRadio);
        mcu.send({ 200, EngineApi::EVENT_GET_LAST_MEMORY, {} });
        mcuHears();
        Platform::doubles::SystemDouble::advanceTicks(1000);
    }

    ~KeyFixture() override
    {
        EngineApi::setLowBatteryAlert(false);
        EngineApi::setEnterTestMode(false);
    }

    /** A frame of the microcontroller. */
    void fromMcu(int command, const McuLink::Bytes& data)
    {
        mcu.send({ sequence++ & 0xff, command, data });
        run();
    }
    void press(int key, int origin = EngineApi::originFrontPanel)
    {
        Platform::doubles::SystemDouble::advanceTicks(1000);
        fromMcu(EngineApi::EVENT_KEY, { static_cast<std::uint8_t>(origin), static_cast<std::uint8_t>(key) });
    }

    /** What the microcontroller is told. */
    std::vector<std::string> mcuHears()
    {
        return mcu.hear([this] { run(); });
    }

    /** The key messages that pages got, as "mbCamera 65545 0". */
    Events pageKeys()
    {
        Events seen;
        for (const auto& each : takePosted())
            if (each.id == Kernel::MSG_APP_KEY)
                seen.push_back(std::string(Pubhead::pageName(each.handlerIndex)) + " " + std::to_string(each.arg1) +
                               " " + std::to_string(each.arg2));
        return seen;
    }

    /** A command of the test equipment. */
    void autoTest(const McuLink::Bytes& parameters)
    {
        McuLink::Bytes frame { 0xFF, 0xAA, 0x01, static_cast<std::uint8_t>(parameters.size() + 5) };
        frame.insert(frame.end(), parameters.begin(), parameters.end());
        frame.push_back(static_cast<std::uint8_t>(std::accumulate(frame.begin(), frame.end(), 0u)));
        fromMcu(EngineApi::EVENT_AUTOTEST_INFO, frame);
    }
    std::vector<std::string> answers() { return session.takeAnswers(); }

    ScratchUnit unit;
    McuLink mcu;
    int sequence = 1;
    EngineLayer::KeyManager& keys = *EngineLayer::KeyManager::getInstance();
};
