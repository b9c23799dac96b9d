#pragma once

#include "bench/program/SourceProgram.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace BenchProgram
{

/** The program's window, the size of the unit's screen. What is touched in it is told to `chosen` and `left`. */
class PageView : public Display, private juce::Component, private juce::Timer
{
public:
    PageView(const juce::String& windowTitle, bool draws);
    ~PageView() override;

    void show(int page) override;
    void hide() override;
    void setSource(int page) override;

    std::function<void(int page)> chosen;
    std::function<void(int page)> left;

    static constexpr int width = 800;
    static constexpr int height = 480;

private:
    struct Touch
    {
        juce::Rectangle<int> area;
        int page;
        bool leaves; ///< gives the shown page back instead of choosing another
        juce::String label;
    };

    void paint(juce::Graphics& g) override;
    void mouseUp(const juce::MouseEvent& event) override;
    void timerCallback() override;

    void layOut();
    void paintTopBar(juce::Graphics& g) const;
    void paintPage(juce::Graphics& g) const;
    void paintMenu(juce::Graphics& g) const;
    void paintButtons(juce::Graphics& g) const;
    juce::Font font(float size, bool bold = false) const;
    juce::Colour ink(float strength) const;

    const bool drawing;
    const bool dark;
    int shownPage;
    int source;
    juce::String clock;
    std::vector<Touch> tiles;
    std::vector<Touch> buttons;
};

} // namespace BenchProgram
