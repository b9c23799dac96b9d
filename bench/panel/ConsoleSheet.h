#pragma once

#include "bench/panel/Area.h"

namespace BenchPanel
{

/** What has been said to the console, and its answers, over the lower row; it comes with an answer of several lines. */
class ConsoleSheet : public Area
{
public:
    explicit ConsoleSheet(Desk& deskToUse);

    void show(const PanelState& state) override;

private:
    juce::TextEditor text;

    void resized() override;
    void paint(juce::Graphics& g) override;
    void lookAndFeelChanged() override;
    void visibilityChanged() override;
};

} // namespace BenchPanel
