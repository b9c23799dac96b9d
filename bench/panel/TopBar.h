#pragma once

#include "bench/panel/Area.h"
#include "bench/panel/LineButton.h"

namespace BenchPanel
{

/** The state in a sentence, and what is done to the unit as a whole. */
class TopBar : public Area
{
public:
    explicit TopBar(Desk& deskToUse);

    void show(const PanelState& state) override;
    void toggleRecording() { record.press(); }
    void takePicture() { picture.press(); }

private:
    struct Shown
    {
        bool on = false, engineRuns = false;
        std::string supply, sentence;
        bool operator==(const Shown&) const = default;
    };

    Shown shown;
    LineButton power, restart, pullPlug, record, replay, mark, picture, console;

    void resized() override;
    void paint(juce::Graphics& g) override;
};

} // namespace BenchPanel
