#pragma once

#include "bench/panel/AroundArea.h"
#include "bench/panel/CommandField.h"
#include "bench/panel/ConsoleSheet.h"
#include "bench/panel/DisplayPulse.h"
#include "bench/panel/EventsPane.h"
#include "bench/panel/FrontPanelArea.h"
#include "bench/panel/LinkArea.h"
#include "bench/panel/NetworkPane.h"
#include "bench/panel/PagesPane.h"
#include "bench/panel/RemoteArea.h"
#include "bench/panel/ScreenArea.h"
#include "bench/panel/SoundPane.h"
#include "bench/panel/TopBar.h"

namespace BenchPanel
{

/** The whole panel, 1280 x 800 points: its areas, what they show and what they say. Message thread. */
class PanelView : public juce::Component, private Desk
{
public:
    struct Options
    {
        bool screenIsCaptured = true; ///< the unit's display is its own; else it draws on the panel's, or nowhere
        std::string pictureFolder;
        std::string script; ///< is run at once, and ends the panel; "" for none
        /** The person has said quit, or the script has ended; the error, "" when it succeeded. Message thread. */
        std::function<void(const std::string& error)> ended = [](const std::string&) {};
    };

    /** The unit has started and must outlive it. */
    PanelView(Unit& unitToShow, Options optionsToUse);
    ~PanelView() override;

    /** Ends the threads that use the unit; the panel is of no use from then on. */
    void endLines();

    static constexpr int width = 1280, height = 800;

private:
    Unit& unit;
    const Options options;
    Look day { Look::day }, night { Look::night };
    PanelState state;
    std::optional<LineRunner> runner;
    std::optional<EngineAsker> asker;
    Clock::time_point nextLook;

    TopBar topBar;
    ScreenArea screen;
    FrontPanelArea frontPanel;
    RemoteArea remote;
    AroundArea around;
    LinkArea link;
    PagesPane pages;
    SoundPane sound;
    NetworkPane network;
    EventsPane events;
    CommandField command;
    ConsoleSheet console;
    juce::TooltipWindow tooltips { this };
    std::optional<DisplayPulse> pulse;
    bool isOver = false;                                          ///< nothing is shown any longer
    juce::VBlankAttachment pictures { this, [this] { look(); } }; ///< as often as the display shows one

    template <typename Function>
    void forEachArea(const Function& function);
    void run(const ConsoleLine& line) override;
    void cancel() override;
    void propose(const ConsoleLine& beginning) override { command.propose(beginning); }
    void markMoment(std::optional<Clock::time_point> moment) override { link.markMoment(moment); }
    void toggleConsole() override { console.setVisible(!console.isVisible()); }
    void look();
    void chooseLook();
    void checkEnd();
    void paint(juce::Graphics& g) override;
    bool keyPressed(const juce::KeyPress& key) override;
};

} // namespace BenchPanel
