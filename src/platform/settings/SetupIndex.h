#pragma once

namespace Platform
{

/** Settings with a meaning of their own for the engine, by setup index. Indices in a row (favourites) are with who
 * counts. */
enum SetupIndex : int {
    sourceLevelSetting = 6,
    bluetoothSetting = 7,
    internetRadioSetting = 9,
    auxNameSetting = 19,
    lowBatterySetting = 20,
    tunerRegionSetting = 21,
    voltmeterSetting = 22,
    weatherAlertSetting = 23, ///< not 0: an alert shows the weather band
    filtersSetting = 276,
    highPassSetting = 277, ///< 0 off, 1..3
    subwooferSetting = 278,
    faderSetting = 279,   ///< 0 (rear) to 12 (front), 6 is the centre
    balanceSetting = 280, ///< 0 (left) to 12 (right), 6 is the centre
    zone2OnSetting = 281,
    zone2OutputSetting = 282,
    zone2VolumeSetting = 283, ///< 0: zone 2 follows the steps of zone 1
    zone2NameSetting = 284,
    dimmerModeSetting = 285,
    dimmerLevelSetting = 286,
    dayLevelSetting = 287,
    nightLevelSetting = 288,
    applicationVersionSetting = 1028,
    mcuVersionSetting = 1029,
    osVersionSetting = 1031,
    bluetoothNameSetting = 1039,
    deviceIdSetting = 1042,
    bassSetting = 1281, ///< gains 0..12, 6 is flat
    middleSetting = 1282,
    trebleSetting = 1283,
    subwooferLevelSetting = 1284, ///< 0..12
    firstBandSetting = 1285,
    lastBandSetting = 1291,
    presetSetting = 1792, ///< 0..4
    dmeSetting = 1793
};

} // namespace Platform
