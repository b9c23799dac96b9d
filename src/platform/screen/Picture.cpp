#include "platform/screen/Picture.h"

#include "platform/base/Logger.h"
#include "platform/config/Resources.h"

#include <set>

namespace Platform
{

namespace
{

constexpr std::size_t mostReports = 64;

} // namespace

void reportOnce(const char* source, int line, const juce::String& problem)
{
    static std::set<juce::String> reported;
    if (reported.size() > mostReports || !reported.insert(problem).second)
        return;
    Logger::getInstance()->logError(
        source, line, "Widgets",
        reported.size() > mostReports ? juce::String("further problems of the resources are not logged") : problem);
}

void Picture::setName(const juce::String& newName)
{
    if (newName == name)
        return;
    name = newName;
    reload();
}

void Picture::reload()
{
    image = {};
    if (name.isEmpty())
        return;
    const auto stream = CVXResPathManager::getInstance()->open(name);
    if (stream == nullptr)
    {
        if (!CVXResPathManager::getInstance()->contains(name))
            reportOnce("platform/gui/Picture", __LINE__, "no picture " + name);
        return;
    }
    image = juce::PNGImageFormat().decodeImage(*stream);
    if (!image.isValid())
        reportOnce("platform/gui/Picture", __LINE__, "the picture " + name + " is damaged");
}

void Picture::paint(juce::Graphics& graphics, juce::Rectangle<int> area) const
{
    if (image.isValid())
        graphics.drawImage(image, area.toFloat(), juce::RectanglePlacement::stretchToFit);
}

} // namespace Platform
