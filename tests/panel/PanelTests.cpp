#include "bench/console/Verb.h"
#include "bench/panel/PanelWindow.h"
#include "ctl/Client.h"
#include "panel/Hand.h"
#include "support/Pump.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

namespace
{

using namespace Bench;
using BenchPanel::PanelView;
using BenchPanel::PanelWindow;

constexpr std::uint32_t keyF1 = 0xffbe, keyUp = 0xff52, keyReturn = 0xff0d, keyEscape = 0xff1b;

/** A live unit behind the panel on a desktop without a window manager, and somebody's hand on it. */
class PanelTest : public testing::Test
{
protected:
    void SetUp() override
    {
        static const XServer desktop("1280x800");
        // As in the program, the toolkit lives through what a display without a window manager complains about.
        juce::JUCEApplicationBase::createInstance = []() -> juce::JUCEApplicationBase* { return nullptr; };
        if (!XServer::isInstalled())
            GTEST_SKIP() << "without Xvfb there is no screen to look at";
        auto options = Unit::Options::besideThisProgram();
        options.display = Display::own;
        unit = std::make_unique<Unit>(options);
        ASSERT_EQ(unit->start(), "");
        ASSERT_EQ(unit->startEngine(), "");
        window = std::make_unique<PanelWindow>(*unit, PanelView::Options {});
        hand.emplace();
        ASSERT_TRUE(comes("page mbFM", "shown"));
        ASSERT_TRUE(comes("mcu agreed", "fm"));
    }

    void TearDown() override
    {
        if (unit != nullptr)
            unit->journal.interrupt();
        window.reset();
    }

    /** Runs the panel until the journal has this, from the last `mark` on. */
    bool comes(const std::string& stream, const std::string& text)
    {
        return pumpUntil([&] { return !unit->journal.find(marked, 1, isEvent(stream, text)).empty(); });
    }
    void mark() { marked = unit->journal.end(); }

    int volume() const
    {
        const auto told = Ctl::Client(unit->engine().busAddress()).ask("State").value;
        return told.is_object() ? told.value("volume1", -1) : -1;
    }

    /** The middle of what a screen reader would call so, on the display. */
    juce::Point<int> place(const juce::String& title)
    {
        juce::Component* found = nullptr;
        EXPECT_TRUE(pumpUntil([&] { return (found = find(*window, title)) != nullptr; })) << title;
        return found != nullptr ? found->localPointToGlobal(found->getLocalBounds().getCentre()) : juce::Point<int>();
    }

    std::unique_ptr<Unit> unit;
    std::unique_ptr<PanelWindow> window;
    std::optional<Hand> hand;

    static juce::Component* find(juce::Component& within, const juce::String& title)
    {
        if (within.getTitle() == title && within.isShowing())
            return &within;
        for (auto* child : within.getChildren())
            if (auto* found = find(*child, title))
                return found;
        return nullptr;
    }

private:
    Place marked;
};

// The wheel over the knob, and the arrow keys on it, are steps of the volume of the unit itself.
TEST_F(PanelTest, TurnsTheVolumeByWheelAndByKey)
{
    const auto before = volume();
    hand->moveTo(place("Volume"));
    hand->press(Hand::wheelUp);
    hand->release(Hand::wheelUp);
    EXPECT_TRUE(pumpUntil([&] { return volume() == before + 1; }));
    hand->click(place("Volume"));
    hand->type(keyUp);
    EXPECT_TRUE(pumpUntil([&] { return volume() == before + 2; }));
}

// A key of the keyboard is a key of the front panel: the unit changes its source.
TEST_F(PanelTest, ChangesTheSourceByAKey)
{
    mark();
    hand->click(place("The unit's screen")); // as a window without a manager gets the keyboard
    hand->type(keyF1);
    EXPECT_TRUE(pumpUntil([&] { return unit->mcu->state().source != Source { 1, 0 } && unit->mcu->state().agreed; }));
}

// The mouse is a finger on the unit's screen, where the picture of it is, at any size of the window.
TEST_F(PanelTest, TouchesTheScreen)
{
    window->setBounds(0, 0, PanelView::width / 2, PanelView::height / 2);
    const auto middle = place("The unit's screen");
    mark();
    const juce::Point menuButton { 150, 468 }, screenMiddle { 400, 240 };
    hand->click(middle + (menuButton - screenMiddle) / 2);
    EXPECT_TRUE(comes("page mbMainMenu", "shown"));
}

// A fault of the link shows as a chip as long as it holds, and the chip takes it away.
TEST_F(PanelTest, TakesAFaultAwayByItsChip)
{
    hand->click(place("Delay"));
    hand->click(place("End: mcu is 300 ms slow"));
    EXPECT_TRUE(pumpUntil([&] { return activeFaults(*unit).empty(); }));
}

// What is done is written down and done again by a line; when it comes out otherwise, that is where it stops.
TEST_F(PanelTest, RecordsWhatIsDoneAndDoesItAgain)
{
    const juce::TemporaryFile recording(".scenario");
    const auto file = recording.getFile().getFullPathName().toStdString();
    std::ostringstream output;
    Console console(*unit, Bench::Style(false), output, false);
    const auto say = [&](const std::string& line)
    {
        const auto outcome = runLine(console, line);
        EXPECT_NE(outcome.kind, Outcome::failed) << line << ": " << outcome.error;
    };
    for (const auto& line : { "record " + file, std::string("mcu source aux"), std::string("state"),
                              std::string("expect page aux settled"), std::string("record off"),
                              std::string("mcu source fm"), std::string("expect page fm settled") })
        say(line);
    EXPECT_FALSE(recording.getFile().loadFileAsString().contains("state"));
    mark();
    say("replay " + file + " 10x");
    EXPECT_TRUE(comes("page mbAuxin2", "shown"));

    say("mcu source am");
    say("expect page am settled");
    recording.getFile().replaceWithText(
        recording.getFile().loadFileAsString().replace("mbFM in-front", "mbFM in-front within 1ms"));
    EXPECT_EQ(runLine(console, "replay " + file).kind, Outcome::failed) << "another page is in front";
}

// A line that is typed is answered; an answer of several lines is seen in the sheet, which Escape puts away.
TEST_F(PanelTest, AnswersWhatIsTyped)
{
    hand->click(place("Command"));
    for (const auto letter : { 's', 't', 'a', 't', 'e' })
        hand->type(static_cast<std::uint32_t>(letter));
    hand->type(keyReturn);
    juce::TextEditor* sheet = nullptr;
    const auto isThere = [&]
    { return (sheet = dynamic_cast<juce::TextEditor*>(find(*window, "What the console has said"))) != nullptr; };
    ASSERT_TRUE(pumpUntil(isThere));
    EXPECT_TRUE(sheet->getText().contains("Microcontroller")) << sheet->getText();
    hand->type(keyEscape);
    EXPECT_TRUE(pumpUntil([&] { return !sheet->isShowing(); }));
}

} // namespace
