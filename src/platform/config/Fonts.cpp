#include "platform/base/Logger.h"
#include "platform/config/Configuration.h"

#include <cstdlib>
#include <juce_graphics/juce_graphics.h>

namespace Platform
{

juce::File AppConfig::fontFolder()
{
    return juce::File(getResourcePath()).getChildFile("fonts");
}

void AppConfig::loadFont()
{
    const auto folder = fontFolder();
    if (folder.getNumberOfChildFiles(juce::File::findFiles, fontFiles) == 0)
    {
        Log("platform/Fonts", "AppConfig")().error("no fonts in %s", folder.getFullPathName().toRawUTF8());
        return;
    }
    // The font list reads this variable when it is made, on the first question; with it the fonts of the system stay
    // out, and the start does not wait for them to be scanned. It is not for the programs that this process starts.
    constexpr auto searchPath = "JUCE_FONT_PATH";
    setenv(searchPath, folder.getFullPathName().toRawUTF8(), 1);
    juce::Font::findAllTypefaceNames();
    unsetenv(searchPath);
    // Where somebody asked for a font earlier, the list exists and lacks these.
    juce::Typeface::scanFolderForFonts(folder);
}

} // namespace Platform
