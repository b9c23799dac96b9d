#pragma once

#include "bench/unit/EngineHost.h"
#include "bench/unit/EngineWatch.h"
#include "bench/unit/Sharing.h"

namespace Bench
{

/**
    Somebody else runs engine, bus and display. The bench serves the simulated devices that the engine's configuration
    names, sees engine and bus on the bus, and starts and stops them by commands.
*/
class AttachedHost : public EngineHost
{
public:
    AttachedHost(Journal& journalToUse, const UnitOptions& options, std::function<void()> unitRestarts);
    ~AttachedHost() override;

    /** Refuses a configuration that names a real device. */
    std::string findPlaces(Places& places) override;
    std::string start() override;
    void stop() override { watch.stop(); }
    void cleanUp() override { made.removeAll(); }
    std::string controlEngine(const std::string& what) override;
    std::string controlBus(const std::string& what) override;
    std::string setSystemDebug(bool on) override;
    int pid() const override { return watch.pid(); }
    std::string busAddress() const override { return address; }
    bool isBusRunning() const override { return watch.isBusThere(); }
    const std::string& display() const override { return displayName; }
    bool tellsExitStatus() const override { return false; }

private:
    const AttachedOptions options;
    const std::string displayName;
    std::string address, folder;
    MadeFiles made;
    EngineWatch watch;

    std::string commandOutput() const { return folder + "/command.log"; }
    std::string makeFolders(const Places& places);
    std::string run(const std::string& option, const std::string& command, const std::string& what);
};

} // namespace Bench
