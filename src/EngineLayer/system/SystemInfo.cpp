#include "EngineLayer/system/SystemInfo.h"

#include "platform/channel/Ipc.h"
#include "platform/screen/Window.h"
#include "platform/settings/SysInfo.h"

namespace EngineLayer
{

namespace
{

constexpr const char* broadcastName = "com.corvane.SystemInfo";
constexpr juce::int32 windowMessage = 0x52a;

} // namespace

SystemInfo::~SystemInfo()
{
    Platform::VX_ReleaseSysInfo();
}

void SystemInfo::set(int index, juce::int32 value)
{
    Platform::VX_SetSysInfo(index, value);
    const auto bundle = Platform::Bundle::obtain();
    bundle->putInt("index", index);
    bundle->putInt("value", value);
    Platform::IPCMsg::MessageHelper::sendBroadcast(broadcastName, bundle);
    Platform::postWindowMessage(Platform::allWindows, windowMessage, index, value);
}

juce::int32 SystemInfo::get(int index) const
{
    return Platform::VX_GetSysInfo(index);
}

} // namespace EngineLayer
