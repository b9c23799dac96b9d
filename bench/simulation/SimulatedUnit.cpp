#include "bench/simulation/SimulatedUnit.h"

#include "EngineApi/Provided.h"
#include "ProjectDepend/Bars.h"
#include "bench/text/Names.h"
#include "doubles/SystemDouble.h"
#include "factory/SystemFactory.h"
#include "kernel/SystemEngine.h"
#include "platform/base/Logger.h"
#include "platform/config/Configuration.h"
#include "platform/config/Resources.h"
#include "platform/settings/SysInfo.h"

#include <filesystem>
#include <fstream>
#include <juce_events/juce_events.h>
#include <sys/mman.h>

namespace juce
{
// The framework's own, which its message loop calls. False when nothing was there.
bool dispatchNextMessageOnSystemQueue(bool returnIfNoPendingMessages);
} // namespace juce

namespace Simulation
{

namespace
{

/** No other run has the table, and it ends with this one, however that ends. */
void makeSystemInformation(const std::string& folder)
{
    const auto name = "/" + std::filesystem::path(folder).filename().string() + "-sysinfo";
    ::setenv("HEADUNIT_SYSINFO", name.c_str(), 1);
    Platform::VX_SetSysInfo(0, 0);
    ::shm_unlink(name.c_str());
}

SimulatedUnit* logging = nullptr;
std::string logFolder;

/** The engine's log lines are events like any other. */
bool keepLine(const char* file, int, const char*, const char* format, va_list arguments)
{
    const BenchPart part;
    std::array<char, 1024> text {};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    // The folder has another name in every run, and the journal is the same.
    std::string line = text.data();
    for (std::size_t at = 0; (at = line.find(logFolder, at)) != std::string::npos;)
        line.replace(at, logFolder.size(), "UNIT");
    logging->journal.add(std::string("log ") + file, line);
    logging->lookout.lines.tell(file, line);
    return true;
}

} // namespace

SimulatedUnit::SimulatedUnit(Scheduler& schedulerToUse, std::string folder, std::string resources)
    : scheduler(schedulerToUse)
    , journal([this] { return scheduler.now(); })
    , path(std::move(folder))
    , resourcePath(std::move(resources))
    , mcuLine(path + "/mcu", devices)
    , remoteLine("COM5:", devices)
    , i2c(path + "/i2c", devices)
    , gpioLines(path + "/gpio", devices)
    , spi(path + "/spi", devices)
{
    for (Bench::Device* device : std::initializer_list<Bench::Device*> { &mcu, &remote, &videoDecoder, &gpio, &dsp })
        devices.add(*device);
    Platform::doubles::SystemDouble::followClock();
    makeSystemInformation(path);
    logging = this;
    mcuLine.onTraffic([this](bool fromUnit, std::span<const std::uint8_t> bytes)
                      { lookout.link.tell(fromUnit, bytes); });
    logFolder = path;
    Platform::Logger::getInstance()->redirect(nullptr, keepLine, keepLine, keepLine);
    scheduler.addSource({ [this]
                          {
                              const bool mayHavePosted =
                                  scheduler.activity() != seenActivity && scheduler.messageThread().isIdle();
                              return mayHavePosted ? std::optional(scheduler.now()) : std::nullopt;
                          },
                          [this] { dispatchFrameworkMessages(); } });
}

SimulatedUnit::~SimulatedUnit() = default;

std::string SimulatedUnit::writeConfiguration() const
{
    const auto name = path + "/engine.toml";
    for (const auto* folder : { "system", "registry", "application", "media" })
        std::filesystem::create_directories(path + "/" + folder);
    std::ofstream file(name, std::ios::trunc);
    file << "[unit]\n";
    for (const auto* folder : { "system", "registry", "application" })
        file << folder << "_path = \"" << path << "/" << folder << "/\"\n";
    file << "resource_path = \"" << resourcePath << "/\"\n"
         << "profile_path = \"" << resourcePath << "/profile/\"\n"
         << "media_root = \"" << path << "/media/\"\n"
         << "camera_hold_file = \"" << path << "/camera-hold\"\n"
         << "display = \"none\"\n\n"
         << "[mcu]\nport = \"" << path << "/mcu\"\n\n"
         << "[bus]\n";
    for (const auto& [key, socket] : { std::pair { "spi2", "spi" }, { "i2c1", "i2c" }, { "gpio", "gpio" } })
        file << key << " = \"socket:" << path << "/" << socket << "\"\n";
    for (const bool background : { false, true })
    {
        file << (background ? "\n[background_programs]\n" : "\n[programs]\n");
        for (const auto& info : Bench::allPages())
            if (!background || info.inBackground)
                file << Pubhead::pageName(info.page) << " = \"" << path << "/programs/"
                     << Pubhead::appTypeName(info.appType) << "\"\n";
    }
    return name;
}

std::string SimulatedUnit::startDevices()
{
    if (auto error = Platform::Configuration::load(writeConfiguration()); !error.empty())
        return error;
    act(
        [this]
        {
            mcuLine.open();
            remote.plug();
            i2c.open();
            gpioLines.open();
            dsp.start();
            mcu.unitRestarts();
            panel.unitRestarts();
        });
    return {};
}

void SimulatedUnit::startEngine()
{
    scheduler.messageThread().post(
        [this]
        {
            for (const auto* pack : { "CommonRes.spp", "MainRes.spp" })
                Platform::CVXResPathManager::getInstance()->addResPath(Platform::AppConfig::getResourcePath() + pack,
                                                                       {});
            Bar::createBars();
            Factory::SystemFactory::getInstance()->build();
            lookout.watchComponents();
            remoteTexts.emplace(*EngineApi::Provided<EngineApi::WiredRemote>::get());
            EngineApi::Provided<EngineApi::WiredRemote>::set(&*remoteTexts);
            Kernel::SystemEngine::getInstance()->start();
        });
}

void SimulatedUnit::dispatchFrameworkMessages()
{
    seenActivity = scheduler.activity();
    scheduler.messageThread().post(
        [this]
        {
            // All that is there, in one go: the framework adds messages of its own timers, which run on the machine's time
            // and mean nothing to the engine.
            while (juce::dispatchNextMessageOnSystemQueue(true))
            {
            }
            scheduler.discountActivity();
        });
}

} // namespace Simulation
