#include "dsp/akm/Images.h"

#include "platform/config/Configuration.h"

namespace Dsp
{

juce::File imageFolder()
{
    return juce::File(Platform::AppConfig::getResourcePath()).getChildFile("dsp");
}

juce::MemoryBlock readImage(const Image& image, juce::String& problem)
{
    const auto file = imageFolder().getChildFile(image.file);
    juce::MemoryBlock content;
    if (!file.existsAsFile())
        problem = "there is no such file";
    else if (file.getSize() != static_cast<juce::int64>(image.size))
        problem = "it has " + juce::String(file.getSize()) + " bytes, not " + juce::String(image.size);
    else if (!file.loadFileAsData(content) || content.getSize() != image.size)
        problem = "it cannot be read";
    else if (static_cast<std::uint8_t>(content[0]) != image.firstByte)
        problem = "its first byte is not 0x" + juce::String::toHexString(image.firstByte);
    if (problem.isNotEmpty())
        content.reset();
    return content;
}

bool isStandIn(const juce::MemoryBlock& image)
{
    return std::string_view(static_cast<const char*>(image.getData()), image.getSize()).ends_with(standInMark);
}

juce::String standInProblem()
{
    juce::StringArray found;
    for (const auto& image : images)
        if (juce::String ignored; isStandIn(readImage(image, ignored)))
            found.add(image.file);
    if (found.isEmpty())
        return {};
    return found.joinIntoString(", ") + " in " + imageFolder().getFullPathName() +
           (found.size() == 1 ? " is a stand-in" : " are stand-ins") + " of the build: the maker's images belong there";
}

} // namespace Dsp
