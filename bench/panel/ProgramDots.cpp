#include "bench/panel/ProgramDots.h"

#include "bench/text/Names.h"
#include "ctl/Fields.h"

#include <algorithm>

namespace BenchPanel
{

namespace
{

/** How the console calls the programs. */
constexpr std::array programWords { "menu", "radio",  "ipod",  "phone", "usb",     "aux",      "pandora",
                                    "eq",   "camera", "setup", "lock",  "standby", "satellite" };

constexpr int dotSize = 10, dotGap = 4;

ButtonLines linesOf(const juce::String& word, const Programs::Program* program)
{
    const auto line = [&](const char* order) { return "program " + word + " " + order; };
    ButtonLines lines { "why not running " + word };
    if (program == nullptr)
        lines.more = { line("start never"), line("start 5s"), line("start well") };
    else
        lines.more = { line("show"),
                       line("crash"),
                       line(program->silent ? "silent off" : "silent"),
                       line(program->slow.count() > 0 ? "slow off" : "slow 800ms"),
                       line(program->hung ? "wake" : "hang"),
                       line("exit") };
    return lines;
}

/** As far as the engine says something of the program. */
juce::String memoryText(const Ctl::Json& programs, const std::string& name)
{
    constexpr double mebibyte = 1024.0 * 1024.0;
    for (const auto& record : programs)
        if (const Ctl::Fields told(record); told["program"] == name)
            if (const auto used = told.number("memoryBytes"))
                return ", " + juce::String(static_cast<double>(*used) / mebibyte, 1) + " MiB";
    return {};
}

} // namespace

ProgramDot::ProgramDot(Desk& deskToUse, const char* wordToUse)
    : QuietButton(deskToUse, wordToUse)
    , word(wordToUse)
    , appType(findApp(wordToUse))
{
    jassert(appType != Pubhead::AppUnknown);
}

void ProgramDot::show(const PanelState& state)
{
    const auto found = state.programs.find(appType);
    const auto* program = found == state.programs.end() ? nullptr : &found->second;
    const juce::String fault = program == nullptr ? "" : program->faultText();
    const auto now = program == nullptr    ? Health::off
                     : program->hung       ? Health::hung
                     : fault.isNotEmpty()  ? Health::faulty
                     : !program->connected ? Health::starting
                                           : Health::well;
    if (std::exchange(health, now) != now)
        repaint();
    setLines(linesOf(word, program));
    setNote(juce::String(Pubhead::appTypeName(appType)) + ": " +
            (now == Health::off        ? "does not run"
             : now == Health::well     ? "runs"
             : now == Health::starting ? "starts"
                                       : fault) +
            memoryText(state.engine->programs, Pubhead::appTypeName(appType)));
}

void ProgramDot::paintWords(juce::Graphics& g)
{
    const auto& colours = Look::of(*this).colours;
    auto area = getLocalBounds().reduced(2, 0);
    const auto dot = area.removeFromLeft(dotSize).withSizeKeepingCentre(dotSize, dotSize).toFloat();
    g.setColour(health == Health::off    ? colours.buttonEdge
                : health == Health::well ? colours.good
                : health == Health::hung ? colours.bad
                                         : colours.warning);
    g.fillEllipse(dot);
    g.setColour(health == Health::off ? colours.dim : colours.ink);
    g.setFont(Look::font(Look::smallSize));
    g.drawText(word, area.withTrimmedLeft(dotGap), juce::Justification::centredLeft, false);
}

ProgramDots::ProgramDots(Desk& deskToUse)
    : juce::Component("Programs")
{
    for (const auto* word : programWords)
        addAndMakeVisible(*dots.emplace_back(std::make_unique<ProgramDot>(deskToUse, word)));
}

void ProgramDots::show(const PanelState& state)
{
    for (auto& dot : dots)
        dot->show(state);
}

void ProgramDots::resized()
{
    const auto font = Look::font(Look::smallSize);
    const auto perRow = (dots.size() + rows - 1) / rows;
    for (std::size_t begin = 0; begin < dots.size(); begin += perRow)
    {
        // Each as wide as its word; what is left over lies between them.
        const auto end = std::min(begin + perRow, dots.size());
        auto row = getLocalBounds().withTop(static_cast<int>(begin / perRow) * rowHeight).withHeight(rowHeight);
        const auto widthOf = [&](std::size_t i)
        { return dotSize + dotGap + 5 + font.getStringWidth(dots[i]->getName()); };
        auto spare = row.getWidth();
        for (auto i = begin; i < end; ++i)
            spare -= widthOf(i);
        for (auto i = begin; i < end; ++i)
        {
            dots[i]->setBounds(row.removeFromLeft(widthOf(i)));
            row.removeFromLeft(spare / static_cast<int>(end - begin - 1));
        }
    }
}

} // namespace BenchPanel
