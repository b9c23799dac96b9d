#pragma once

#include "bench/panel/PanelState.h"
#include "bench/panel/QuietButton.h"

namespace BenchPanel
{

/** A program: a dot that says how it is, and its word in the console. */
class ProgramDot : public QuietButton
{
public:
    /** The word names the program in a line; the desk must outlive it. */
    ProgramDot(Desk& deskToUse, const char* wordToUse);

    void show(const PanelState& state);

private:
    enum class Health { off, well, starting, faulty, hung };

    const juce::String word;
    const int appType;
    Health health = Health::off;

    void paintWords(juce::Graphics& g) override;
};

/** Every program of the unit, in rows. Message thread. */
class ProgramDots : public juce::Component
{
public:
    explicit ProgramDots(Desk& deskToUse);

    void show(const PanelState& state);

    static constexpr int rowHeight = 18, rows = 2;

private:
    std::vector<std::unique_ptr<ProgramDot>> dots;

    void resized() override;
};

} // namespace BenchPanel
