#include "EngineApi/Bars.h"
#include "EngineApi/Provided.h"
#include "ProjectDepend/BarWindow.h"
#include "bench/simulation/Promises.h"
#include "bench/simulation/promises/Kept.h"
#include "doubles/SoundDouble.h"
#include "platform/settings/SysInfo.h"
#include "platform/settings/SysInfoItems.h"

namespace Simulation
{

namespace
{

using EngineApi::Provided;

/** Empty when the bar is on the screen, as it says, exactly if it is to be. */
std::string barIs(EngineApi::BarMessages* messages, const char* name, bool wanted)
{
    const auto* bar = dynamic_cast<const Bar::BarWindow*>(messages);
    if (bar == nullptr)
        return name + std::string(" is no window");
    if (bar->isBarShown() == wanted && bar->isVisible() == wanted)
        return {};
    return name + std::string(wanted ? " is hidden" : " is still there") +
           (bar->isBarShown() == bar->isVisible() ? "" : ", and does not know it");
}

const juce::Component* findControl(const juce::Component& root, const juce::String& name)
{
    for (const auto* child : root.getChildren())
    {
        if (child->getName() == name)
            return child;
        if (const auto* found = findControl(*child, name))
            return found;
    }
    return nullptr;
}

/** A volume goes by itself; what tells of the mute stays with it. */
std::string volumeBarIsRight(SimulatedUnit& unit, const Since&)
{
    auto* bar = Provided<EngineApi::VolumeBar>::get();
    const bool muted = unit.remoteTexts->isCovered();
    if (const auto wrong = barIs(bar, "the volume bar", muted); !wrong.empty() || !muted)
        return wrong;
    for (const auto* name : { "Img_MainVolume", "Btn_Zone2", "Btn_Mute" })
    {
        const auto* control = findControl(*dynamic_cast<Bar::BarWindow*>(bar), name);
        if (control == nullptr)
            return std::string("the volume bar has no ") + name;
        if (control->isVisible() != (name == std::string_view("Btn_Mute")))
            return std::string(name) + (control->isVisible() ? " is still there" : " is hidden");
    }
    return {};
}

std::string favouritesGo(SimulatedUnit&, const Since&)
{
    return barIs(Provided<EngineApi::FavoriteBar>::get(), "the favourites", false);
}

/** With its sound, for a battery that is low, as far as the unit could be told. */
std::string alertIsRight(SimulatedUnit& unit, const Since&)
{
    constexpr double lowest = 10.5;
    static Kept reason;
    const bool alerts = Platform::VX_GetSysInfo(Platform::sysInfoLowBattery) != 0;
    reason.begin(unit.mcu.state().givenUp);
    reason.check("the alert", !alerts || unit.supply.state().volts < lowest, "on", "off");
    if (!reason.wrong().empty())
        return reason.wrong();
    if (Platform::doubles::SoundDouble::getPlaying().isNotEmpty() != alerts)
        return std::string("the alert is ") + (alerts ? "silent" : "still heard");
    return barIs(Provided<EngineApi::LowBatteryBar>::get(), "the alert", alerts);
}

constexpr Promise all[] {
    { "the volume bar is there for the mute alone", volumeBarIsRight, true },
    { "the favourites go by themselves", favouritesGo, true },
    { "an alert is there for a low battery alone", alertIsRight, true },
};

} // namespace

std::span<const Promise> barPromises()
{
    return all;
}

} // namespace Simulation
