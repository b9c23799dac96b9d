#pragma once

#include "platform/screen/CVXButton.h"

/** The hidden window of the engine, with two buttons for debugging on a small display. Message thread. */
class MainWindow : public juce::TopLevelWindow, public Platform::CVXButton::Listener
{
public:
    MainWindow();

    void buttonClicked(Platform::CVXButton& button) override;
    /** A display narrower than the unit's screen is somebody's desk: the buttons are shown there. */
    void visibilityChanged() override;

private:
    juce::ComponentPeer* createNewPeer(int style, void* parent) override;
    void addButton(Platform::CVXButton& button, const char* label, juce::Rectangle<int> bounds);

    Platform::CVXButton antitheftExit { "AntitheftExit" };
    Platform::CVXButton menu { "Menu" };
};
