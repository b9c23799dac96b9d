#pragma once

#include "EngineApi/Bars.h"
#include "ProjectDepend/BarWindow.h"
#include "platform/base/Time.h"
#include "platform/screen/CVXButton.h"
#include "platform/screen/CVXImageView.h"

namespace Bar
{

/** Shows a changed volume for 2000 ms, and the mute for as long as it lasts. */
class VolumeBar : public EngineApi::VolumeBar, public BarWindow, public Platform::Timer
{
public:
    VolumeBar();

    /** MSG_VOLUME_SHOW and MSG_BAR_CLOSE; others are ignored. Any thread. */
    void postMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, Kernel::Payload payload) override;
    /** Any thread. */
    void updateImages(int frontPage) override;
    bool isShown() const override { return isBarShown(); }

    void show(int parameter) override;
    /** The volume keys act on zone 1 again. */
    void hide() override;
    void timerCallback() override;

private:
    void showVolume(int kind, int value);
    void showMainVolume(int volume);
    void showZone2Volume(int volume);
    void showMute(bool mute);
    void showOnly(int kind);
    void reloadImages();

    Platform::CVXImageView* const mainVolumeImage; ///< these are null when the layout lacks them
    Platform::CVXButton* const zone2Button;
    Platform::CVXButton* const muteButton;
    bool muted = false;
    const juce::Component::SafePointer<VolumeBar> self { this };
};

} // namespace Bar
