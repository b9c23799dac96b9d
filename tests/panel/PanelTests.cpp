#include "bench/console/Verb.h"
#include "panel/PanelFixture.h"

namespace
{

using namespace Bench;
using BenchPanel::PanelView;

constexpr std::uint32_t keyF1 = 0xffbe, keyUp = 0xff52, keyReturn = 0xff0d, keyEscape = 0xff1b;

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

// By keys alone: a typed line chooses a source, and the first function key, Source, opens the menu over it and goes back to it.
TEST_F(PanelTest, GoesToASourceByTheKeyboard)
{
    const auto isInFront = [&](int page) { return pumpUntil([&] { return unit->programs.pageInFront() == page; }); };
    const auto field = place("Command");
    hand->click(field); // as a window without a manager gets the keyboard
    ASSERT_TRUE(pumpUntil([&] { return find(*window, "Command")->hasKeyboardFocus(false); }));
    typeText("mcu source aux");
    hand->type(keyReturn);
    ASSERT_TRUE(comes("mcu agreed", "aux"));
    ASSERT_TRUE(isInFront(Pubhead::mbAuxin2));
    hand->type(keyF1);
    ASSERT_TRUE(isInFront(Pubhead::mbMainMenu));
    hand->type(keyF1);
    EXPECT_TRUE(isInFront(Pubhead::mbAuxin2));
    const auto programs = unit->programs.running();
    EXPECT_EQ(programs.at(Pubhead::AppAuxIn).source, Pubhead::mbAuxin2) << "it plays";
}

// The mouse is a finger on the unit's screen, where the picture of it is, at any size of the window.
TEST_F(PanelTest, TouchesTheScreen)
{
    window->setBounds(0, 0, PanelView::width / 2, PanelView::height / 2);
    pump(); // until the display has heard of it
    hand->click(place("Source"));
    ASSERT_TRUE(comes("page mbMainMenu", "shown"));
    const auto middle = place("The unit's screen");
    const juce::Point amTile { 300, 130 }, screenMiddle { 400, 240 };
    hand->click(middle + (amTile - screenMiddle) / 2);
    EXPECT_TRUE(comes("mcu agreed", "am"));
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
        EXPECT_NE(outcome.kind, Outcome::failed) << line << ": " << outcome.error << "\n" << output.str();
    };
    for (const auto& line :
         { "record " + file, std::string("mcu source aux"), std::string("state"), std::string("expect mcu source aux"),
           std::string("expect page aux settled"), std::string("record off"), std::string("mcu source fm"),
           std::string("expect mcu source fm"), std::string("expect page fm settled") })
        say(line);
    EXPECT_FALSE(recording.getFile().loadFileAsString().contains("state"));
    mark();
    say("replay " + file + " 10x");
    EXPECT_TRUE(comes("page mbAuxin2", "shown"));

    say("mcu source fm");
    say("expect mcu source fm");
    say("expect page fm settled");
    const auto recorded = recording.getFile().loadFileAsString();
    recording.getFile().replaceWithText(
        recorded.replace("\nmcu source aux\n", "\nmenu eq\nexpect page eq settled\nmcu source aux\n"));
    EXPECT_EQ(runLine(console, "replay " + file).kind, Outcome::failed) << "the equaliser came in between";
    EXPECT_NE(output.str().find("page mbEQ shown, where the recording has page mbAuxin2 shown"), std::string::npos);

    say("mcu source am");
    say("expect page am settled");
    recording.getFile().replaceWithText(recorded.replace("mbFM in-front", "mbFM in-front within 1ms"));
    EXPECT_EQ(runLine(console, "replay " + file).kind, Outcome::failed) << "another page is in front";
}

// The engine and its bus start anew: the panel asks those that are there now.
TEST_F(PanelTest, HearsTheEngineAgainAfterAPowerCut)
{
    const BenchPanel::EngineAsker asker(*unit);
    const auto hears = [&](Clock::time_point since)
    { return pumpUntil([&] { return asker.told()->at > since && asker.told()->state.is_object(); }); };
    ASSERT_TRUE(hears({}));
    mark();
    hand->click(place("Pull plug"));
    ASSERT_TRUE(comes("engine", "started"));
    EXPECT_TRUE(hears(Clock::now()));
}

// A line that is typed is answered; an answer of several lines is seen in the sheet, by day and by night, which Escape puts away.
TEST_F(PanelTest, AnswersWhatIsTyped)
{
    hand->click(place("Command"));
    typeText("state");
    hand->type(keyReturn);
    juce::TextEditor* sheet = nullptr;
    const auto isThere = [&]
    { return (sheet = dynamic_cast<juce::TextEditor*>(find(*window, "What the console has said"))) != nullptr; };
    ASSERT_TRUE(pumpUntil(isThere));
    EXPECT_TRUE(sheet->getText().contains("Microcontroller")) << sheet->getText();
    for (const auto& [line, isNight] : { std::pair("lights on", true), std::pair("lights off", false) })
    {
        std::ostringstream output;
        Console console(*unit, Bench::Style(false), output, false);
        ASSERT_NE(runLine(console, line).kind, Outcome::failed);
        const auto brightness = [&](int colour) { return sheet->findColour(colour).getBrightness(); };
        ASSERT_TRUE(pumpUntil([&] { return (brightness(juce::TextEditor::backgroundColourId) < 0.5f) == isNight; }));
        EXPECT_EQ(brightness(juce::TextEditor::textColourId) > 0.5f, isNight);
    }
    hand->type(keyEscape);
    EXPECT_TRUE(pumpUntil([&] { return !sheet->isShowing(); }));
}

} // namespace
