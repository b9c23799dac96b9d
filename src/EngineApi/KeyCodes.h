#pragma once

#include <juce_core/juce_core.h>
#include <span>

/** What keys the unit knows, whoever they come from. */
namespace EngineApi
{

enum KeyCode : juce::int32 {
    KEY_PLAYPAUSE = 2,
    KEY_NEXT = 3,
    KEY_PRE = 4,
    KEY_SOURCE = 6,
    KEY_POWER_ON = 7,
    KEY_POWER_OFF = 8,
    KEY_AMFM = 10,
    KEY_VOLUME_DOWN = 12,
    KEY_VOLUME_UP = 13,
    KEY_POWER = 14,
    KEY_MMS1 = 35,
    KEY_MENU = 42,
    KEY_ROTARY_ENTER = 54,
    KEY_AMS1 = 55,
    KEY_SHOWCAMERA = 61,
    KEY_RETURN = 66,
    KEY_SHOWVERSION = 67,
    KEY_ROTARY_NEXT = 80,
    KEY_ROTARY_PRE = 81,
    KEY_FAVORITIES = 125,
    KEY_PLAYPAUSE_LONGPRESS = 130,
    KEY_PRE_LONGPRESS = 131,
    KEY_NEXT_LONGPRESS = 132,
    KEY_REQUESTSHOWMENU = 255,
    KEY_RELEASE = 0xffff,
    KEY_REMOTE_POWER_OFF = 0x10008,
    KEY_INFOBAR_SWITCH_SPEAKER = 0x10009,
    KEY_UNKNOWN = 0x1000a
};

/** Where a key comes from. Others are the microcontroller's own numbers. */
enum KeyOrigin : juce::int32 {
    originFrontPanel = 0,
    originWiredRemote = 1, ///< and the factory test
    originRelease = 255    ///< the last key was let go
};

struct NamedKey
{
    juce::int32 value;
    const char* name;
};
/** All of them. */
std::span<const NamedKey> allKeys();
/** "KEY_MENU", or "" for a value that is no key. */
const char* keyName(juce::int32 key);

} // namespace EngineApi
