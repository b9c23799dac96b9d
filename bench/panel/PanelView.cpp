#include "bench/panel/PanelView.h"

namespace BenchPanel
{

namespace
{

using Bounds = juce::Rectangle<int>;

/** The panes of the lower row, which the panel itself draws. */
constexpr std::array panes { std::array { 8, 546, 404, 246 }, std::array { 420, 546, 372, 246 },
                             std::array { 800, 546, 472, 246 } };

/** As the unit's pages decide. */
bool isNight(const PanelState& state)
{
    const auto theme = juce::SystemStats::getEnvironmentVariable("HEADUNIT_BENCH_THEME", {});
    return theme.isNotEmpty() ? theme == "dark" : state.supply.lights;
}

} // namespace

PanelView::PanelView(Unit& unitToShow, Options optionsToUse)
    : juce::Component("Head unit")
    , unit(unitToShow)
    , options(std::move(optionsToUse))
    , runner(std::in_place, unit, options.pictureFolder)
    , asker(std::in_place, unit)
    , topBar(*this)
    , screen(*this, options.screenIsCaptured ? unit.engine().display() : "",
             options.screenIsCaptured          ? "The unit's display has gone."
             : unit.engine().display().empty() ? "Nothing is drawn: there is no display."
                                               : "The unit draws in windows of this desktop.")
    , frontPanel(*this)
    , remote(*this)
    , around(*this)
    , link(*this)
    , pages(*this)
    , sound(*this)
    , network(*this)
    , events(*this)
    , command(*this)
    , console(*this)
{
    setOpaque(true);
    setSize(width, height);
    const std::pair<juce::Component*, Bounds> places[] {
        { &topBar, { 0, 0, 1280, 40 } },        { &screen, { 0, 40, 800, 480 } },
        { &frontPanel, { 816, 46, 456, 138 } }, { &remote, { 816, 184, 456, 72 } },
        { &around, { 816, 264, 456, 112 } },    { &link, { 816, 384, 456, 134 } },
        { &pages, { 8, 526, 404, 266 } },       { &sound, { 420, 526, 372, 158 } },
        { &network, { 432, 684, 348, 108 } },   { &events, { 800, 526, 472, 202 } },
        { &command, { 808, 726, 456, 60 } },    { &console, { 8, 526, 784, 266 } },
    };
    for (const auto& [area, bounds] : places)
    {
        addAndMakeVisible(area);
        area->setBounds(bounds);
    }
    console.setVisible(false);
    setWantsKeyboardFocus(true);
    setFocusContainerType(FocusContainerType::keyboardFocusContainer);
    state = snapshot(unit, {});
    chooseLook();
    look();
    if (!options.script.empty())
        run("replay \"" + juce::String::fromUTF8(options.script.c_str()) + "\"");
}

PanelView::~PanelView() = default;

void PanelView::endLines()
{
    isOver = true;
    runner.reset();
    asker.reset();
}

template <typename Function>
void PanelView::forEachArea(const Function& function)
{
    for (Area* area : { static_cast<Area*>(&topBar), static_cast<Area*>(&screen), static_cast<Area*>(&frontPanel),
                        static_cast<Area*>(&remote), static_cast<Area*>(&around), static_cast<Area*>(&link),
                        static_cast<Area*>(&pages), static_cast<Area*>(&sound), static_cast<Area*>(&network),
                        static_cast<Area*>(&events), static_cast<Area*>(&command), static_cast<Area*>(&console) })
        function(*area);
}

void PanelView::run(const ConsoleLine& line)
{
    command.setLine(line);
    runner->run(line.toStdString());
}

void PanelView::cancel()
{
    if (console.isVisible())
        return console.setVisible(false);
    runner->forgetWaiting();
    unit.journal.interrupt(false);
}

void PanelView::look()
{
    if (!pulse && getPeer() != nullptr)
        pulse.emplace(*getTopLevelComponent());
    // While nothing happens, what changes without an event (a plug, a reading) is seen ten times a second.
    constexpr std::chrono::milliseconds atRest { 100 };
    const auto now = Clock::now();
    if (isOver || (unit.journal.end().number == state.journalEnd.number && now < nextLook))
        return;
    nextLook = now + atRest;
    state = snapshot(unit, state);
    state.engine = asker->told();
    state.said = runner->last();
    state.ended = runner->takeEnded();
    chooseLook();
    forEachArea([this](Area& area) { area.show(state); });
    // The toolkit draws what has changed as soon as this returns.
    if (pulse)
        pulse->beat();
    checkEnd();
}

void PanelView::checkEnd()
{
    // The script is the first line that was said.
    const auto isLast = [this](const LineRunner::Said& line)
    { return line.leaves || (line.number == 1 && !options.script.empty()); };
    const auto last = std::ranges::find_if(state.ended, isLast);
    if (last == state.ended.end())
        return;
    isOver = true;
    options.ended(last->failed ? last->answer : "");
}

void PanelView::chooseLook()
{
    auto* wanted = isNight(state) ? &night : &day;
    if (&getLookAndFeel() != wanted)
        setLookAndFeel(wanted);
}

void PanelView::paint(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    g.fillAll(colours.window);
    for (const auto& pane : panes)
        Look::plate(g, { pane[0], pane[1], pane[2], pane[3] }, colours.plate, colours.edge);
}

bool PanelView::keyPressed(const juce::KeyPress& key)
{
    if (const auto number = key.getKeyCode() - juce::KeyPress::F1Key;
        number >= 0 && !key.getModifiers().isAnyModifierKeyDown())
        return frontPanel.press(static_cast<std::size_t>(number));
    if (key == juce::KeyPress('l', juce::ModifierKeys::ctrlModifier, 0))
        command.propose({});
    else if (key == juce::KeyPress('o', juce::ModifierKeys::ctrlModifier, 0))
        toggleConsole();
    else if (key == juce::KeyPress('r', juce::ModifierKeys::ctrlModifier, 0))
        topBar.toggleRecording();
    else if (key == juce::KeyPress('p', juce::ModifierKeys::ctrlModifier, 0))
        topBar.takePicture();
    else if (key == juce::KeyPress('q', juce::ModifierKeys::ctrlModifier, 0))
        run("quit");
    else if (key == juce::KeyPress::escapeKey)
        cancel();
    else
        return false;
    return true;
}

} // namespace BenchPanel
