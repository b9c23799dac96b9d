#include "platform/screen/CVXWindow.h"

namespace Platform
{

CVXWindow::CVXWindow()
{
    setOpaque(true);
}

void CVXWindow::setLayout(std::unique_ptr<juce::Component> newLayout)
{
    layout = std::move(newLayout);
    if (layout == nullptr)
        return;
    layout->setTopLeftPosition(0, 0);
    setSize(layout->getWidth(), layout->getHeight());
    addAndMakeVisible(*layout);
}

void CVXWindow::enableNoDrawBkg(bool noBackground)
{
    setOpaque(!noBackground);
    repaint();
}

void CVXWindow::paint(juce::Graphics& graphics)
{
    if (isOpaque())
        graphics.fillAll(juce::Colours::black);
}

} // namespace Platform
