// The display on the boat's network knows of the zones what the engine has.
#include "EngineApi/Settings.h"
#include "bench/simulation/Promises.h"
#include "bench/simulation/promises/Kept.h"
#include "dsp/DSPSettingHelperImpl.h"
#include "platform/settings/SetupIndex.h"

namespace Simulation
{

namespace
{

using Bench::NetworkDisplay;
using EngineApi::getSettingInt;

constexpr int zoneCount = 2;
constexpr int percentPerStep = 2;

/** In the order of `Bench::toneFields`. */
std::array<int, Bench::toneFields.size()> toneOfUnit()
{
    constexpr int middle = 6;
    return { getSettingInt(Platform::faderSetting) - middle,  getSettingInt(Platform::balanceSetting) - middle,
             getSettingInt(Platform::subwooferLevelSetting),  getSettingInt(Platform::trebleSetting) - middle,
             getSettingInt(Platform::middleSetting) - middle, getSettingInt(Platform::bassSetting) - middle };
}

std::optional<int> presetOfUnit()
{
    constexpr std::array codes { 0, 1, 4, 3, 10 };
    const auto preset = static_cast<std::size_t>(getSettingInt(Platform::presetSetting));
    return preset < codes.size() ? std::optional(codes[preset]) : std::nullopt;
}

void checkTone(const std::string& name, const Bench::ZoneTone& told, Kept& view)
{
    const auto tone = toneOfUnit();
    for (std::size_t field = 0; field < tone.size(); ++field)
        view.check(name + Bench::toneFields[field].name, told.values[field] == tone[field],
                   std::to_string(told.values[field]), std::to_string(tone[field]));
    if (const auto preset = presetOfUnit())
        view.check(name + "preset", told.preset == preset, std::to_string(told.preset.value_or(-1)),
                   std::to_string(*preset));
}

/** Frames of the engine that the microcontroller never acknowledged. */
unsigned framesGivenUp(const SimulatedUnit& unit, const Since& since)
{
    static unsigned total = 0;
    total += static_cast<unsigned>(unit.journal
                                       .find(since.begin, Bench::Journal::capacity,
                                             [](const Bench::Event& event)
                                             {
                                                 return event.stream == "log EngineLayer/HostSessionManager" &&
                                                        event.text.find("Send Error ID") != std::string::npos;
                                             })
                                       .size());
    return total;
}

std::string networkAgrees(SimulatedUnit& unit, const Since& since)
{
    static Kept view;
    const auto lost = framesGivenUp(unit, since);
    view.begin(lost);
    const auto state = unit.networkDisplay.state();
    for (int number = 1; number <= zoneCount; ++number)
    {
        const auto found = state.zones.find(number);
        const auto zone = found == state.zones.end() ? NetworkDisplay::Zone() : found->second;
        const auto name = "zone " + std::to_string(number) + " ";
        const int volume = percentPerStep * Dsp::DSPSettingHelperImpl::getInstance()->getVolume(number == zoneCount);
        // Until a volume changes, nobody has told it.
        if (zone.volume)
            view.check(name + "volume", *zone.volume == volume, std::to_string(*zone.volume), std::to_string(volume));
        if (zone.muted)
            view.check(name + "mute", *zone.muted == unit.remoteTexts->isCovered(), *zone.muted ? "on" : "off",
                       "what the wired remote was told");
        if (!zone.configuration || !zone.parameters)
        {
            if (lost == 0)
                return "nobody has told the configuration of " + name;
            continue;
        }
        checkTone(name + "configuration: ", *zone.configuration, view);
        checkTone(name + "parameters: ", *zone.parameters, view);
    }
    return view.wrong();
}

constexpr Promise all[] {
    { "the boat's network sees the zones as they are", networkAgrees, true },
};

} // namespace

std::span<const Promise> networkPromises()
{
    return all;
}

} // namespace Simulation
