#include "platform/screen/Picture.h"

#include "platform/config/Resources.h"

#include <set>

namespace Platform
{

namespace
{

constexpr Log logger { "platform/gui/Picture", "Widgets" };

constexpr std::size_t mostReports = 64;

} // namespace

void reportOnce(const Log::Line& line, const juce::String& problem)
{
    static std::set<juce::String> reported;
    if (reported.size() > mostReports || !reported.insert(problem).second)
        return;
    line.error(reported.size() > mostReports ? juce::String("further problems of the resources are not logged")
                                             : problem);
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
    // The bars change their pictures with every step of the volume: what was decoded lately is at hand.
    const auto content = CVXResPathManager::getInstance()->checksumOf(name);
    const auto key = static_cast<juce::int64>(content) << 32 ^ name.hashCode();
    image = juce::ImageCache::getFromHashCode(key);
    if (content != 0 && image.isValid())
        return;
    const auto stream = CVXResPathManager::getInstance()->open(name);
    if (stream == nullptr)
    {
        if (!CVXResPathManager::getInstance()->contains(name))
            reportOnce(logger(), "no picture " + name);
        return;
    }
    image = juce::PNGImageFormat().decodeImage(*stream);
    if (image.isValid())
        juce::ImageCache::addImageToCache(image, key);
    else
        reportOnce(logger(), "the picture " + name + " is damaged");
}

void Picture::paint(juce::Graphics& graphics, juce::Rectangle<int> area) const
{
    if (image.isValid())
        graphics.drawImage(image, area.toFloat(), juce::RectanglePlacement::stretchToFit);
}

} // namespace Platform
