// The live view: the whole unit at a glance.
#include "bench/console/Watch.h"

#include "bench/console/Columns.h"
#include "bench/dsp/DspModel.h"
#include "bench/unit/Unit.h"

namespace Bench
{

using namespace Pubhead;

namespace
{

constexpr int innerWidth = watchWidth - 2;
constexpr int leftWidth = 44;
constexpr int rightWidth = innerWidth - leftWidth - 1;
constexpr int labelWidth = 9;
constexpr std::size_t mostPrograms = 12;

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

} // namespace

WatchView watchViewOf(Unit& unit)
{
    WatchView view;
    const auto mcu = unit.mcu->state();
    const auto running = unit.programs.running();
    if (unit.engine.isRunning())
        view.engine = "pid " + std::to_string(unit.engine.pid());
    const auto front = unit.programs.pageInFront();
    view.page = titleOf(front);
    for (const auto page : unit.programs.pageStack())
        if (page != front)
            view.behind += (view.behind.empty() ? "" : ", ") + titleOf(page);
    for (const auto& [appType, program] : running)
        if (program.source != NUM_OF_PAGES)
            view.plays += (view.plays.empty() ? "" : ", ") + titleOf(program.source);
    view.source = mcu.source ? sourceName(*mcu.source) : "none";
    view.agreed = mcu.agreed;
    view.powered = unit.panel->state().powered;
    view.supply = voltsText(unit.supply->state().volts);
    view.tuner = unit.tuner->text();

    const auto dsp = unit.dsp->state();
    const auto gain = [&](const char* name)
    {
        for (const auto& parameter : dspParameters())
            if (parameter.name == name)
                return valueText(dsp.memory, parameter);
        return std::string("?");
    };
    view.zone1 = gain("speaker volume");
    view.zone2 = gain("output B");
    constexpr std::array ways { "speakers ", "line ", "zone 2 " };
    for (std::size_t path = 0; path < ways.size(); ++path)
    {
        view.route.push_back(ways[path] + inputText(dsp.memory, path));
        view.muted = view.muted || isMuted(dsp.memory, path);
    }

    const auto display = unit.remote->display();
    view.remote = { display.line(0), display.line(1) };
    const auto level = [](std::optional<int> value) { return value ? std::to_string(*value) : std::string("-"); };
    view.dimmer = "dimmer A " + level(display.dimmerA()) + "  B " + level(display.dimmerB());
    view.remotePlugged = unit.remote->isPlugged();

    view.link = std::to_string(mcu.received) + " in, " + std::to_string(mcu.sent) + " out, " +
                std::to_string(mcu.resent) + " resent, " + std::to_string(mcu.givenUp) + " given up, " +
                std::to_string(mcu.duplicates) + " repeated, " + std::to_string(mcu.damaged) + " damaged";
    view.heartbeat = mcu.sinceHeartbeat ? std::to_string(mcu.sinceHeartbeat->count() / 1000) + " s ago" : "none yet";
    view.linkSilent = mcu.silent;
    const auto network = unit.networkDisplay->state();
    for (const auto& [number, zone] : network.zones)
        view.network += "zone " + std::to_string(number) + " " + level(zone.volume) + " %" +
                        (zone.muted.value_or(false) ? " muted, " : ", ");
    view.network +=
        std::to_string(network.received) + " messages of the unit, " + std::to_string(network.sent) + " to it";
    view.networkTold = network.lastTold.empty() ? "nothing yet" : network.lastTold;
    for (const auto& [number, line] : unit.gpio->lines())
        view.lines.push_back({ std::to_string(number), lineName(number), line.level != 0 });
    for (const auto& [appType, program] : running)
        view.programs.push_back({ appTypeName(appType),
                                  (program.connected ? std::string("connected") : std::string("starting")) +
                                      (program.fault.empty() ? "" : ", " + program.fault),
                                  program.source != NUM_OF_PAGES ? "plays " + titleOf(program.source) : "",
                                  !program.fault.empty() });
    return view;
}

std::vector<std::string> composeWatch(const WatchView& view, const Style& style)
{
    Composer text(style);
    const auto frame = [](const std::string& inside) { return Cell { "│" + inside + "│" }; };
    const auto edge = [](const char* left, const char* right) { return Cell { left + repeated("─", 16) + right }; };
    text.rule("╭", "┬", "╮", "Head unit", view.remotePlugged ? "Wired remote" : "Wired remote, unplugged");
    text.row("engine", { view.engine.empty() ? "off" : view.engine, view.engine.empty() ? &Style::bad : &Style::good },
             edge("┌", "┐"));
    text.row("page", { view.page, &Style::bold }, frame(view.remote[0]));
    text.row("behind", { view.behind.empty() ? "nothing" : view.behind }, frame(view.remote[1]));
    text.row("plays", { view.plays.empty() ? "nothing" : view.plays }, edge("└", "┘"));
    text.row(
        "source",
        { view.source + (view.agreed ? ", agreed" : ", not agreed"), view.agreed ? &Style::good : &Style::warning },
        { view.dimmer, &Style::dim });
    text.row("tuner", { view.tuner }, {});
    text.row("power",
             { (view.powered ? "on, " : "off, ") + view.supply, view.powered ? &Style::good : &Style::warning }, {});

    text.rule("├", "┼", "┤", "Sound", "Lines");
    const auto lineCell = [&](std::size_t i) -> Cell
    {
        if (i >= view.lines.size())
            return {};
        const auto& line = view.lines[i];
        return { line.number + (line.high ? " high " : " low  ") + line.name, line.high ? nullptr : &Style::dim };
    };
    const std::vector<std::pair<std::string, Cell>> sound {
        { "zone 1", { view.zone1 } },
        { "zone 2", { view.zone2 } },
        { "mute", { view.muted ? "on" : "off", view.muted ? &Style::warning : nullptr } },
        { "route", { view.route.empty() ? "" : view.route[0] } },
        { "", { view.route.size() > 1 ? view.route[1] : "" } },
        { "", { view.route.size() > 2 ? view.route[2] : "" } },
    };
    for (std::size_t i = 0; i < std::max(sound.size(), view.lines.size()); ++i)
        text.row(i < sound.size() ? sound[i].first : "", i < sound.size() ? sound[i].second : Cell {}, lineCell(i));

    text.rule("├", "", "┤", "Microcontroller link");
    text.wide({ { { view.link, view.linkSilent ? &Style::warning : nullptr }, innerWidth - 1 } });
    text.wide({ { { "heartbeat " + view.heartbeat, &Style::dim }, innerWidth - 1 } });

    text.rule("├", "", "┤", "Boat's network");
    text.wide({ { { view.network }, innerWidth - 1 } });
    text.wide({ { { "last told: " + view.networkTold, &Style::dim }, innerWidth - 1 } });

    text.rule("├", "", "┤", "Programs");
    for (std::size_t i = 0; i < std::min(view.programs.size(), mostPrograms); ++i)
    {
        const auto& program = view.programs[i];
        text.wide({ { { program.name }, 16 },
                    { { program.state, program.faulty ? &Style::warning : &Style::dim }, 30 },
                    { { program.plays, &Style::good }, 30 } });
    }
    text.rule("╰", "", "╯", "");
    return text.take();
}

} // namespace Bench
