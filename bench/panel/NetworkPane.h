#pragma once

#include "bench/panel/Area.h"
#include "bench/panel/LineSlider.h"
#include "bench/panel/QuietButton.h"

namespace BenchPanel
{

/** A zone of the unit as the display on the network has it: its volume, as far as it was told, and what changes it. */
class ZoneRow : public juce::Component
{
public:
    /** Zone 1 or 2; the desk must outlive it. */
    ZoneRow(Desk& deskToUse, int zoneNumber);

    void show(const NetworkDisplay::State& network);

private:
    const int number;
    LineSlider volume;
    LineButton mute, down, up;

    void resized() override;
};

/** What a display on the boat's network sees of the unit, and does with it. */
class NetworkPane : public Area
{
public:
    explicit NetworkPane(Desk& deskToUse);

    void show(const PanelState& state) override;

private:
    /** What the unit answered last, in words. */
    class AnswerLine : public QuietButton
    {
    public:
        explicit AnswerLine(Desk& deskToUse);

        void show(const NetworkDisplay::State& network);

    private:
        bool isRefusal = false;

        void paintWords(juce::Graphics& g) override;
    };

    ZoneRow zone1, zone2;
    AnswerLine answer;

    void resized() override;
};

} // namespace BenchPanel
