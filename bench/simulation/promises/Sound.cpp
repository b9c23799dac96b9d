// What the chip has in its memory is what volumes, settings and source say. The levels are those of the unit's manual, not
// the engine's tables.
#include "EngineApi/Pages.h"
#include "EngineApi/Provided.h"
#include "EngineApi/Settings.h"
#include "bench/dsp/DspModel.h"
#include "bench/simulation/Promises.h"
#include "bench/simulation/promises/Kept.h"
#include "dsp/AudioChannel.h"
#include "dsp/AudioServices.h"
#include "dsp/DSPSettingHelperImpl.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SysInfo.h"
#include "platform/settings/SysInfoItems.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace Simulation
{

namespace
{

using EngineApi::getSettingInt;

constexpr int silent = -144; ///< dB
constexpr int highestLift = 12;
constexpr double oneStep = 1.0 / (1 << 21); ///< of a word, as a gain
constexpr int userCurve = 4;

int volumeOf(int zone)
{
    return Dsp::DSPSettingHelperImpl::getInstance()->getVolume(zone == 2);
}

bool isMuted()
{
    return EngineApi::Provided<Dsp::ChipManager>::get()->getACService().isMute();
}

bool isAlerting()
{
    return Platform::VX_GetSysInfo(Platform::sysInfoLowBattery) != 0;
}

int audioChannel()
{
    return EngineApi::getAudioChannel(EngineApi::getLastNormalSource());
}

/** Steps of 2 dB from -52 dB up to `coarseSteps`, then of 1 dB. */
int levelOf(int step, int coarseSteps)
{
    return step == 0 ? silent : -54 + std::min(step, coarseSteps) + step;
}

// In dB, of a volume step.

double speakerLevel(int step)
{
    return levelOf(step, 10);
}

double lineLevel(int step)
{
    return levelOf(step, 8);
}

double levelOfA(int step)
{
    return speakerLevel(step) + 2.5;
}

double levelOfB(int step)
{
    return step == 0 ? silent : std::min(speakerLevel(step) + 5, highestLift * 1.0);
}

double gainOf(double decibels)
{
    return std::pow(10.0, decibels / 20);
}

const char* inputOf(int channel)
{
    switch (channel)
    {
    case Dsp::eAudioFM:
    case Dsp::eAudioAM:
    case Dsp::eAudioWB:
    case Dsp::eAudioDAB:
        return "tuner";
    case Dsp::eAudioDisc:
    case Dsp::eAudioXM:
        return "disc";
    case Dsp::eAudioAux1:
    case Dsp::eAudioAux2:
    case Dsp::eAudioDVBT:
        return "aux";
    case Dsp::eAudioWince:
    case Dsp::eAudioBTAudio:
    case Dsp::eAudioPandora:
        return "system audio";
    case Dsp::eAudioHDMI:
        return "hdmi";
    default:
        return "nothing";
    }
}

int sourceLevelOf(int channel)
{
    switch (channel)
    {
    case Dsp::eAudioWince:
        return 1;
    case Dsp::eAudioAux2:
        return 2 * std::clamp(getSettingInt(Platform::sourceLevelSetting), 0, 6) - 6 - 5;
    case Dsp::eAudioXM:
    case Dsp::eAudioBTAudio:
        return -10;
    case Dsp::eAudioFM:
    case Dsp::eAudioWB:
        return -7;
    case Dsp::eAudioAM:
        return -8;
    case Dsp::eAudioPandora:
        return -5;
    default:
        return 0;
    }
}

/** How much quieter one side is when a control stands so many steps towards the other. */
int fade(int stepsAway)
{
    constexpr std::array levels { 0, -10, -15, -20, -25, -30, silent };
    return levels[static_cast<std::size_t>(std::clamp(stepsAway, 0, 6))];
}

struct Fades
{
    int fader = getSettingInt(Platform::faderSetting) - 6, balance = getSettingInt(Platform::balanceSetting) - 6;
    int left = fade(balance), right = fade(-balance), front = fade(-fader), rear = fade(fader);
};

int subwooferDb()
{
    constexpr std::array levels { silent, -21, -19, -17, -15, -13, -11, -9, -7, -5, -3, -2, -1, 0 };
    return levels[static_cast<std::size_t>(std::clamp(getSettingInt(Platform::subwooferLevelSetting), 0, 13))];
}

bool isSubwooferOn()
{
    return getSettingInt(Platform::subwooferSetting) != 0;
}

/** Zones of the outputs A and B. */
std::pair<int, int> zonesOfOutputs()
{
    if (getSettingInt(Platform::zone2OnSetting) == 0)
        return { 1, 1 };
    if (isSubwooferOn())
        return { 1, 2 };
    constexpr std::pair<int, int> byMode[] { { 2, 1 }, { 1, 2 }, { 2, 2 } };
    return byMode[std::clamp(getSettingInt(Platform::zone2OutputSetting), 0, 2)];
}

/** In dB, by the names that the bench has for the words. */
std::map<std::string, double> demandedGains()
{
    const Fades fades;
    const int source = sourceLevelOf(audioChannel());
    const auto [zoneOfA, zoneOfB] = zonesOfOutputs();
    const bool subwoofer = isSubwooferOn();
    std::map<std::string, double> gains {
        { "speaker volume", speakerLevel(volumeOf(1)) },
        { "line volume", lineLevel(volumeOf(1)) },
        { "output A", levelOfA(volumeOf(zoneOfA)) },
        { "output B", levelOfB(volumeOf(zoneOfB)) },
        { "subwoofer level", subwooferDb() == silent ? silent : std::min(subwooferDb() + 3, highestLift) },
        { "output A level", subwoofer ? subwooferDb() : 0 },
        { "output A left", subwoofer ? 4 : fades.left },
        { "output A right", subwoofer ? silent : fades.right },
        { "output B left", fades.left },
        { "output B right", fades.right },
    };
    for (const std::string side : { "left", "right" })
    {
        gains["speaker source " + side] = gains["zone source " + side] = source;
        gains["line source " + side] = std::min(source + 5, highestLift);
        for (const std::string end : { "front", "rear" })
        {
            const int level = (side == "left" ? fades.left : fades.right) + (end == "front" ? fades.front : fades.rear);
            gains[end + " " + side] = gains["line " + end + " " + side] = std::max(level, silent);
        }
    }
    return gains;
}

std::map<std::string, std::string> demandedTexts()
{
    constexpr std::array highPasses { "off", "high-pass 50 Hz", "high-pass 80 Hz", "high-pass 120 Hz" };
    const auto* highPass =
        highPasses[static_cast<std::size_t>(std::clamp(getSettingInt(Platform::highPassSetting), 0, 3))];
    const bool subwoofer = isSubwooferOn();
    std::map<std::string, std::string> texts {
        { "speaker crossover", highPass },
        { "line crossover", highPass },
        { "zone crossover", subwoofer ? "off" : highPass },
        { "output A crossover", subwoofer ? "low-pass 100 Hz" : "off" },
        { "subwoofer crossover", "off" },
    };
    for (const auto* path : { "speaker", "line", "zone" })
        texts[path + std::string(" mute")] = isMuted() ? "on" : "off";
    for (const auto* group : { "1", "2", "3" })
        texts[std::string("equaliser ") + group] =
            getSettingInt(Platform::filtersSetting) != 0 ? "in the path" : "out of the path";
    return texts;
}

/** What the user has set, in dB by the bands' frequencies, with the players' effect. Others are flat. */
std::map<int, int> demandedCurve(bool hasEffect)
{
    constexpr std::array frequencies { 50, 125, 250, 500, 1000, 3000, 8000 };
    constexpr std::array<std::array<int, 7>, 3> presets {
        { { 4, -4, 0, 4, 0, 2, 2 }, { 0, -2, 4, 4, 2, 0, 2 }, { -2, -2, 2, 1, 2, 6, 0 } }
    };
    constexpr std::array effect { 1, 0, 1, 0, -1, -2, 2 };
    const auto stored = [](int setting) { return std::clamp(getSettingInt(setting), 0, 12) - 6; };
    const int preset = getSettingInt(Platform::presetSetting);
    std::map<int, int> curve;
    for (std::size_t band = 0; band < frequencies.size(); ++band)
    {
        int gain = 0;
        if (preset == userCurve)
            gain = stored(Platform::firstBandSetting + static_cast<int>(band));
        else if (preset != 0)
            gain = presets.at(static_cast<std::size_t>(preset - 1))[band];
        curve[frequencies[band]] = gain + (hasEffect ? effect[band] : 0);
    }
    if (preset == 0)
        for (const auto& [hz, setting] : { std::pair { 125, Platform::bassSetting },
                                           { 500, Platform::middleSetting },
                                           { 3000, Platform::trebleSetting } })
            curve[hz] += stored(setting);
    return curve;
}

void checkInputs(const Bench::DspMemory& memory, Kept& words)
{
    const std::string wanted = isAlerting() ? "system audio" : inputOf(audioChannel());
    for (std::size_t path = 0; path < Bench::dspPathCount; ++path)
    {
        const auto has = Bench::inputText(memory, path);
        words.check(std::string("input of ") + Bench::dspPaths[path].name, has == wanted, has, wanted);
    }
}

/** By whether the effect is heard. It comes with its setting or the player, and goes with the player. */
std::vector<std::map<int, int>> possibleCurves()
{
    const bool isSet = getSettingInt(Platform::dmeSetting) != 0;
    const bool plays = EngineApi::getNormalSource() == Pubhead::mbUSBAudio;
    // A band of the user's curve is without it until the next change.
    const bool isEither = isSet && (!plays || getSettingInt(Platform::presetSetting) == userCurve);
    if (isEither)
        return { demandedCurve(true), demandedCurve(false) };
    return { demandedCurve(isSet) };
}

void checkBands(const Bench::DspMemory& memory, Kept& words)
{
    constexpr double tolerance = 0.05;
    constexpr std::size_t third = 2;
    const auto curves = possibleCurves();
    for (std::size_t number = 0; number < Bench::dspGroupCount; ++number)
    {
        const bool flat = number == third && isSubwooferOn();
        const auto group = Bench::groupOf(memory, number);
        for (std::size_t band = 0; band < Bench::dspBandCount; ++band)
        {
            const int hz = Bench::dspBands[band].hz;
            // A band of the user's curve reaches the third also when the subwoofer keeps it flat otherwise.
            if (flat && curves.front().contains(hz))
                continue;
            // What the programs play is lifted at the bottom and lowered at the top.
            const bool isLifted = number != third && audioChannel() == Dsp::eAudioWince;
            const int lift = !isLifted ? 0 : hz == 20 ? 1 : hz == 10000 ? -1 : 0;
            const auto demandedOf = [&](const std::map<int, int>& curve)
            { return lift + (flat || !curve.contains(hz) ? 0 : curve.at(hz)); };
            const auto has = group.bandDb(band);
            const auto agreeing = std::ranges::count_if(curves, [&](const auto& curve)
                                                        { return std::abs(has - demandedOf(curve)) < tolerance; });
            // What one of two allows may be what a failure has left, so nothing is known of it.
            if (agreeing == 1 && curves.size() == 2)
                continue;
            words.check("equaliser " + std::to_string(number + 1) + " " + std::to_string(hz) + " Hz", agreeing > 0,
                        std::to_string(has) + " dB", std::to_string(demandedOf(curves.front())) + " dB");
        }
    }
}

std::string chipHasWhatIsSet(SimulatedUnit& unit, const Since&)
{
    static Kept words;
    const auto state = unit.dsp.state();
    words.begin(state.refused);
    words.check("the chip", Bench::isRunning(state.memory), "at rest", "running");
    if (!Bench::isRunning(state.memory)) // its start has failed, and nothing else reaches it
        return words.wrong();
    checkInputs(state.memory, words);
    checkBands(state.memory, words);
    const auto gains = demandedGains();
    const auto texts = demandedTexts();
    for (const auto& parameter : Bench::dspParameters())
    {
        const auto has = Bench::valueText(state.memory, parameter);
        if (const auto gain = gains.find(parameter.name); gain != gains.end())
        {
            const auto demanded = gainOf(gain->second);
            const auto word = state.memory.word(parameter.bank, parameter.address);
            words.check(parameter.name, std::abs(Bench::gainOfWord(word) - demanded) <= oneStep, has,
                        Bench::gainText(demanded));
        }
        else if (const auto text = texts.find(parameter.name); text != texts.end())
            words.check(parameter.name, has == text->second, has, text->second);
        else if (parameter.kind != Bench::DspKind::band)
            return "nobody says what " + parameter.name + " is to be";
    }
    return words.wrong();
}

/** The words that follow a volume. */
struct VolumeWord
{
    const char* name;
    std::size_t bank, address;
    double (*level)(int step);
};
constexpr VolumeWord volumeWords[] { { "speaker volume", 1, 0x005, speakerLevel },
                                     { "line volume", 0, 0x027, lineLevel },
                                     { "output A", 1, 0x1B0, levelOfA },
                                     { "output B", 1, 0x18E, levelOfB } };

/**
    Whatever the order of the writes: a word may have what its zone is to have, or was to have since the chip last had all
    that was wanted. An output that changes its zone may have that of the louder one.
*/
class Loudness
{
public:
    void watch(SimulatedUnit& unit)
    {
        // One step may handle two commands.
        unit.lookout.messages.add([this](Kernel::SystemTask&, const Kernel::SystemMessage&) { allowWanted(); });
    }

    /** After every step. */
    std::string look(const SimulatedUnit& unit)
    {
        const bool isBusy = unit.dsp.due().has_value();
        // Between two requests of one write no time passes.
        if (std::exchange(wasBusy, isBusy) || isBusy)
            lastBusy = Clock::now();
        const auto& memory = unit.dsp.memory();
        if (!Bench::isRunning(memory))
            return {};
        Seen seen { {}, volumeOf(1), volumeOf(2), Clock::now() > lastBusy };
        for (std::size_t i = 0; i < seen.words.size(); ++i)
            seen.words[i] = memory.word(volumeWords[i].bank, volumeWords[i].address);
        // Most steps change nothing of it.
        return std::exchange(last, seen) == seen ? std::string() : compare(seen);
    }

private:
    struct Seen
    {
        std::array<std::uint32_t, std::size(volumeWords)> words;
        int main, second;
        bool isIdle;
        bool operator==(const Seen&) const = default;
    };

    Seen last {};
    bool wasReached = false; ///< at first the chip has what its images say
    int mostOfMain = 0, most = 0;
    // On a slow bus a write that has begun may end after another wish.
    Clock::time_point lastBusy;
    bool wasBusy = false;

    void allowWanted()
    {
        mostOfMain = std::max(mostOfMain, volumeOf(1));
        most = std::max({ most, mostOfMain, volumeOf(2) });
    }

    std::string compare(const Seen& seen)
    {
        allowWanted();
        const auto [zoneOfA, zoneOfB] = zonesOfOutputs();
        const std::array wanted { seen.main, seen.main, volumeOf(zoneOfA), volumeOf(zoneOfB) };
        const std::array allowed { mostOfMain, mostOfMain, most, most };
        bool isReached = seen.isIdle;
        for (std::size_t i = 0; i < wanted.size(); ++i)
        {
            const auto& word = volumeWords[i];
            const auto gain = Bench::gainOfWord(seen.words[i]);
            const auto highest = gainOf(word.level(allowed[i]));
            if (wasReached && gain > highest + oneStep)
                return std::string(word.name) + " has " + Bench::gainText(gain) + ", at most " +
                       Bench::gainText(highest) + " was wanted";
            isReached = isReached && std::abs(gain - gainOf(word.level(wanted[i]))) <= oneStep;
        }
        if (isReached)
        {
            wasReached = true;
            mostOfMain = seen.main;
            most = std::max(seen.main, seen.second);
        }
        return {};
    }
};

std::string neverTooLoud(SimulatedUnit& unit, const Since&)
{
    return only<Loudness>().look(unit);
}

constexpr Promise all[] {
    { "the unit is never louder than was wanted", neverTooLoud, false, watchWith<Loudness> },
    { "the chip has what is set", chipHasWhatIsSet, true },
};

} // namespace

std::span<const Promise> soundPromises()
{
    return all;
}

} // namespace Simulation
