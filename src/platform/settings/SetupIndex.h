#pragma once

namespace Platform
{

/** Settings that the engine itself uses, by setup index. */
enum SetupIndex : int {
    sourceLevelSetting = 6,
    bluetoothSetting = 7, ///< 0: the module is off, and the setup page stays when Bluetooth audio ends
    internetRadioSetting = 9,
    auxNameSetting = 19,
    lowBatterySetting = 20,
    tunerRegionSetting = 21,
    voltmeterSetting = 22,
    weatherAlertSetting = 23, ///< not 0: an alert shows the weather band
    lowPassSetting = 267,     ///< of the subwoofer: 0 off, 1..3
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

/** Settings without a name, and without effect in this unit. */
enum NamelessSetting : int {
    setting14 = 14,
    band257 = 257,
    band258,
    band259,
    band260,
    band261,
    band262,
    band263,
    setting264
};

/** Favourites are numbered from 1; each has its page and its label. */
inline constexpr int favouriteCount = 16;
constexpr bool isFavourite(int number)
{
    return number >= 1 && number <= favouriteCount;
}
constexpr int favouritePageSetting(int favourite)
{
    return 23 + favourite;
}
constexpr int favouriteLabelSetting(int favourite)
{
    return 39 + favourite;
}

} // namespace Platform
