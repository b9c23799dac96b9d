#pragma once

#include "EngineApi/WiredRemote.h"
#include "bench/remote/RemoteDisplay.h"

#include <array>

namespace Simulation
{

/** In front of the wired remote's driver: notes what the engine wants to be shown there for long. */
class RemoteTexts : public EngineApi::WiredRemote
{
public:
    explicit RemoteTexts(EngineApi::WiredRemote& driverToUse)
        : driver(driverToUse)
    {
    }

    /** As `Bench::RemoteDisplay::text`, once no temporary text covers it. */
    std::string lastingText() const;
    /** By a text that comes back with the lines: the mute. */
    bool isCovered() const { return covering.text.isNotEmpty(); }

    bool showText(int row, int column, const juce::String& text, bool temporary) override;
    bool showLasting(int row, int column, const juce::String& text) override;
    void clearRow(int row) override { driver.clearRow(row); }
    void clearDisplay(bool forgetStored) override;
    void setDimmer(int level) override { driver.setDimmer(level); }
    void restoreAfter(int milliseconds) override { driver.restoreAfter(milliseconds); }
    bool isRestorePending() override { return driver.isRestorePending(); }
    bool restore() override { return driver.restore(); }

private:
    struct Text
    {
        int row = 0, column = 0;
        juce::String text;
    };

    EngineApi::WiredRemote& driver;
    std::array<Text, Bench::RemoteDisplay::rows> stored;
    Text covering;
};

} // namespace Simulation
