#include "platform/screen/Picture.h"

#include "platform/config/Resources.h"

#include <set>
#include <utility>

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
    isDecoded = name.isEmpty();
    if (!isDecoded && !CVXResPathManager::getInstance()->contains(name))
    {
        reportOnce(logger(), "no picture " + name);
        isDecoded = true;
    }
}

const juce::Image& Picture::decoded() const
{
    if (std::exchange(isDecoded, true))
        return image;
    // The bars change their pictures with every step of the volume: what was decoded lately is at hand.
    const auto content = CVXResPathManager::getInstance()->checksumOf(name);
    const auto key = static_cast<juce::int64>(content) << 32 ^ name.hashCode();
    image = juce::ImageCache::getFromHashCode(key);
    if (content != 0 && image.isValid())
        return image;
    const auto stream = CVXResPathManager::getInstance()->open(name);
    image = stream == nullptr ? juce::Image() : juce::PNGImageFormat().decodeImage(*stream);
    if (image.isValid())
        juce::ImageCache::addImageToCache(image, key);
    else
        reportOnce(logger(), "the picture " + name + " is damaged");
    return image;
}

void Picture::paint(juce::Graphics& graphics, juce::Rectangle<int> area) const
{
    if (isLoaded())
        graphics.drawImage(image, area.toFloat(), juce::RectanglePlacement::stretchToFit);
}

} // namespace Platform
