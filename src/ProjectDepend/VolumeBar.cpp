#include "ProjectDepend/VolumeBar.h"

#include "EngineApi/Provided.h"
#include "dsp/AudioServices.h"
#include "kernel/MessageIds.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SetupStore.h"

namespace Bar
{

namespace
{

/** Of MSG_VOLUME_SHOW. */
enum Kind : int { kindMain = 1, kindZone2 = 2, kindMute = 3 };

constexpr int showMs = 2000;
constexpr int unmutedMs = 100;

constexpr int mainZone = 1;
constexpr int zone2 = 2;
constexpr int zone2NameText = 1;

constexpr const char* mainPictures = "volumebar\\MainVolume\\ORB600 Vol%d.png";
constexpr const char* zone2Pictures = "volumebar\\Zone2Volume\\ZVOL%d.png";

juce::String pictureOf(const char* format, int volume)
{
    std::array<char, 100> name {};
    std::snprintf(name.data(), name.size(), format, volume);
    return name.data();
}

/** The zone that the volume keys act on. */
void setCurrentZone(int zone)
{
    if (auto* chips = EngineApi::Provided<Dsp::ChipManager>::get())
        chips->getACService().setCurrentZone(zone);
}

} // namespace

VolumeBar::VolumeBar()
    : BarWindow("VolumeBar", "volumebar\\volumebar.bin")
    , mainVolumeImage(findControl<Platform::CVXImageView>("Img_MainVolume"))
    , zone2Button(findControl<Platform::CVXButton>("Btn_Zone2"))
    , muteButton(findControl<Platform::CVXButton>("Btn_Mute"))
{
}

void VolumeBar::postMessage(juce::int32 id, juce::int32 arg1, juce::int32 arg2, Kernel::Payload payload)
{
    if (passOn(self, id, arg1, arg2, payload))
        return;
    if (id == Kernel::MSG_VOLUME_SHOW)
        showVolume(arg1, arg2);
    else if (id == EngineApi::MSG_BAR_CLOSE && !muted)
        hide();
}

void VolumeBar::updateImages(int)
{
    Platform::callOnMessageThread(
        [bar = self]
        {
            if (bar != nullptr)
                bar->reloadImages();
        });
}

void VolumeBar::reloadImages()
{
    if (mainVolumeImage != nullptr)
        mainVolumeImage->reloadImage();
    for (auto* button : { zone2Button, muteButton })
        if (button != nullptr)
            button->reloadImage();
}

void VolumeBar::showVolume(int kind, int value)
{
    showOnly(kind);
    switch (kind)
    {
    case kindMain:
        showMainVolume(value);
        break;
    case kindZone2:
        showZone2Volume(value);
        break;
    case kindMute:
        showMute(value != 0);
        break;
    default:
        break;
    }
}

void VolumeBar::showOnly(int kind)
{
    setVisibleIf(mainVolumeImage, kind == kindMain);
    setVisibleIf(zone2Button, kind == kindZone2);
    setVisibleIf(muteButton, kind == kindMute);
    fitControls();
}

void VolumeBar::showMainVolume(int volume)
{
    if (mainVolumeImage != nullptr)
        mainVolumeImage->setImage(pictureOf(mainPictures, volume));
    show(0);
}

void VolumeBar::showZone2Volume(int volume)
{
    if (zone2Button != nullptr)
    {
        zone2Button->setText(zone2NameText, Platform::VX_GetSetupValueString(Platform::zone2NameSetting));
        zone2Button->setImagePath(pictureOf(zone2Pictures, volume));
    }
    show(0);
    setCurrentZone(zone2);
}

void VolumeBar::showMute(bool mute)
{
    muted = mute;
    if (!muted)
    {
        startTimer(unmutedMs);
        return;
    }
    stopTimer();
    show(0);
}

void VolumeBar::show(int parameter)
{
    startTimer(showMs);
    BarWindow::show(parameter);
}

void VolumeBar::hide()
{
    stopTimer();
    BarWindow::hide();
    setCurrentZone(mainZone);
}

void VolumeBar::timerCallback()
{
    if (!muted)
    {
        hide();
        return;
    }
    stopTimer();
    showOnly(kindMute);
}

} // namespace Bar
