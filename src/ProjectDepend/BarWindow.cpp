#include "ProjectDepend/BarWindow.h"

#include "platform/Configuration.h"
#include "platform/Logger.h"
#include "platform/Overlay.h"

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
        setBounds(layout->getBounds());
    window.setLayout(std::move(layout));
    addAndMakeVisible(window);
    window.showWindow(true);
    window.enableNoDrawBkg(true);
    Platform::setOverlayCallback(*this, this);
    if (window.getLayout() != nullptr && Platform::UIHelper::hasDisplay())
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

void BarWindow::setPeerVisible(bool visible)
{
    auto* peer = getPeer();
    if (peer == nullptr)
        return;
    if (visible)
    {
        const auto handle =
            static_cast<Platform::WindowHandle>(reinterpret_cast<std::uintptr_t>(peer->getNativeHandle()));
        const double scale = peer->getPlatformScaleFactor();
        const auto pixels = [scale](int length) { return juce::roundToInt(length * scale); };
        Platform::clipCorners(handle, pixels(getWidth()), pixels(getHeight()),
                              pixels(Platform::cornerOf(*window.getLayout())));
        // The framework asks the window manager for this, which does not know the window.
        Platform::raiseWindow(handle);
    }
    peer->setVisible(visible);
}

void BarWindow::sendToDisplay() const
{
    // The framework keeps requests until it next reads events, which may be seconds later; a question takes them along.
    if (const auto* peer = getPeer())
        static_cast<void>(peer->isFocused());
}

void BarWindow::setShown(bool nowShown)
{
    if (shown.exchange(nowShown) != nowShown)
        Platform::Logger::getInstance()->logInfo("ProjectDepend/BarWindow", __LINE__, "Bar", "%s %s",
                                                 getName().toRawUTF8(), nowShown ? "shown" : "hidden");
}

void BarWindow::show(int parameter)
{
    setShown(true);
    setPeerVisible(true);
    FloatViewInterface::show(parameter);
    sendToDisplay();
}

void BarWindow::hide()
{
    setShown(false);
    setPeerVisible(false);
    FloatViewInterface::hide();
    sendToDisplay();
}

} // namespace Bar
