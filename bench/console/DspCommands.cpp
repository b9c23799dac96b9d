// The audio DSP on the console.
#include "bench/console/Console.h"
#include "bench/dsp/DspModel.h"
#include "bench/dsp/DspPlayer.h"
#include "bench/dsp/DspPlot.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <ostream>
#include <sstream>

namespace Bench
{

namespace
{

constexpr int mostTransfers = 10'000;

std::string fixed(double value, int decimals)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(decimals) << value;
    return text.str();
}

/** The value of the parameter with this name. */
std::string valueOf(const DspMemory& memory, const std::string& name)
{
    const auto parameters = dspParameters();
    const auto found = std::ranges::find(parameters, name, &DspParameter::name);
    return found != parameters.end() ? valueText(memory, *found) : "";
}

/** "left -6.0 dB, right 0.0 dB", or one value when both are the same. */
std::string pairText(const DspMemory& memory, const std::string& name)
{
    const auto left = valueOf(memory, name + " left");
    const auto right = valueOf(memory, name + " right");
    return left == right ? left : "left " + left + ", right " + right;
}

/** "tuner", or each path with its own when they differ. */
template <typename Text>
std::string eachPath(const Text& text)
{
    std::string all;
    bool same = true;
    for (std::size_t path = 0; path < dspPathCount; ++path)
    {
        same = same && text(path) == text(0);
        all += (path > 0 ? ", " : "") + std::string(dspPaths[path].name) + " " + text(path);
    }
    return same ? text(0) : all;
}

std::string cell(const std::string& text)
{
    constexpr std::size_t width = 7;
    return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
}

} // namespace

Outcome Console::dsp(const Words& words)
{
    const auto what = words.size() > 1 ? words[1] : std::string("state");
    if (what == "state" && words.size() <= 2)
        return dspState();
    if (what == "fail" && words.size() >= 3)
        return dspFault(words);
    if (what == "play" && words.size() >= 4)
        return dspPlay(words);
    if (what != "plot" || words.size() > 3)
        return failed("dsp state | plot [FILE.png] | play IN.wav OUT.wav [OUTPUT] | fail ...");
    const auto file = words.size() == 3 ? words[2] : unit.folder() + "/dsp.png";
    if (auto error = plotDsp(unit.dsp->memory(), unit.resources() + "/fonts", file); !error.empty())
        return failed(error);
    output << style.dim("  Drawn: " + file) << "\n";
    return {};
}

Outcome Console::dspState()
{
    const auto state = unit.dsp->state();
    const auto& memory = state.memory;
    const auto& counters = state.counters;
    const auto value = [&](const char* name) { return valueOf(memory, name); };

    output << style.bold("Audio DSP") << "\n";
    row("chip", isRunning(memory) ? style.good("runs") : style.warning(state.awake ? "awake, does not run" : "asleep"));
    std::string images;
    for (const auto& image : state.images)
        images +=
            (images.empty() ? "" : ", ") + std::string(image.name) + style.dim(" " + std::to_string(image.size) + " B");
    row("images", images.empty() ? "none" : images);
    row("bus", std::to_string(counters.blocks) + " blocks, " + std::to_string(counters.bytes) + " bytes, " +
                   std::to_string(counters.verified) + " verified, " + std::to_string(counters.crcReads) +
                   " crc reads, " + std::to_string(counters.malformed) + " malformed, " +
                   std::to_string(counters.asleep) + " asleep, " + std::to_string(state.refused) + " refused");
    if (!state.faults.empty())
        row("faults", style.warning(state.faults));

    output << style.bold("Sound") << "\n";
    row("input", eachPath([&](std::size_t path) { return inputText(memory, path); }));
    row("muted", eachPath([&](std::size_t path) { return std::string(isMuted(memory, path) ? "yes" : "no"); }));
    row("source level", "speakers " + pairText(memory, "speaker source") + ", line " + pairText(memory, "line source") +
                            ", zones " + pairText(memory, "zone source"));
    row("volume", "speakers " + value("speaker volume") + ", line " + value("line volume"));
    for (const auto* name : { "front", "rear", "line front", "line rear" })
        row(name, pairText(memory, name));
    row("output A", value("output A") + ", balance " + pairText(memory, "output A") + ", level " +
                        value("output A level") + ", crossover " + value("output A crossover"));
    row("output B", value("output B") + ", balance " + pairText(memory, "output B"));
    row("subwoofer", "level " + value("subwoofer level") + ", crossover " + value("subwoofer crossover"));
    row("crossover", "speakers " + value("speaker crossover") + ", line " + value("line crossover") + ", zones " +
                         value("zone crossover"));

    output << style.bold("Equalisers") << style.dim("  gain of each band in dB") << "\n";
    std::string header;
    for (const auto& band : dspBands)
        header += cell(band.hz < 1000 ? std::to_string(band.hz) : fixed(band.hz / 1000.0, band.hz % 1000 != 0) + "k");
    row("Hz", style.dim(header));
    for (std::size_t index = 0; index < dspGroupCount; ++index)
    {
        const auto group = groupOf(memory, index);
        std::string gains;
        for (std::size_t band = 0; band < dspBandCount; ++band)
        {
            const auto gain = group.bandDb(band);
            const auto text = cell(std::isfinite(gain) ? fixed(std::abs(gain) < 0.05 ? 0.0 : gain, 1) : "-");
            gains += std::isfinite(gain) && std::abs(gain) < 0.05 ? style.dim(text) : text;
        }
        row(std::to_string(index + 1), gains + (group.inPath ? "" : style.warning("  out of the path")));
    }
    return {};
}

Outcome Console::dspPlay(const Words& words)
{
    std::string selection;
    for (auto word = words.begin() + 4; word != words.end(); ++word)
        selection += (selection.empty() ? "" : " ") + *word;
    const auto played = playFile(unit.dsp->memory(), words[2], words[3], selection);
    if (!played.error.empty())
        return failed(played.error);
    row("played", fixed(played.seconds, 1) + " s into " + words[3]);
    int channel = 0;
    for (const auto& peak : played.peaks)
        row("channel " + std::to_string(++channel),
            peak.output +
                style.dim(peak.level > 0 ? "  peak " + fixed(decibels(peak.level), 1) + " dBFS" : "  silent"));
    if (played.clipped > 0)
        row("clipped", style.warning(std::to_string(played.clipped) + " samples"));
    return {};
}

Outcome Console::dspFault(const Words& words)
{
    const auto& what = words[2];
    auto& device = unit.dsp;
    if (words.size() == 3 && (what == "open" || what == "well"))
    {
        const auto error = what == "open" ? device->refuseOpen(true) : device->clearFaults();
        return error.empty() ? Outcome {} : failed(error);
    }
    const auto count = words.size() == 4 ? parseNumber(words[3], 1, mostTransfers) : std::optional(1);
    if (words.size() == 3 && what == "configure")
        device->failConfigure(true);
    else if (words.size() == 3 && what == "gone")
        device->setGone(true);
    else if (words.size() <= 4 && what == "transfer" && count)
        device->failTransfers(*count);
    else if (what == "crc" && (words.size() == 3 || (words.size() == 4 && words[3] == "once")))
        device->answerCrc(Dsp::Crc::wrongOnce);
    else if (what == "crc" && words.size() == 4 && words[3] == "always")
        device->answerCrc(Dsp::Crc::wrongAlways);
    else if (words.size() == 4 && what == "slow" && parseDuration(words[3]))
        device->slowBy(*parseDuration(words[3]));
    else
        return failed("dsp fail open | configure | transfer [N] | crc [once|always] | slow TIME | gone | well");
    return {};
}

} // namespace Bench
