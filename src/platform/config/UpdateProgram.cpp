#include "platform/config/UpdateProgram.h"

#include "platform/config/Configuration.h"

namespace Platform
{

juce::StringArray updateProgramPaths()
{
    juce::StringArray paths;
    for (const auto* medium : { "SD", "Hard Disk", "Hard Disk2", "Hard Disk3", "Hard Disk4" })
        paths.add(Configuration::get().mediaRoot + medium + "/SW_Update/Bin/UpdateUtility.exe");
    return paths;
}

} // namespace Platform
