#pragma once

#include "platform/settings/SettingTable.h"

#include <optional>
#include <string>
#include <vector>

/** The settings that a user of the unit changes, by name. */
namespace Bench
{

using Platform::allSettings;
using Platform::settingInfo;
using Platform::SettingInfo;

/** By name or number; the number may be one that has no name here. Empty when it is neither. */
std::optional<int> findSetting(const std::string& name);
std::vector<std::string> settingNames();
int highestSetting();
/** Those that a user chooses among; none for a setting without a name. */
std::vector<std::string> settingValues(int setting);
/** Why a user cannot choose this value; "" when one can, and for a setting without a name. */
std::string whyNoValue(int setting, const std::string& value);

} // namespace Bench
