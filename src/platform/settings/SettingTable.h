#pragma once

#include <span>

namespace Platform
{

/** A setting that a user of the unit changes. */
struct SettingInfo
{
    int index;
    const char* name;  ///< for tools: "eq-preset"
    const char* title; ///< for people: "Equaliser"
    int lowest = 0;
    int highest = 0;
    std::span<const char* const> values {}; ///< what the values are called, from the lowest on; else a number
    bool isText = false;                    ///< one of `values`
};

/** In the order of their indexes. Any thread. */
std::span<const SettingInfo> allSettings();
/** Null for one that no user changes. */
const SettingInfo* settingInfo(int index);

} // namespace Platform
