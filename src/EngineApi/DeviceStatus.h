#pragma once

/** Which devices the unit has, and what decides the first source. Any thread. */
namespace EngineApi
{

enum DeviceKind : int {
    usbStorage = 0,
    iPodConnected = 1,
    bluetoothConnected = 2,
    pandoraOniPod = 6,
    pandoraOnBluetooth = 15,
    cameraVideo = 16,
    triggerInput = 17,
    satelliteTuner = 18,
    spareDevice = 19
};

class DeviceStateInterface
{
public:
    virtual ~DeviceStateInterface() = default;
    virtual void onDeviceStateChanged(int kind) = 0; ///< on the device status manager's group thread
};

void setDeviceState(int kind, bool present);
/** False for a kind that is not tracked, and for the satellite tuner. */
bool getDeviceState(int kind);
void addDeviceStateListener(DeviceStateInterface* listener);
void removeDeviceStateListener(DeviceStateInterface* listener);

/** To be called when a page's handler has another sound channel: if the page is the source, the DSP follows. */
void audioChannelChanged();

/** Starts the start page, after 2000 ms when the unit was locked. State manager's thread. */
void startSourceWhenReady();
/** The page to start at boot, NUM_OF_PAGES when none waits. */
int getStartPage();
bool isDummyPowerOffCondition(); ///< always false
bool isISRCondition();
/** The question that the phone page asks before it takes the sound; always false in this unit. */
bool isCallCondition();
int getAntitheftValue();
bool isDiscAudioAvailable();
bool isDiscVideoAvailable();
void setLowBatteryAlert(bool on);
bool isLowBatteryAlert();
void setEnterTestMode(bool on);
bool getEnterTestMode();

} // namespace EngineApi
