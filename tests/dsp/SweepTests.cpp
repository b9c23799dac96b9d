// The curves that a person chose, as the simulated DSP plays them.
#include "DspFixture.h"
#include "bench/dsp/DspChip.h"
#include "bench/dsp/DspModel.h"
#include "dsp/akm/ak773ChipManager.h"
#include "platform/settings/SetupIndex.h"

#include <array>
#include <cmath>

using namespace Platform;

namespace
{

/** dB of an analogue peaking filter whose frequency axis is bent as every digital filter bends it. */
double analogueDb(double hz, double centre, double gain)
{
    constexpr double rate = 48000;
    constexpr double q = 1.5;
    const auto bent = [](double frequency) { return std::tan(M_PI * frequency / rate); };
    const double w = bent(hz) / bent(centre);
    const double a = std::pow(10, gain / 40);
    const auto squared = [&](double damping) { return (1 - w * w) * (1 - w * w) + w * w * damping * damping; };
    return 10 * std::log10(squared(a / q) / squared(1 / (a * q)));
}

constexpr std::array userFrequencies { 50, 125, 250, 500, 1000, 3000, 8000 };
constexpr std::array<std::array<int, 7>, 5> curves { { { 0, 4, 0, -3, 0, 6, 0 },
                                                       { 4, -4, 0, 4, 0, 2, 2 },
                                                       { 0, -2, 4, 4, 2, 0, 2 },
                                                       { -2, -2, 2, 1, 2, 6, 0 },
                                                       { 6, -6, 5, -5, 4, -4, 3 } } };
constexpr std::array dme { 1, 0, 1, 0, -1, -2, 2 };

class SweepTest : public DspFixture
{
protected:
    void feed()
    {
        for (const auto& block : takeBlocks())
            chip.block(block);
        takeOperations();
    }

    Bench::DspChip chip { [](const char*, const std::string&) {} };
};

} // namespace

TEST_F(SweepTest, EveryPresetSoundsAsChosen)
{
    for (const auto& [setting, gain] :
         { std::pair<int, int> { bassSetting, 4 }, { middleSetting, -3 }, { trebleSetting, 6 } })
        set(setting, gain + 6);
    for (std::size_t band = 0; band < 7; ++band)
        set(static_cast<int>(firstBandSetting + band), curves[4][band] + 6);
    auto& manager = *Dsp::ak773ChipManager::getInstance();
    manager.init(helper());
    for (int preset = 0; preset < 5; ++preset)
        for (const bool dmeOn : { false, true })
            for (const bool subwoofer : { false, true })
            {
                SCOPED_TRACE("preset " + std::to_string(preset) + (dmeOn ? ", DME" : "") +
                             (subwoofer ? ", subwoofer" : ""));
                set(presetSetting, preset);
                set(subwooferSetting, subwoofer ? 1 : 0);
                manager.getEQService().setDmeState(dmeOn);
                manager.getEQService().applyPreset();
                manager.getEQService().updateSubwoofer();
                feed();
                constexpr int points = 30;
                for (int point = 0; point < points; ++point)
                {
                    const double hz = 20 * std::pow(1000.0, point / (points - 1.0));
                    double chosen = 0;
                    for (std::size_t band = 0; band < 7; ++band)
                        chosen += analogueDb(hz, userFrequencies[band],
                                             curves[static_cast<std::size_t>(preset)][band] + (dmeOn ? dme[band] : 0));
                    for (const std::size_t group : { 0u, 1u, 2u })
                        EXPECT_NEAR(Bench::groupOf(chip.memory(), group).gainDb(hz),
                                    group == 2 && subwoofer ? 0 : chosen, 0.1)
                            << "group " << group + 1 << " at " << hz << " Hz";
                }
            }
}
