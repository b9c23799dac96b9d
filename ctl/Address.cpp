#include "ctl/Address.h"

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <toml++/toml.h>

namespace Ctl
{

namespace
{

constexpr const char* usualConfiguration = "/etc/headunit/engine.toml";

Address addressIn(const std::string& file)
{
    try
    {
        const auto configuration = toml::parse_file(file);
        const auto address = configuration.at_path("ipc.address");
        if (address && !address.is_string())
            return { "", file + ": ipc.address: a text is wanted" };
        return { address.value_or(std::string()) };
    }
    catch (const toml::parse_error& error)
    {
        const auto line = error.source().begin.line;
        return { "", file + (line > 0 ? ":" + std::to_string(line) : "") + ": " + std::string(error.description()) };
    }
}

} // namespace

Address findAddress(const std::string& given, const std::string& configurationFile)
{
    if (!given.empty())
        return { given };
    if (const auto* ofEnvironment = std::getenv("HEADUNIT_BUS"); ofEnvironment != nullptr && *ofEnvironment != 0)
        return { ofEnvironment };
    if (!configurationFile.empty())
        return addressIn(configurationFile);
    std::error_code ignored;
    return std::filesystem::exists(usualConfiguration, ignored) ? addressIn(usualConfiguration) : Address {};
}

} // namespace Ctl
