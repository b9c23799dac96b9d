#include "ProjectDepend/BarWindow.h"

#include "platform/base/Logger.h"
#include "platform/config/Configuration.h"
#include "platform/record/Recorder.h"

namespace Bar
{

BarWindow::BarWindow(const juce::String& name, const juce::String& layoutFile)
    : juce::TopLevelWindow(name, false)
    , Platform::FloatViewInterface(static_cast<juce::Component&>(*this))
{
    setOpaque(false);
    setDropShadowEnabled(false);
    auto layout = Platform::loadCtrlFromFile(layoutFile);
    if (layout != nullptr)
        place = layout->getPosition();
    window.setLayout(std::move(layout));
    addAndMakeVisible(window);
    window.showWindow(true);
    window.enableNoDrawBkg(true);
    fitControls();
    Platform::setOverlayCallback(*this, this);
    if (window.getLayout() != nullptr && Platform::recorded(Platform::Step::hasDisplay, Platform::UIHelper::hasDisplay))
        addToDesktop();
}

BarWindow::~BarWindow()
{
    Platform::setOverlayCallback(*this, nullptr);
    removeFromDesktop();
}

void BarWindow::setVisibleIf(juce::Component* control, bool visible)
{
    if (control != nullptr)
        control->setVisible(visible);
}

int BarWindow::getDesktopWindowStyleFlags() const
{
    return juce::ComponentPeer::windowIsTemporary | juce::ComponentPeer::windowIgnoresKeyPresses;
}

juce::ComponentPeer* BarWindow::createNewPeer(int style, void*)
{
    return new Platform::OverlayPeer(*this, style);
}

void BarWindow::fitControls()
{
    const auto* layout = window.getLayout();
    if (layout == nullptr)
        return;
    juce::Rectangle<int> area;
    for (const auto* control : layout->getChildren())
        if (control->isVisible())
            area = area.getUnion(control->getBounds());
    setBounds(area + place);
    window.setTopLeftPosition(-area.getPosition());
}

void BarWindow::setShown(bool nowShown)
{
    if (shown.exchange(nowShown) != nowShown)
        Platform::Log("ProjectDepend/BarWindow", "Bar")().info("%s %s", getName().toRawUTF8(),
                                                               nowShown ? "shown" : "hidden");
}

void BarWindow::show(int parameter)
{
    setShown(true);
    FloatViewInterface::show(parameter);
}

void BarWindow::hide()
{
    setShown(false);
    FloatViewInterface::hide();
}

} // namespace Bar
