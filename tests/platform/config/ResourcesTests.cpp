#include "platform/config/Configuration.h"
#include "platform/config/Resources.h"
#include "support/ErrorLog.h"

#include <gtest/gtest.h>
#include <juce_graphics/juce_graphics.h>

using namespace Platform;

namespace
{

constexpr int contentLength = 20000;

class ResourcesTest : public testing::Test
{
protected:
    ~ResourcesTest() override
    {
        packs.clear();
        folder.deleteRecursively();
    }

    /** An archive with one file, whose content does not get much smaller. */
    static juce::MemoryBlock archiveOf(const juce::String& name, juce::int64 seed)
    {
        juce::Random random(seed);
        juce::MemoryBlock content(contentLength);
        for (auto& each : content)
            each = static_cast<char>('a' + random.nextInt(26));
        juce::ZipFile::Builder builder;
        builder.addEntry(new juce::MemoryInputStream(content, true), 9, name, {});
        juce::MemoryOutputStream archive;
        builder.writeToStream(archive, nullptr);
        return archive.getMemoryBlock();
    }

    bool add(const juce::MemoryBlock& archive, const juce::String& prefix = {})
    {
        folder.createDirectory();
        const auto file = folder.getNonexistentChildFile("pack", ".spp");
        file.replaceWithData(archive.getData(), archive.getSize());
        return packs.addResPath(file.getFullPathName(), prefix);
    }

    juce::String read(const juce::String& name)
    {
        const auto stream = packs.open(name);
        return stream == nullptr ? juce::String() : stream->readEntireStreamAsString();
    }

    CVXResPathManager& packs = *CVXResPathManager::getInstance();
    const juce::File folder = juce::File(AppConfig::getResourcePath()).getChildFile("packs");
};

} // namespace

TEST_F(ResourcesTest, ANameIsFoundWithoutRegardToCaseAndSlashesInTheFirstPackThatHasIt)
{
    ASSERT_TRUE(add(archiveOf("Farvoritebar/FM.png", 1)));
    ASSERT_TRUE(add(archiveOf("farvoritebar/fm.png", 2)));
    ASSERT_TRUE(add(archiveOf("volume.bin", 3), "VolumeBar\\"));
    const auto first = read("farvoritebar\\fm.png");
    EXPECT_EQ(first.length(), contentLength);
    EXPECT_EQ(read("/FARVORITEBAR/fm.PNG"), first);
    EXPECT_EQ(read("volumebar\\volume.bin").length(), contentLength);
    EXPECT_EQ(packs.open("volume.bin"), nullptr);

    auto stream = packs.open("volumebar/volume.bin");
    ResourceAutoDelete();
    EXPECT_EQ(stream->readEntireStreamAsString().length(), contentLength) << "a stream outlives its pack";
    EXPECT_EQ(packs.open("volumebar/volume.bin"), nullptr);
}

/** Wherever a pack is damaged, its file is read as it was packed or not at all, and what is wrong is said once. */
TEST_F(ResourcesTest, ADamagedPackIsRefusedOrItsFileIs)
{
    EXPECT_FALSE(packs.addResPath(folder.getChildFile("absent.spp").getFullPathName(), {}));
    EXPECT_FALSE(add({}));
    const auto whole = archiveOf("a.bin", 4);
    juce::Random random(5);
    const auto intact = [&]
    {
        EXPECT_TRUE(add(whole));
        return read("a.bin");
    }();
    ASSERT_EQ(intact.length(), contentLength);
    const ErrorLog log;
    for (int round = 0; round < 300; ++round)
    {
        packs.clear();
        auto damaged = whole;
        const int size = static_cast<int>(whole.getSize());
        // Cut short, or a wrong byte in the directory at the end or anywhere.
        if (round % 3 == 0)
            damaged.setSize(static_cast<std::size_t>(random.nextInt(size)));
        else
            damaged[size - 1 - random.nextInt(round % 3 == 1 ? 70 : size)] ^=
                static_cast<char>(1 + random.nextInt(255));
        const bool added = add(damaged);
        log.take();
        const auto first = read("a.bin");
        const auto second = read("a.bin");
        EXPECT_TRUE(first.isEmpty() || first == intact) << "round " << round;
        EXPECT_EQ(first, second);
        EXPECT_EQ(log.take().size(), added && first.isEmpty() && packs.contains("a.bin") ? 1u : 0u)
            << "round " << round;
    }
}

TEST_F(ResourcesTest, ThePacksAndFontsOfTheBuildCanBeUsed)
{
    const juce::String built = HEADUNIT_BUILD_DIR "/resources/";
    for (const auto* name : { "CommonRes.spp", "MainRes.spp" })
        EXPECT_TRUE(packs.addResPath(built + name, {})) << name;
    EXPECT_TRUE(read("Readme.TXT").contains("CommonRes.spp"));

    const auto before = std::exchange(Configuration::get().resourcePath, built);
    AppConfig::loadFont();
    Configuration::get().resourcePath = before;
    EXPECT_TRUE(juce::Font::findAllTypefaceNames().contains("DejaVu Sans"));
    EXPECT_GT(juce::Font("DejaVu Sans", 20.0f, juce::Font::plain).getStringWidth("Favorites"), 40);
    EXPECT_EQ(getenv("JUCE_FONT_PATH"), nullptr) << "not for the programs that are started";
}
