#pragma once

#include "bench/program/PageLayout.h"
#include "bench/program/SourceProgram.h"

#include <juce_gui_basics/juce_gui_basics.h>
#include <optional>

namespace BenchProgram
{

/** The program's window, the size of the unit's screen. It asks `content` what to show, and tells what is touched. */
class PageView : public Display, private juce::Component, private juce::Timer
{
public:
    PageView(const juce::String& windowTitle, bool draws);
    ~PageView() override;

    void show(int page) override;
    void clear() override;
    void setNight(bool night) override;
    void setSource(int page) override;
    void contentChanged() override;

    std::function<PageContent(int page)> content;       ///< an empty one when not set
    std::function<void(int page, int id)> touched;      ///< something of the content
    std::function<void(juce::Point<int> where)> missed; ///< nothing that can be touched
    std::function<void(int page)> chosen;               ///< another page, with one of the common buttons
    std::function<void(int page)> left;                 ///< the shown page is not wanted any more

private:
    void paint(juce::Graphics& g) override;
    void mouseDown(const juce::MouseEvent& event) override;
    void mouseUp(const juce::MouseEvent& event) override;
    void timerCallback() override;

    void askContent();
    const Touch* pressedTouch() const;

    const bool drawing;
    bool dark = false;
    int shownPage;
    juce::String clock;
    PageContent shown;
    PageLayout layout;
    std::optional<juce::Point<int>> pressed; ///< where the finger came down on the shown page
};

} // namespace BenchProgram
