// The audio DSP.
#include "bench/console/Verb.h"
#include "bench/dsp/DspModel.h"
#include "bench/dsp/DspPlayer.h"
#include "bench/dsp/DspPlot.h"
#include "ctl/Columns.h"

#include <algorithm>
#include <cmath>
#include <ostream>

namespace Bench
{

using Ctl::fixed;
using Ctl::padded;
using Ctl::widthOf;

namespace
{

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

/** Right-aligned. */
std::string cell(const std::string& text)
{
    constexpr int width = 7;
    return padded("", width - widthOf(text)) + text;
}

Outcome showState(Console& console, const Arguments&)
{
    const auto& style = console.style;
    auto& output = console.output;
    const auto state = console.unit.dsp->state();
    const auto& memory = state.memory;
    const auto& counters = state.counters;
    const auto value = [&](const char* name) { return valueOf(memory, name); };

    showReport(console, "dsp");
    output << style.bold("Its memory") << "\n";
    console.row("chip",
                isRunning(memory) ? style.good("runs") : style.warning(state.awake ? "awake, does not run" : "asleep"));
    std::string images;
    for (const auto& image : state.images)
        images +=
            (images.empty() ? "" : ", ") + std::string(image.name) + style.dim(" " + std::to_string(image.size) + " B");
    console.row("images", images.empty() ? "none" : images);
    console.row("bus", std::to_string(counters.blocks) + " blocks, " + std::to_string(counters.bytes) + " bytes, " +
                           std::to_string(counters.verified) + " verified, " + std::to_string(counters.crcReads) +
                           " crc reads, " + std::to_string(counters.malformed) + " malformed, " +
                           std::to_string(counters.asleep) + " asleep, " + std::to_string(state.refused) + " refused");
    for (const auto& fault : state.faults)
        console.row("fault", style.warning(fault));

    output << style.bold("Sound") << "\n";
    console.row("input", eachPath([&](std::size_t path) { return inputText(memory, path); }));
    console.row("muted", eachPath([&](std::size_t path) { return std::string(isMuted(memory, path) ? "yes" : "no"); }));
    console.row("source level", "speakers " + pairText(memory, "speaker source") + ", line " +
                                    pairText(memory, "line source") + ", zones " + pairText(memory, "zone source"));
    console.row("volume", "speakers " + value("speaker volume") + ", line " + value("line volume"));
    for (const auto* name : { "front", "rear", "line front", "line rear" })
        console.row(name, pairText(memory, name));
    console.row("output A", value("output A") + ", balance " + pairText(memory, "output A") + ", level " +
                                value("output A level") + ", crossover " + value("output A crossover"));
    console.row("output B", value("output B") + ", balance " + pairText(memory, "output B"));
    console.row("subwoofer", "level " + value("subwoofer level") + ", crossover " + value("subwoofer crossover"));
    console.row("crossover", "speakers " + value("speaker crossover") + ", line " + value("line crossover") +
                                 ", zones " + value("zone crossover"));

    output << style.bold("Equalisers") << style.dim("  gain of each band in dB") << "\n";
    std::string header;
    for (const auto& band : dspBands)
        header += cell(band.hz < 1000 ? std::to_string(band.hz) : fixed(band.hz / 1000.0, band.hz % 1000 != 0) + "k");
    console.row("Hz", style.dim(header));
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
        console.row(std::to_string(index + 1), gains + (group.inPath ? "" : style.warning("  out of the path")));
    }
    return {};
}

Outcome play(Console& console, const Arguments& given)
{
    const auto played = playFile(console.unit.dsp->memory(), given[0], given[1], given.text(2));
    if (!played.error.empty())
        return failed(played.error);
    console.row("played", fixed(played.seconds, 1) + " s into " + given[1]);
    int channel = 0;
    for (const auto& peak : played.peaks)
        console.row("channel " + std::to_string(++channel),
                    peak.output + console.style.dim(peak.level > 0
                                                        ? "  peak " + fixed(decibels(peak.level), 1) + " dBFS"
                                                        : "  silent"));
    if (played.clipped > 0)
        console.row("clipped", console.style.warning(std::to_string(played.clipped) + " samples"));
    return {};
}

Outcome plot(Console& console, const Arguments& given)
{
    auto& unit = console.unit;
    const auto file = given.has(0) ? given[0] : unit.plotFile();
    if (auto error = plotDsp(unit.dsp->memory(), unit.resources() + "/fonts", file); !error.empty())
        return failed(error);
    console.output << console.style.dim("  Drawn: " + file) << "\n";
    return {};
}

} // namespace

Verbs dspVerbs()
{
    return {
        { "dsp [state]", "What the engine says of it, and what the words in its memory mean.", showState },
        { "dsp plot [FILE]", "What they do to sound, as a picture (PNG).", plot },
        { "dsp play FILE RESULT [OUTPUT...]",
          "Lets a WAV file through: one channel for each output, or those whose name begins with OUTPUT.", play },
        { "dsp fail open", "Its bus cannot be opened.", on(&Unit::dsp, [](Dsp& dsp) { return dsp.refuseOpen(true); }) },
        { "dsp fail configure", "It cannot be configured.", on(&Unit::dsp, [](Dsp& dsp) { dsp.failConfigure(true); }) },
        { "dsp fail transfer [COUNT]", "The next transfer fails, or so many.",
          on(&Unit::dsp, [](Dsp& dsp, auto& given) { dsp.failTransfers(given.number(0, 1)); }) },
        { "dsp fail crc [once|always]", "The sum that it answers is wrong.",
          on(&Unit::dsp, [](Dsp& dsp, auto& given)
             { dsp.answerCrc(given[0] == "always" ? Dsp::Crc::wrongAlways : Dsp::Crc::wrongOnce); }) },
        { "dsp fail slow TIME", "Each transfer takes so much longer.",
          on(&Unit::dsp, [](Dsp& dsp, auto& given) { dsp.slowBy(given.time(0)); }) },
        { "dsp fail gone", "It does not answer at all.", on(&Unit::dsp, [](Dsp& dsp) { dsp.setGone(true); }) },
        { "dsp fail well", "Ends all its faults.", on(&Unit::dsp, &Dsp::clearFaults) },
    };
}

} // namespace Bench
