#include "bench/unit/Places.h"

#include "bench/text/Names.h"

namespace Bench
{

Places Places::in(const std::string& folder, const std::string& resources)
{
    Places places { .folder = folder,
                    .mcuPort = folder + "/mcu",
                    .remotePort = folder + "/wired-remote",
                    .spi2 = folder + "/spi2",
                    .i2c1 = folder + "/i2c",
                    .gpio = folder + "/gpio",
                    .control = folder + "/control",
                    .media = folder + "/media",
                    .resources = resources,
                    .engineLock = folder + "/registry/engine.lock",
                    .log = folder + "/engine.log",
                    .programs = {} };
    for (const auto appType : allApps())
        places.programs[appType] = folder + "/programs/" + Pubhead::appTypeName(appType);
    return places;
}

std::string quoted(const std::string& text)
{
    std::string result = "\"";
    for (const char c : text)
    {
        if (c == '"' || c == '\\')
            result += '\\';
        result += c;
    }
    return result + "\"";
}

} // namespace Bench
