#include "platform/CommandLine.h"
#include "platform/Pubhead.h"

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

using namespace Platform;

namespace
{

void require(bool condition)
{
    if (!condition)
        std::abort();
}

/** Well-formed UTF-8 without a null; the string class itself is not safe with anything else. */
bool isText(const std::string& text)
{
    try
    {
        return !nlohmann::json(text).dump().empty() && text.find('\0') == std::string::npos;
    }
    catch (const nlohmann::json::type_error&)
    {
        return false;
    }
}

} // namespace

/** Any text (the channel and the JSON reader hand on valid UTF-8 only) is refused or a command line, and what was
 * accepted says the same after a round trip. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (!isText(text))
        return 0;
    const auto bundle = CmdLineHelper::parseCommandLine(juce::String::fromUTF8(text.c_str()));
    const auto commandLine = RemoteObjFormat::generateCommandLine(bundle);
    require((bundle == nullptr) == (commandLine == nullptr));
    if (commandLine == nullptr)
        return 0;
    require(commandLine->getPage() >= 0 && commandLine->getPage() <= Pubhead::NUM_OF_PAGES);

    const auto written = CmdLineHelper::genCommandLine(RemoteObjFormat::formatCommandLine(*commandLine));
    const auto again = RemoteObjFormat::generateCommandLine(CmdLineHelper::parseCommandLine(written));
    require(again != nullptr && again->getType() == commandLine->getType() &&
            again->getPage() == commandLine->getPage());
    require(CmdLineHelper::genCommandLine(RemoteObjFormat::formatCommandLine(*again)) == written);
    return 0;
}
