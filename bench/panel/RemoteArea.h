#pragma once

#include "bench/panel/Area.h"
#include "bench/panel/LineButton.h"

namespace BenchPanel
{

/** The wired remote: its two lines with their light, and its keys. */
class RemoteArea : public Area
{
public:
    explicit RemoteArea(Desk& deskToUse);

    void show(const PanelState& state) override;

private:
    struct Shown
    {
        std::string line1, line2;
        int level = 15; ///< 0 to 15
        bool plugged = true;
        bool operator==(const Shown&) const = default;
    };

    Shown shown;
    LineButton display; ///< behind the painted lines: plug, stall
    std::vector<std::unique_ptr<LineButton>> keys;

    void resized() override;
    void paintOverChildren(juce::Graphics& g) override;
};

} // namespace BenchPanel
