#include "bench/console/Verb.h"
#include "bench/panel/RequestWords.h"
#include "panel/PanelFixture.h"

namespace
{

using BenchPanel::RequestWords;

constexpr std::uint32_t keyDown = 0xff54, keyReturn = 0xff0d;

// Every way that a request can end, or has not yet, is told apart; names are words for a person, who asks for itself as well.
TEST(RequestWords, SayWhoAskedForWhatAndWhatBecameOfIt)
{
    using Kind = RequestWords::Kind;
    struct Case
    {
        const char *asker, *page, *action, *status, *because;
        RequestWords words;
    };
    const Case cases[] {
        { "MainMenuApplication (mbMainMenu)",
          "mbUSBAudio",
          "ToRun",
          "done",
          "mbUSBAudio plays: nothing else did.",
          { 7, "Main menu asked for USB music", "done in 3.1 ms: USB music plays: nothing else did.", Kind::done } },
        { "DeviceStatusManager",
          "mbAuxin2",
          "ToRun",
          "refused",
          "The unit is in kPowerOff, which serves no such request.",
          { 7, "The microcontroller asked for AUX 2",
            "refused: The unit is in kPowerOff, which serves no such request.", Kind::refused } },
        { "GeneralApplication (mbEQ)",
          "mbEQ",
          "ToShow",
          "failed",
          "mbEQ could not carry out its order.",
          { 7, "Equaliser asked for its page", "failed in 3.1 ms: Equaliser could not carry out its order.",
            Kind::failed } },
        { "SomebodyNew",
          "mbCamera",
          "ToStop",
          "switching",
          "It is being carried out.",
          { 7, "SomebodyNew stopped Camera", "switching: It is being carried out.", Kind::open } },
    };
    for (const auto& each : cases)
        EXPECT_EQ(BenchPanel::wordsOf({ { "number", 7 },
                                        { "asker", each.asker },
                                        { "page", each.page },
                                        { "action", each.action },
                                        { "status", each.status },
                                        { "because", each.because },
                                        { "finishedUs", 3100 } }),
                  each.words);
    EXPECT_EQ(BenchPanel::wordsOf(nullptr).kind, Kind::open) << "an engine that says nothing";
}

// A request shows as soon as it was made, however soon the unit has served it, and its line asks the engine what became of it, which
// knows what lies behind, too. A bus that has started anew is no other unit.
TEST_F(PanelTest, ShowsARequestAndAsksWhatBecameOfIt)
{
    std::ostringstream output;
    Bench::Console console(*unit, Bench::Style(false), output, false);
    mark();
    ASSERT_EQ(runLine(console, "bus restart").error, "");
    ASSERT_TRUE(comes("program AppMainMenu", "connected"));
    ASSERT_EQ(unit->programs.tell(Pubhead::AppMainMenu, "eq"), "");
    const auto request = place("Main menu asked for Equaliser");
    const auto isBehind = [&]
    { return dynamic_cast<juce::SettableTooltipClient&>(*find(*window, "behind")).getTooltip() == "why page mbFM"; };
    EXPECT_TRUE(pumpUntil(isBehind));
    hand->click(request);
    const auto answer = [&]
    {
        auto* sheet = dynamic_cast<juce::TextEditor*>(find(*window, "What the console has said"));
        return sheet != nullptr ? sheet->getText() : juce::String();
    };
    EXPECT_TRUE(pumpUntil([&] { return answer().contains("(mbEQ ToRun, by MainMenuApplication"); })) << answer();
}

// What a dot's menu offers happens to its program.
TEST_F(PanelTest, LetsAProgramCrashByItsDot)
{
    mark();
    const auto dot = place("radio");
    hand->click(dot, Hand::right);
    EXPECT_TRUE(pumpUntil([] { return juce::Component::getNumCurrentlyModalComponents() > 0; }));
    for (const auto key : { keyDown, keyDown, keyReturn }) // show, crash
        hand->type(key);
    EXPECT_TRUE(comes("program AppRadio", "gone"));
}

} // namespace
