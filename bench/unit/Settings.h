#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/** The settings that a user of the unit changes, by name. */
namespace Bench
{

struct SettingInfo
{
    int index;
    const char* name;  ///< for the console: "eq-preset"
    const char* title; ///< for a page: "Equaliser"
    int lowest = 0;
    int highest = 0;
    std::span<const char* const> values {}; ///< what the values are called, from the lowest on; else a number
    bool isText = false;                    ///< one of `values`
};

/** In the order of their indexes. */
std::span<const SettingInfo> allSettings();
const SettingInfo* settingInfo(int index);
/** By name or number; the number may be one that has no name here. Empty when it is neither. */
std::optional<int> findSetting(const std::string& name);
std::vector<std::string> settingNames();

} // namespace Bench
