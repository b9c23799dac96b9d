#pragma once

#include "bench/unit/Bus.h"
#include "bench/unit/Engine.h"
#include "bench/unit/EngineHost.h"
#include "bench/unit/VirtualDisplay.h"

namespace Bench
{

/** Engine, bus and display are the bench's own, with everything of the unit in one new folder. */
class OwnHost : public EngineHost
{
public:
    OwnHost(Journal& journalToUse, UnitOptions optionsToUse, std::function<void()> unitRestartsCall);
    ~OwnHost() override;

    std::string findPlaces(Places& places) override;
    std::string start() override;
    void endEngine() override { engine.stop(); }
    void stop() override;
    void cleanUp() override;
    std::string controlEngine(const std::string& what) override;
    std::string controlBus(const std::string& what) override;
    bool cutPower(bool down) override;
    void expectEnd() override { engine.expectEnd(); }
    void endOrphans() override { engine.endPrograms(); }
    std::string setSystemDebug(bool on) override;
    int pid() const override { return engine.pid(); }
    std::string busAddress() const override { return bus.address(); }
    bool isBusRunning() const override { return bus.isRunning(); }
    const std::string& display() const override { return displayName; }
    bool tellsExitStatus() const override { return true; }

private:
    const UnitOptions options;
    const std::function<void()> unitRestarts;
    Places unit;
    std::string displayName;
    bool systemDebug = false;
    int runs = 0;                  ///< of the engine
    VirtualDisplay virtualDisplay; // programs and engine end with it
    Bus bus { journal };
    Engine engine { journal };

    std::string makeFolder();
    std::string findDisplay();
    std::string startEngine();
    std::string configurationFile() const { return unit.folder + "/engine.toml"; }
    std::string writeConfiguration() const;
    std::string sysInfoName() const;
};

} // namespace Bench
