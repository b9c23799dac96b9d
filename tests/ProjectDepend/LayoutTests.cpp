#include "platform/screen/Layout.h"

#include "platform/config/Resources.h"
#include "platform/screen/CVXStatic.h"
#include "platform/screen/LayoutFile.h"
#include "support/ErrorLog.h"

#include <gtest/gtest.h>

using namespace Platform;

namespace
{

class LayoutTest : public testing::Test
{
protected:
    ~LayoutTest() override { ResourceAutoDelete(); }

    static juce::MemoryBlock compile(const juce::String& xml) { return writeLayout(juce::ValueTree::fromXml(xml)); }

    /** The layout as a bar would get it, from a pack of its own. */
    std::unique_ptr<juce::Component> load(const juce::MemoryBlock& content)
    {
        const auto name = "case" + juce::String(++loaded) + ".bin";
        juce::ZipFile::Builder builder;
        builder.addEntry(new juce::MemoryInputStream(content, true), 0, name, {});
        const juce::TemporaryFile pack(".spp");
        {
            juce::FileOutputStream stream(pack.getFile());
            builder.writeToStream(stream, nullptr);
        }
        EXPECT_TRUE(CVXResPathManager::getInstance()->addResPath(pack.getFile().getFullPathName(), {}));
        loadCtrlFromFile(name);
        return loadCtrlFromFile(name);
    }

    ErrorLog log;
    static inline int loaded = 0;
};

constexpr const char* whole = R"(<Window name="W" x="10" y="20" width="300" height="100">
    <Group name="G" width="300" height="50" visible="0"><Static name="T" x="1" y="2" width="3" height="4" text="hi"/></Group>
    <Button name="B"><Icon x="5" width="6" height="7"/><Text index="1"/></Button></Window>)";

} // namespace

TEST_F(LayoutTest, AWholeLayoutHasItsControlsWhereItSays)
{
    const auto layout = load(compile(whole));
    ASSERT_NE(layout, nullptr);
    EXPECT_EQ(layout->getBounds(), juce::Rectangle<int>(10, 20, 300, 100));
    auto* text = CVXRelationHelper::findComponent<CVXStatic>(layout.get(), "T");
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->getContent().getText(), "hi");
    EXPECT_EQ(text->getBounds(), juce::Rectangle<int>(1, 2, 3, 4));
    EXPECT_FALSE(text->getParentComponent()->isVisible());
    EXPECT_TRUE(log.take().empty());

    EXPECT_EQ(CVXRelationHelper::findComponent<CVXStatic>(layout.get(), "B"), nullptr) << "of another type";
    EXPECT_EQ(CVXRelationHelper::findComponent<CVXStatic>(nullptr, "T"), nullptr);
    EXPECT_EQ(log.take().size(), 1u);
}

TEST_F(LayoutTest, NoTextLeavesItsArea)
{
    const juce::Rectangle<int> area(20, 40, 100, 24);
    CVXTextElement element;
    element.setArea(area);
    element.setTextColour(juce::Colours::white);
    for (const auto& text : { juce::String("Wind"), juce::String("Wind\nSea\r\nand\nSun\n"),
                              juce::String::repeatedString("Wind\u05d0\u202e ", 20000) })
    {
        element.setText(text);
        juce::Image image(juce::Image::ARGB, 200, 100, true, juce::SoftwareImageType());
        {
            juce::Graphics graphics(image);
            element.paint(graphics, image.getBounds(), CVXButtonState::normal);
        }
        int inside = 0;
        int outside = 0;
        for (int y = 0; y < image.getHeight(); ++y)
            for (int x = 0; x < image.getWidth(); ++x)
                (area.contains(x, y) ? inside : outside) += image.getPixelAt(x, y).getAlpha() > 0;
        EXPECT_GT(inside, 50);
        EXPECT_EQ(outside, 0) << text.substring(0, 10);
    }
}

TEST_F(LayoutTest, ADamagedOneIsRefusedAndReportedOnce)
{
    const auto good = compile(whole);
    const auto cut = [&good](std::size_t size) { return juce::MemoryBlock(good.getData(), size); };
    const auto changed = [&good](int index)
    {
        auto bytes = good;
        bytes[index] = static_cast<char>(bytes[index] ^ 0x40);
        return bytes;
    };
    auto longer = good;
    longer.append("x", 1);
    juce::MemoryBlock nonsense(200);
    juce::Random(1).fillBitsRandomly(nonsense.getData(), nonsense.getSize());
    juce::String deep;
    for (int level = 0; level < 100; ++level)
        deep = "<Group>" + deep + "</Group>";

    const struct
    {
        const char* what;
        juce::MemoryBlock content;
    } cases[] {
        { "nothing", {} },
        { "part of the head", cut(5) },
        { "the head alone", cut(8) },
        { "the last byte is lacking", cut(good.getSize() - 1) },
        { "a byte too many", longer },
        { "another length", changed(0) },
        { "another CRC", changed(5) },
        { "another count in the tree", changed(20) },
        { "nonsense", nonsense },
        { "not a window", compile("<Image name='W'/>") },
        { "an unknown control", compile("<Window><Slider/></Window>") },
        { "a text that is no button's", compile("<Window><Text/></Window>") },
        { "a control in a button", compile("<Window><Button><Image/></Button></Window>") },
        { "a size below nothing", compile("<Window width='-1'/>") },
        { "a place beyond every screen", compile("<Window><Static x='100000'/></Window>") },
        { "too deep", compile("<Window>" + deep + "</Window>") },
    };
    for (const auto& each : cases)
    {
        EXPECT_EQ(load(each.content), nullptr) << each.what;
        EXPECT_EQ(log.take().size(), 1u) << each.what;
    }
}
