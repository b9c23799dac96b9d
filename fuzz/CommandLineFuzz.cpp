#include "platform/base/CommandLine.h"
#include "platform/base/Pubhead.h"
#include "platform/base/Utf8.h"

#include <cstdlib>
#include <string>

using namespace Platform;

namespace
{

void require(bool condition)
{
    if (!condition)
        std::abort();
}

} // namespace

/** Any text is refused or a command line, and what was accepted says the same after a round trip. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto bundle = CmdLineHelper::parseCommandLine(textOfUtf8(text));
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
