#pragma once

namespace ApplicationLayer
{

/** The settings that act on the engine, by setup index. */
enum SetupIndex : int {
    sourceLevelSetting = 6,
    auxNameSetting = 19,
    lowBatterySetting = 20,
    tunerRegionSetting = 21,
    voltmeterSetting = 22,
    filtersSetting = 276,
    highPassSetting = 277,
    subwooferSetting = 278,
    balanceSetting = 279,
    faderSetting = 280,
    zone2OnSetting = 281,
    zone2OutputSetting = 282,
    zone2VolumeSetting = 283,
    zone2NameSetting = 284,
    dimmerModeSetting = 285,
    dimmerLevelSetting = 286,
    dayLevelSetting = 287,
    nightLevelSetting = 288,
    bassSetting = 1281,
    middleSetting = 1282,
    trebleSetting = 1283,
    subwooferLevelSetting = 1284,
    firstBandSetting = 1285,
    lastBandSetting = 1291,
    presetSetting = 1792,
    dmeSetting = 1793
};

/** Whether a change matters while the setup program is away. The dimmer's mode does not: only that program changes it.
 */
bool mattersWithoutSetup(int index);

/**
    Carries out a changed setting whose effect depends on nothing but its value: sound, marine network, radio,
   voltmeter. Nothing for any other setting. Any thread; the sound is written before it returns.
*/
void applySetting(int index);

} // namespace ApplicationLayer
