// The live view: the whole unit at a glance.
#include "bench/console/Watch.h"

#include "bench/dsp/DspModel.h"
#include "ctl/Columns.h"

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
    if (widthOf(text) <= width)
        return padded(text, width);
    std::string cut;
    int count = 0;
    for (const char c : text)
    {
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80 && ++count == width)
            break;
        cut += c;
    }
    return cut + "…";
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
        const bool split = *cross != '\0';
        lines.push_back(style.dim(left) + part(leftTitle, split ? leftWidth : innerWidth) +
                        (split ? style.dim(cross) + part(rightTitle, rightWidth) : "") + style.dim(right));
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

void addSound(Composer& text, Unit& unit)
{
    const auto memory = unit.dsp->memory();
    const auto route = [&](const char* way, std::size_t path) { return Cell { way + inputText(memory, path) }; };
    const bool muted = isMuted(memory, 0) || isMuted(memory, 1) || isMuted(memory, 2);
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
    for (std::size_t i = 0; i < std::max(sound.size(), lines.size()); ++i)
        text.row(i < sound.size() ? sound[i].first : "", i < sound.size() ? sound[i].second : Cell {},
                 i < lines.size() ? lines[i] : Cell {});
}

void addLinks(Composer& text, Unit& unit)
{
    const auto mcu = unit.mcu->state();
    const auto wide = [&](const Cell& cell) { text.wide({ { cell, innerWidth - 1 } }); };
    text.rule("├", "", "┤", "Microcontroller link");
    wide({ linkText(mcu), mcu.silent ? &Style::warning : nullptr });
    wide({ "heartbeat " +
               (mcu.sinceHeartbeat ? std::to_string(mcu.sinceHeartbeat->count() / 1000) + " s ago" : "none yet"),
           &Style::dim });

    const auto network = unit.networkDisplay->state();
    std::string known;
    for (const auto& [number, zone] : network.zones)
        known += "zone " + std::to_string(number) + " " + levelText(zone.volume) + " %" +
                 (zone.muted.value_or(false) ? " muted, " : ", ");
    text.rule("├", "", "┤", "Boat's network");
    wide({ known + std::to_string(network.received) + " messages of the unit, " + std::to_string(network.sent) +
           " to it" });
    wide({ "last told: " + (network.lastTold.empty() ? "nothing yet" : network.lastTold), &Style::dim });
}

void addPrograms(Composer& text, Unit& unit)
{
    text.rule("├", "", "┤", "Programs");
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
    text.rule("╰", "", "╯", "");
}

} // namespace

std::string linkText(const Mcu::State& mcu)
{
    return std::to_string(mcu.received) + " in, " + std::to_string(mcu.sent) + " out, " + std::to_string(mcu.resent) +
           " resent, " + std::to_string(mcu.givenUp) + " given up, " + std::to_string(mcu.duplicates) + " repeated, " +
           std::to_string(mcu.damaged) + " damaged";
}

std::vector<std::string> composeWatch(Unit& unit, const Style& style)
{
    Composer text(style);
    addUnit(text, unit);
    addSound(text, unit);
    addLinks(text, unit);
    addPrograms(text, unit);
    return text.take();
}

} // namespace Bench
