#pragma once

#include "bench/panel/PanelWindow.h"
#include "ctl/Client.h"
#include "panel/Hand.h"
#include "support/Pump.h"
#include "support/XServer.h"

#include <gtest/gtest.h>

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
        auto options = Bench::Unit::Options::besideThisProgram();
        options.display = Bench::Display::own;
        unit = std::make_unique<Bench::Unit>(options);
        ASSERT_EQ(unit->start(), "");
        ASSERT_EQ(unit->startEngine(), "");
        window = std::make_unique<BenchPanel::PanelWindow>(*unit, BenchPanel::PanelView::Options {});
        hand.emplace();
        ASSERT_TRUE(comes("page mbFM", "shown"));
        ASSERT_TRUE(comes("mcu agreed", "fm"));
        ASSERT_TRUE(comes("program AppMainMenu", "connected"));
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
        return pumpUntil([&] { return !unit->journal.find(marked, 1, Bench::isEvent(stream, text)).empty(); });
    }
    /** Until the condition holds, with a hand that trembles at this place, as one does. */
    template <typename Condition>
    bool comesOfHand(juce::Point<int> at, Condition condition)
    {
        int x = 0;
        return pumpUntil(
            [&]
            {
                hand->moveTo(at.translated(x = 1 - x, 0));
                return condition();
            });
    }
    void mark() { marked = unit->journal.end(); }

    void typeText(std::string_view text) const
    {
        for (const auto letter : text)
            hand->type(static_cast<std::uint32_t>(letter));
    }

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

    std::unique_ptr<Bench::Unit> unit;
    std::unique_ptr<BenchPanel::PanelWindow> window;
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
    Bench::Place marked;
};
