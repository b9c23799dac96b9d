#pragma once

#include "bench/panel/Area.h"
#include "bench/panel/EventList.h"
#include "bench/panel/LineButton.h"

namespace BenchPanel
{

/**
    The lines of a list of events, the newest below. The wheel goes back and stays there; a line that the mouse is at is marked
    on the link, and a click shows the bytes and the log that it came with. Message thread.
*/
class EventLines : public juce::Component
{
public:
    EventLines(Desk& deskToUse, const EventList& listToShow);

    /** The list has changed. */
    void update();

private:
    Desk& desk;
    const EventList& list;
    std::vector<EventList::Line> lines;
    std::optional<Place> last;             ///< the lowest line that is seen; the newest without one
    std::optional<juce::Point<int>> mouse; ///< while it is here
    std::optional<std::uint64_t> marked;   ///< number of the event whose moment is marked on the link
    struct Opened
    {
        std::uint64_t number;
        Place lowest; ///< line that is seen meanwhile, so that it stays in its place
    };
    std::optional<Opened> opened; ///< the event whose origin is shown

    juce::Rectangle<int> listed() const;
    /** Where a click goes to the newest, while they are not seen. */
    juce::Rectangle<int> wayBack() const;
    /** Index of the uppermost line that is seen, and of the one behind the lowest. */
    std::pair<std::size_t, std::size_t> seen() const;
    bool isOpened(const EventList::Line& line) const { return opened && opened->number == line.event.number; }
    std::optional<std::size_t> lineAt(juce::Point<int> at) const;
    void point(std::optional<juce::Point<int>> at);
    void open(std::size_t line);
    void close();
    void scroll(int by);

    void paint(juce::Graphics& g) override;
    void paintLine(juce::Graphics& g, const EventList::Line& line, juce::Rectangle<int> row) const;
    void paintOrigin(juce::Graphics& g, juce::Rectangle<int> area) const;
    void resized() override { update(); }
    void mouseMove(const juce::MouseEvent& event) override { point(event.getPosition()); }
    void mouseExit(const juce::MouseEvent&) override { point({}); }
    void mouseUp(const juce::MouseEvent& event) override;
    void mouseWheelMove(const juce::MouseEvent&, const juce::MouseWheelDetails& wheel) override;
    bool keyPressed(const juce::KeyPress& key) override;
    void focusGained(FocusChangeType) override { repaint(); }
    void focusLost(FocusChangeType) override { repaint(); }
};

/** What happens, the newest below, and a chip for each subject that is listed or not. */
class EventsPane : public Area
{
public:
    explicit EventsPane(Desk& deskToUse);

    void show(const PanelState& state) override;

private:
    EventList list;
    EventLines lines;
    std::vector<std::unique_ptr<LineButton>> chips; ///< in the order of the subjects
    std::uint64_t seen = 0;                         ///< the journal's end

    void toggle(std::size_t subject);
    void resized() override;
};

} // namespace BenchPanel
