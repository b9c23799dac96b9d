#include "EngineApi/KeyCodes.h"

#include <algorithm>
#include <iterator>

namespace EngineApi
{

namespace
{

#define HEADUNIT_KEY(key)                                                                                              \
    {                                                                                                                  \
        key, #key                                                                                                      \
    }
constexpr NamedKey keys[] = {
    HEADUNIT_KEY(KEY_PLAYPAUSE),
    HEADUNIT_KEY(KEY_NEXT),
    HEADUNIT_KEY(KEY_PRE),
    HEADUNIT_KEY(KEY_SOURCE),
    HEADUNIT_KEY(KEY_POWER_ON),
    HEADUNIT_KEY(KEY_POWER_OFF),
    HEADUNIT_KEY(KEY_AMFM),
    HEADUNIT_KEY(KEY_VOLUME_DOWN),
    HEADUNIT_KEY(KEY_VOLUME_UP),
    HEADUNIT_KEY(KEY_POWER),
    HEADUNIT_KEY(KEY_MMS1),
    HEADUNIT_KEY(KEY_MENU),
    HEADUNIT_KEY(KEY_ROTARY_ENTER),
    HEADUNIT_KEY(KEY_AMS1),
    HEADUNIT_KEY(KEY_SHOWCAMERA),
    HEADUNIT_KEY(KEY_RETURN),
    HEADUNIT_KEY(KEY_SHOWVERSION),
    HEADUNIT_KEY(KEY_ROTARY_NEXT),
    HEADUNIT_KEY(KEY_ROTARY_PRE),
    HEADUNIT_KEY(KEY_FAVORITIES),
    HEADUNIT_KEY(KEY_PLAYPAUSE_LONGPRESS),
    HEADUNIT_KEY(KEY_PRE_LONGPRESS),
    HEADUNIT_KEY(KEY_NEXT_LONGPRESS),
    HEADUNIT_KEY(KEY_REQUESTSHOWMENU),
    HEADUNIT_KEY(KEY_RELEASE),
    HEADUNIT_KEY(KEY_REMOTE_POWER_OFF),
    HEADUNIT_KEY(KEY_INFOBAR_SWITCH_SPEAKER),
    HEADUNIT_KEY(KEY_UNKNOWN),
};
#undef HEADUNIT_KEY

} // namespace

std::span<const NamedKey> allKeys()
{
    return keys;
}

const char* keyName(juce::int32 key)
{
    const auto* found = std::find_if(std::begin(keys), std::end(keys), [key](auto& each) { return each.value == key; });
    return found != std::end(keys) ? found->name : "";
}

} // namespace EngineApi
