#include "Pack.h"

#include "platform/screen/LayoutFile.h"

#include <juce_gui_basics/juce_gui_basics.h>
#include <regex>

namespace
{

constexpr int compressionLevel = 9;
constexpr int maxPicture = 4096; // pixels in one direction
constexpr int maxSeries = 1000;

juce::Result failure(const juce::File& file, const juce::String& what)
{
    return juce::Result::fail(file.getFullPathName() + ": " + what);
}

std::unique_ptr<juce::XmlElement> parse(const juce::String& text, juce::String& error)
{
    juce::XmlDocument document(text);
    auto root = document.getDocumentElement();
    error = document.getLastParseError();
    return root;
}

/** A pack under construction. */
class Pack
{
public:
    void add(const juce::String& name, juce::MemoryBlock content)
    {
        // One date for all: the same sources give the same pack, byte for byte.
        builder.addEntry(new juce::MemoryInputStream(std::move(content)), compressionLevel, name,
                         juce::Time(1980, 0, 1, 0, 0));
    }

    juce::Result addLayout(const juce::File& source, const juce::String& name)
    {
        juce::String error;
        const auto root = parse(source.loadFileAsString(), error);
        if (root == nullptr)
            return failure(source, error);
        add(name + ".bin", Platform::writeLayout(juce::ValueTree::fromXml(*root)));
        return juce::Result::ok();
    }

    juce::Result addPicture(const juce::File& source, const juce::String& name, const juce::String& drawing)
    {
        juce::String error;
        const auto root = parse(drawing, error);
        const auto picture = root == nullptr ? nullptr : juce::Drawable::createFromSVG(*root);
        if (picture == nullptr)
            return failure(source, error.isEmpty() ? "it is no drawing" : error);
        const int width = root->getIntAttribute("width");
        const int height = root->getIntAttribute("height");
        if (width < 1 || height < 1 || width > maxPicture || height > maxPicture)
            return failure(source, "width and height are wanted, from 1 to " + juce::String(maxPicture));
        juce::Image image(juce::Image::ARGB, width, height, true, juce::SoftwareImageType());
        {
            juce::Graphics graphics(image);
            picture->draw(graphics, 1.0f);
        }
        juce::MemoryOutputStream png;
        if (!juce::PNGImageFormat().writeImageToStream(image, png))
            return failure(source, "the picture cannot be written");
        add(name + ".png", png.getMemoryBlock());
        return juce::Result::ok();
    }

    juce::Result addSeries(const juce::File& source, const juce::String& name)
    {
        juce::String error;
        const auto drawing = source.loadFileAsString();
        const auto root = parse(drawing, error);
        if (root == nullptr)
            return failure(source, error);
        const int first = root->getIntAttribute("data-first");
        const int last = root->getIntAttribute("data-last");
        if (first >= last || last - first > maxSeries)
            return failure(source, "data-first and data-last are wanted, in order");
        for (int value = first; value <= last; ++value)
        {
            const double level = static_cast<double>(value - first) / (last - first);
            const auto result =
                addPicture(source, name.replace("%d", juce::String(value)), fill(drawing, value, level));
            if (result.failed())
                return result;
        }
        return juce::Result::ok();
    }

    bool write(const juce::File& file) const
    {
        file.getParentDirectory().createDirectory();
        juce::FileOutputStream stream(file);
        return stream.openedOk() && stream.setPosition(0) && stream.truncate().wasOk() &&
               builder.writeToStream(stream, nullptr) && stream.getStatus().wasOk();
    }

private:
    static juce::String fill(const juce::String& drawing, int value, double level)
    {
        static const std::regex lengthPattern(R"(\{level\*([0-9.]+)\})");
        auto rest = drawing.replace("{value}", juce::String(value)).toStdString();
        juce::String filled;
        for (std::smatch match; std::regex_search(rest, match, lengthPattern); rest = match.suffix())
            filled << match.prefix().str() << juce::String(level * std::stod(match[1]), 2);
        return filled + rest;
    }

    juce::ZipFile::Builder builder;
};

juce::Result addFile(Pack& pack, const juce::File& file, const juce::String& name)
{
    const auto stem = name.upToLastOccurrenceOf(".", false, false);
    if (file.hasFileExtension("xml"))
        return pack.addLayout(file, stem);
    if (file.hasFileExtension("svg"))
        return stem.contains("%d") ? pack.addSeries(file, stem) : pack.addPicture(file, stem, file.loadFileAsString());
    juce::MemoryBlock content;
    if (!file.loadFileAsData(content))
        return failure(file, "it cannot be read");
    pack.add(name, std::move(content));
    return juce::Result::ok();
}

} // namespace

juce::Result makePack(const juce::File& folder, const juce::File& packFile)
{
    auto files = folder.findChildFiles(juce::File::findFiles, true);
    files.sort();
    Pack pack;
    for (const auto& file : files)
    {
        const auto result = addFile(pack, file, file.getRelativePathFrom(folder));
        if (result.failed())
            return result;
    }
    return pack.write(packFile) ? juce::Result::ok() : failure(packFile, "it cannot be written");
}
