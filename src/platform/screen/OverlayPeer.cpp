#include "platform/screen/OverlayPeer.h"

#include "platform/base/Threads.h"
#include "platform/base/Time.h"
#include "platform/record/Recorder.h"

#include <cstdlib>

namespace Platform
{

void keepFrameworkOffDisplay()
{
    constexpr const char* variable = "DISPLAY";
    // No display has such a name; the framework looks once.
    constexpr const char* noName = ":none";
    const auto before = juce::SystemStats::getEnvironmentVariable(variable, {});
    setenv(variable, noName, 1);
    juce::Desktop::getInstance();
    if (before.isEmpty())
        unsetenv(variable);
    else
        setenv(variable, before.toRawUTF8(), 1);
}

OverlayPeer::OverlayPeer(juce::Component& shownComponent, int windowStyle)
    : juce::ComponentPeer(shownComponent, windowStyle)
    , window(makeOverlayWindow(
          [shown = juce::Component::SafePointer<juce::Component>(&shownComponent),
           name = shownComponent.getName()](juce::Point<int> position, bool down)
          {
              recordStep(Step::pointer, name, position.x, position.y, down);
              callOnMessageThread(
                  [shown, position, down]
                  {
                      if (shown != nullptr)
                          if (auto* peer = dynamic_cast<OverlayPeer*>(shown->getPeer()))
                              peer->pointer(position, down);
                  });
          }))
{
    window->setTitle(shownComponent.getName());
}

void* OverlayPeer::getNativeHandle() const
{
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(window->getHandle()));
}

void OverlayPeer::setVisible(bool shouldBeVisible)
{
    visible = shouldBeVisible;
    if (visible)
        handleAsyncUpdate();
    window->setVisible(visible);
}

void OverlayPeer::setTitle(const juce::String& title)
{
    window->setTitle(title);
}

void OverlayPeer::setBounds(const juce::Rectangle<int>& newBounds, bool)
{
    bounds = newBounds;
    // The window moves together with its next picture.
    triggerAsyncUpdate();
    handleMovedOrResized();
}

bool OverlayPeer::contains(juce::Point<int> point, bool) const
{
    return bounds.withZeroOrigin().contains(point);
}

void OverlayPeer::toFront(bool)
{
    window->toFront();
    handleBroughtToFront();
}

void OverlayPeer::repaint(const juce::Rectangle<int>&)
{
    triggerAsyncUpdate();
}

void OverlayPeer::handleAsyncUpdate()
{
    cancelPendingUpdate();
    if (!visible || bounds.isEmpty())
        return;
    juce::Image picture(juce::Image::ARGB, bounds.getWidth(), bounds.getHeight(), true, juce::SoftwareImageType());
    if (getComponent().isOpaque())
        picture.clear(picture.getBounds(), juce::Colours::black);
    juce::LowLevelGraphicsSoftwareRenderer renderer(picture);
    handlePaint(renderer);
    window->setPicture(picture, bounds.getPosition());
}

void OverlayPeer::pointer(juce::Point<int> position, bool down)
{
    using Modifiers = juce::ModifierKeys;
    Modifiers::currentModifiers =
        Modifiers::currentModifiers.withoutMouseButtons().withFlags(down ? Modifiers::leftButtonModifier : 0);
    handleMouseEvent(juce::MouseInputSource::InputSourceType::mouse, position.toFloat(), Modifiers::currentModifiers,
                     juce::MouseInputSource::defaultPressure, juce::MouseInputSource::defaultOrientation,
                     timeOfDay().count());
}

} // namespace Platform
