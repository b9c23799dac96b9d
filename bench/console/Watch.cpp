// The live view: the whole unit at a glance.
#include "bench/console/Watch.h"

#include "bench/console/EventText.h"
#include "bench/dsp/DspModel.h"
#include "ctl/Columns.h"

#include <span>

namespace Bench
{

using Ctl::padded;
using Ctl::widthOf;

using namespace Pubhead;

namespace
{

constexpr int watchWidth = 80;
constexpr int innerWidth = watchWidth - 2;
constexpr int leftWidth = 44;
constexpr int rightWidth = innerWidth - leftWidth - 1;
constexpr int labelWidth = 9;
constexpr int mostPrograms = 12;

/** Exactly this wide: cut with an ellipsis, or filled up. */
std::string fitted(const std::string& text, int width)
{
    return padded(Ctl::shortened(text, width), width);
}

std::string repeated(const char* text, int count)
{
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

/** A cell of a table: its plain text and how it is coloured once it has its width. */
struct Cell
{
    std::string text;
    std::string (Style::*look)(const std::string&) const = nullptr;
};

class Composer
{
public:
    explicit Composer(const Style& styleToUse)
        : style(styleToUse)
    {
    }

    void rule(const char* left, const char* cross, const char* right, const std::string& leftTitle,
              const std::string& rightTitle = {})
    {
        const auto part = [this](const std::string& title, int width)
        {
            const auto heading = title.empty() ? std::string() : " " + title + " ";
            return style.dim("─") + style.bold(heading) + style.dim(repeated("─", width - 1 - widthOf(heading)));
        };
        const bool split = *cross != '\0' || !rightTitle.empty();
        lines.push_back(style.dim(left) + part(leftTitle, split ? leftWidth : innerWidth) +
                        (split ? style.dim(*cross != '\0' ? cross : "─") + part(rightTitle, rightWidth) : "") +
                        style.dim(right));
    }

    void row(const std::string& label, const Cell& left, const Cell& right)
    {
        const auto value = coloured(left, leftWidth - 1 - labelWidth);
        lines.push_back(style.dim("│") + " " + style.dim(fitted(label, labelWidth)) + value + style.dim("│") + " " +
                        coloured(right, rightWidth - 1) + style.dim("│"));
    }

    void wide(const std::vector<std::pair<Cell, int>>& cells)
    {
        std::string text;
        int used = 1;
        for (const auto& [cell, width] : cells)
        {
            text += coloured(cell, width);
            used += width;
        }
        lines.push_back(style.dim("│") + " " + text + std::string(static_cast<std::size_t>(innerWidth - used), ' ') +
                        style.dim("│"));
    }

    /** A line that has the width already. */
    void framed(const std::string& line) { lines.push_back(style.dim("│") + line + style.dim("│")); }

    int count() const { return static_cast<int>(lines.size()); }
    std::vector<std::string> take() { return std::move(lines); }

private:
    std::string coloured(const Cell& cell, int width) const
    {
        const auto text = fitted(cell.text, width);
        return cell.look != nullptr ? (style.*cell.look)(text) : text;
    }

    const Style& style;
    std::vector<std::string> lines;
};

std::string titleOf(int page)
{
    const auto* info = pageInfo(page);
    return info != nullptr ? info->title : "none";
}

std::string levelText(std::optional<int> value)
{
    return value ? std::to_string(*value) : "-";
}

void addTo(std::string& list, const std::string& more)
{
    list += (list.empty() ? "" : ", ") + more;
}

std::string gainText(const DspMemory& memory, const char* name)
{
    for (const auto& parameter : dspParameters())
        if (parameter.name == name)
            return valueText(memory, parameter);
    return "?";
}

void addUnit(Composer& text, Unit& unit)
{
    const auto front = unit.programs.pageInFront();
    std::string behind, plays;
    for (const auto page : unit.programs.pageStack())
        if (page != front)
            addTo(behind, titleOf(page));
    for (const auto& [appType, program] : unit.programs.running())
        if (program.source != NUM_OF_PAGES)
            addTo(plays, titleOf(program.source));
    const auto mcu = unit.mcu->state();
    const bool powered = unit.panel->state().powered;
    const auto shown = unit.remote->display();
    const bool runs = unit.engine().isRunning();
    const auto frame = [](const std::string& inside) { return Cell { "│" + inside + "│" }; };
    const auto edge = [](const char* left, const char* right) { return Cell { left + repeated("─", 16) + right }; };

    text.rule("╭", "┬", "╮", "Head unit", unit.remote->isPlugged() ? "Wired remote" : "Wired remote, unplugged");
    text.row("engine",
             { runs ? "pid " + std::to_string(unit.engine().pid()) : "off", runs ? &Style::good : &Style::bad },
             edge("┌", "┐"));
    text.row("page", { titleOf(front), &Style::bold }, frame(shown.line(0)));
    text.row("behind", { behind.empty() ? "nothing" : behind }, frame(shown.line(1)));
    text.row("plays", { plays.empty() ? "nothing" : plays }, edge("└", "┘"));
    text.row("source",
             { (mcu.source ? sourceName(*mcu.source) : "none") + (mcu.agreed ? ", agreed" : ", not agreed"),
               mcu.agreed ? &Style::good : &Style::warning },
             { "dimmer A " + levelText(shown.dimmerA()) + "  B " + levelText(shown.dimmerB()), &Style::dim });
    text.row("tuner", { unit.tuner->text() }, {});
    text.row("power",
             { (powered ? "on, " : "off, ") + voltsText(unit.supply->state().volts),
               powered ? &Style::good : &Style::warning },
             {});
}

void addSound(Composer& text, Unit& unit, bool isLow)
{
    const auto memory = unit.dsp->memory();
    const auto route = [&](const char* way, std::size_t path) { return Cell { way + inputText(memory, path) }; };
    const bool muted = isMuted(memory);
    const std::vector<std::pair<std::string, Cell>> sound {
        { "zone 1", { gainText(memory, "speaker volume") } },
        { "zone 2", { gainText(memory, "output B") } },
        { "mute", { muted ? "on" : "off", muted ? &Style::warning : nullptr } },
        { "route", route("speakers ", 0) },
        { "", route("line ", 1) },
        { "", route("zone 2 ", 2) },
    };
    std::vector<Cell> lines;
    for (const auto& [number, line] : unit.gpio->lines())
        lines.push_back({ std::to_string(number) + (line.level != 0 ? " high " : " low  ") + lineName(number),
                          line.level != 0 ? nullptr : &Style::dim });
    text.rule("├", "┼", "┤", "Sound", "Lines");
    for (std::size_t i = 0; i < (isLow ? sound.size() : std::max(sound.size(), lines.size())); ++i)
        text.row(i < sound.size() ? sound[i].first : "", i < sound.size() ? sound[i].second : Cell {},
                 i < lines.size() ? lines[i] : Cell {});
}

std::string heartbeatText(const Mcu::State& mcu)
{
    return "heartbeat " +
           (mcu.sinceHeartbeat ? std::to_string(mcu.sinceHeartbeat->count() / 1000) + " s ago" : "none yet");
}

void addLinks(Composer& text, Unit& unit, bool isLow)
{
    const auto mcu = unit.mcu->state();
    const auto wide = [&](const Cell& cell) { text.wide({ { cell, innerWidth - 1 } }); };
    text.rule("├", "", "┤", "Microcontroller link", isLow ? heartbeatText(mcu) : "");
    wide({ linkText(mcu), mcu.silent ? &Style::warning : nullptr });
    if (!isLow)
        wide({ heartbeatText(mcu), &Style::dim });

    const auto network = unit.networkDisplay->state();
    std::string known;
    for (const auto& [number, zone] : network.zones)
        known += "zone " + std::to_string(number) + " " + levelText(zone.volume) + " %" +
                 (zone.muted.value_or(false) ? " muted, " : ", ");
    text.rule("├", "", "┤", "Boat's network");
    wide({ known + std::to_string(network.received) + " messages of the unit, " + std::to_string(network.sent) +
           " to it" });
    if (!isLow)
        wide({ "last told: " + (network.lastTold.empty() ? "nothing yet" : network.lastTold), &Style::dim });
}

void addProgramRows(Composer& text, Unit& unit)
{
    int shown = 0;
    for (const auto& [appType, program] : unit.programs.running())
    {
        if (++shown > mostPrograms)
            break;
        const auto fault = program.faultText();
        text.wide(
            { { { appTypeName(appType) }, 16 },
              { { (program.connected ? "connected" : "starting") + (fault.empty() ? "" : ", " + fault),
                  fault.empty() ? &Style::dim : &Style::warning },
                30 },
              { { program.source != NUM_OF_PAGES ? "plays " + titleOf(program.source) : "", &Style::good }, 30 } });
    }
}

/** Several in a row, with the one word that matters most. */
void addProgramCells(Composer& text, Unit& unit, int rows)
{
    constexpr std::size_t inRow = 3;
    constexpr int cellWidth = (innerWidth - 1) / static_cast<int>(inRow);
    std::vector<std::pair<Cell, int>> cells;
    for (const auto& [appType, program] : unit.programs.running())
    {
        const auto fault = program.faultText();
        const auto plays = program.source != NUM_OF_PAGES;
        const auto what = !fault.empty() ? fault : plays ? "plays" : program.connected ? "" : "starting";
        cells.push_back({ { appTypeName(appType) + (what.empty() ? "" : " " + what), !fault.empty() ? &Style::warning
                                                                                     : plays        ? &Style::good
                                                                                                    : nullptr },
                          cellWidth });
    }
    for (std::size_t at = 0; at < cells.size() && rows > 0; at += inRow, --rows)
        text.wide({ cells.begin() + static_cast<std::ptrdiff_t>(at),
                    cells.begin() + static_cast<std::ptrdiff_t>(std::min(at + inRow, cells.size())) });
}

/** The last events, each in a line of this width; as many lines as are asked for. */
std::vector<std::string> eventLines(const Unit& unit, const Style& style, int width, int count)
{
    constexpr std::size_t looked = 1000;
    const auto isShown = [](const Event& event)
    { return weightOf(event) != Weight::detail && weightOf(event) != Weight::gain; };
    const auto events = folded(unit.journal.find({}, looked, isShown));
    const auto shown = std::min(events.size(), static_cast<std::size_t>(std::max(0, count)));
    std::vector<std::string> lines;
    for (const auto& event : std::span(events).last(shown))
    {
        const auto age = std::chrono::duration<double>(Clock::now() - event.at).count();
        const auto when = fitted("-" + Ctl::fixed(age, 1) + " s", labelWidth);
        lines.push_back(" " + style.dim(when) + fitted(event.stream + " " + event.text, width - 1 - labelWidth));
    }
    lines.resize(static_cast<std::size_t>(std::max(0, count)), std::string(static_cast<std::size_t>(width), ' '));
    return lines;
}

} // namespace

std::string linkText(const Mcu::State& mcu)
{
    return std::to_string(mcu.received) + " in, " + std::to_string(mcu.sent) + " out, " + std::to_string(mcu.resent) +
           " resent, " + std::to_string(mcu.givenUp) + " given up, " + std::to_string(mcu.duplicates) + " repeated, " +
           std::to_string(mcu.damaged) + " damaged";
}

std::vector<std::string> composeWatch(Unit& unit, const Style& style, Extent extent)
{
    constexpr int broadest = 120;
    constexpr int borders = 2;
    const auto compose = [&](bool isLow)
    {
        Composer text(style);
        addUnit(text, unit);
        addSound(text, unit, isLow);
        addLinks(text, unit, isLow);
        text.rule("├", "", "┤", "Programs");
        if (isLow)
            addProgramCells(text, unit, extent.rows - text.count() - 1);
        else
            addProgramRows(text, unit);
        return text;
    };
    auto text = compose(extent.rows > 0 && compose(false).count() >= extent.rows);
    const bool isBroad = extent.rows > 0 && extent.columns >= broadest;
    const auto left = extent.rows - text.count() - 1;
    if (!isBroad && left > borders)
    {
        text.rule("├", "", "┤", "Events");
        for (const auto& line : eventLines(unit, style, innerWidth, left - 1))
            text.framed(line);
    }
    text.rule("╰", "", "╯", extent.rows > 0 ? "Any key ends it" : "");
    auto lines = text.take();
    if (!isBroad)
        return lines;
    lines.resize(static_cast<std::size_t>(extent.rows), std::string(watchWidth, ' '));
    const auto events = eventLines(unit, style, extent.columns - watchWidth, extent.rows);
    for (std::size_t i = 0; i < lines.size(); ++i)
        lines[i] += events[i];
    return lines;
}

} // namespace Bench
