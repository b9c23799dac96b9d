#pragma once

#include "bench/panel/Area.h"
#include "bench/panel/FaultChips.h"

namespace BenchPanel
{

/**
    The frames of the link, as ticks that move to the left: from the unit, to it, and what has gone wrong. A moment can be
    marked.
*/
class LinkLanes : public juce::Component, private juce::Timer
{
public:
    LinkLanes();

    void show(const std::vector<Event>& events);
    /** Nothing is marked without a time. */
    void markMoment(std::optional<Clock::time_point> moment);

    static constexpr std::chrono::seconds span { 10 };

private:
    enum class Lane { fromUnit, toUnit, fault };
    struct Tick
    {
        Clock::time_point at;
        Lane lane;
        bool operator==(const Tick&) const = default;
    };
    std::vector<Tick> ticks;
    std::optional<Clock::time_point> marked;

    void paint(juce::Graphics& g) override;
    void timerCallback() override;
};

/** The link with the microcontroller: its lanes, its counters, its faults, and all that hold. */
class LinkArea : public Area
{
public:
    explicit LinkArea(Desk& deskToUse);

    void show(const PanelState& state) override;
    void markMoment(std::optional<Clock::time_point> moment) { lanes.markMoment(moment); }

private:
    LinkLanes lanes;
    std::string counters;
    std::vector<std::unique_ptr<LineButton>> faults;
    LineButton well;
    FaultChips active;

    void resized() override;
    void paint(juce::Graphics& g) override;
};

} // namespace BenchPanel
