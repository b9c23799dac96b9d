#include "ctl/Reports.h"

#include "ctl/Columns.h"
#include "ctl/Fields.h"
#include "ctl/ReportTables.h"
#include "ctl/Table.h"

#include <array>

namespace Ctl
{

namespace
{

/** Labelled values below a title. */
class Block
{
public:
    Block(const Style& styleToUse, const std::string& title, const std::string& remark = {})
        : style(styleToUse)
        , all(style.bold(title) + (remark.empty() ? "" : style.dim("  " + remark)) + "\n")
    {
    }

    /** Nothing for what the engine does not tell. */
    void row(const char* label, const std::string& value, const std::string& remark = {})
    {
        if (!value.empty())
            all += labelled(style, label, value + (remark.empty() ? "" : "  " + remark));
    }
    const std::string& text() const { return all; }

private:
    const Style& style;
    std::string all;
};

/** With a text in front when there is one. */
std::string behind(const char* front, const std::string& text)
{
    return text.empty() ? "" : front + text;
}

std::string counted(const Fields& answer, const char* key, const char* what)
{
    const auto count = answer.number(key);
    return count ? std::to_string(*count) + " " + what : "";
}

/** "3 waiting"; "" when none is. */
std::string waitingIn(const Fields& answer, const char* key)
{
    return answer.number(key).value_or(0) > 0 ? counted(answer, key, "waiting") : "";
}

std::string choice(const Style& style, const Fields& answer, const char* key, const char* whenTrue,
                   const char* whenFalse)
{
    return !answer.has(key) ? "" : answer.is(key) ? style.good(whenTrue) : style.warning(whenFalse);
}

/** "on", or why it is not heard. */
std::string soundIn(const Style& style, const Fields& answer)
{
    const auto reasons = answer["muteReasons"];
    if (!answer.has("muted") || !reasons.empty())
        return style.warning(reasons);
    return answer.is("muted") ? style.warning("muted") : style.good("on");
}

std::string stateText(const Json& answer, const Style& style)
{
    const Fields state(answer);
    const auto front = state["front"], source = state["normalSource"];
    const auto last = state["lastSource"], shown = state["shown"];
    Block text(style, "Head unit " + state["version"], behind("runs for ", state.time("runningForMs")));
    text.row("in front", style.bold(front), shown == front ? "" : style.warning(behind("the programs show ", shown)));
    text.row("source", source, last == source || last == "none" ? "" : style.dim(behind("last ", last)));
    text.row("rear zone", state["rear"]);
    text.row("sound", soundIn(style, state));
    text.row("volume", state["volume1"], style.dim(behind("zone 2 ", state["volume2"])));
    text.row("power", choice(style, state, "poweredOn", "on", "off"));
    text.row("state", state["state"] + behind(", ", state["subState"]),
             state.is("changing") ? style.warning("changing") : style.dim(behind("before ", state["previousState"])));
    text.row("requests", waitingIn(state, "waitingRequests"));
    return text.text();
}

std::string linkText(const Json& answer, const Style& style)
{
    const Fields link(answer);
    Block text(style, "Microcontroller");
    text.row(
        "link", choice(style, link, "connected", "connected", "not connected"),
        style.dim(behind("heard ", link.time("lastReceivedForMs")) + (link.has("lastReceivedForMs") ? " ago" : "")));
    text.row("frames", counted(link, "sent", "sent"), counted(link, "received", "received"));
    std::string faults;
    for (const auto& [key, name] : { std::pair("resent", "resent"), std::pair("givenUp", "given up"),
                                     std::pair("damaged", "damaged"), std::pair("repeated", "repeated") })
        if (link.number(key).value_or(0) > 0)
            faults += (faults.empty() ? "" : ", ") + counted(link, key, name);
    text.row("faults", faults.empty() ? "none" : style.warning(faults));
    text.row("round trip", behind("median ", link.time("roundTripMedianUs")),
             behind("99 % within ", link.time("roundTripP99Us")) + behind(", longest ", link.time("roundTripMaxUs")));
    text.row("queue", waitingIn(link, "waiting"));
    return text.text();
}

std::string remoteText(const Json& answer, const Style& style)
{
    const Fields remote(answer);
    Block text(style, "Wired remote");
    text.row("remote", choice(style, remote, "connected", "connected", "not connected"));
    text.row("line 1", "\"" + remote["line1"] + "\"");
    text.row("line 2", "\"" + remote["line2"] + "\"");
    text.row("dimmer", remote["dimmer"]);
    text.row("queue", waitingIn(remote, "waitingJobs"));
    return text.text();
}

std::string dspText(const Json& answer, const Style& style)
{
    const Fields dsp(answer);
    Block text(style, "Audio DSP");
    text.row("chip", choice(style, dsp, "booted", "runs", "does not run"));
    if (dsp.has("leftAlone"))
        text.row("left alone", style.warning(dsp["leftAlone"]));
    text.row("channel", dsp["channel"], style.dim(behind("input ", dsp["input"])));
    text.row("sound", soundIn(style, dsp));
    text.row("writes", dsp["words"]);
    if (dsp.number("failures").value_or(0) > 0)
        text.row("failures", style.warning(dsp["failures"]),
                 behind("last: ", dsp["lastFailure"]) + style.dim(behind(", ", dsp.time("lastFailureForMs")) +
                                                                  (dsp.has("lastFailureForMs") ? " ago" : "")));
    text.row("queue", waitingIn(dsp, "waitingJobs"));
    return text.text();
}

} // namespace

std::span<const Report> reports()
{
    static constexpr std::array table {
        Report { "state", "State", nullptr, "The unit at a glance: page in front, source, sound, power.", stateText },
        Report { "pages", "Pages", nullptr, "Every page, the top one first: its program, what it plays and holds.",
                 pagesText },
        Report { "programs", "Programs", nullptr, "The source programs: processes, heartbeats, starts and ends.",
                 programsText },
        Report { "requests", "Requests", nullptr, "The last requests for pages: who asked, and what became of them.",
                 requestsText },
        Report { "link", "Link", nullptr, "The link with the microcontroller: frames, faults, round trips.", linkText },
        Report { "remote", "Remote", nullptr, "The wired remote: what it is to show.", remoteText },
        Report { "dsp", "Dsp", nullptr, "The audio DSP: channel, mute, faults of its bus.", dspText },
        Report { "settings", "Settings", "NAME", "The settings, or one of them.", settingsText },
        Report { "groups", "Groups", nullptr, "What the engine's threads do, and for how long already.", groupsText },
        Report { "queues", "Queues", nullptr, "What waits in the engine, and how much may.", queuesText },
        Report { "counters", "Counters", nullptr, "What was lost, refused or done again.", countersText },
        Report { "latency", "Latency", nullptr, "How long it takes from a key or a command to what it brings about.",
                 latencyText },
    };
    return table;
}

std::string textOf(const Report& report, const Json& answer, const Style& style)
{
    return report.text(answer, style) + busyText(answer, style);
}

std::string busyText(const Json& answer, const Style& style)
{
    std::string all;
    for (const auto& record : answer.is_array() ? answer : Json::array({ answer }))
        if (const auto what = Fields(record)["busy"]; !what.empty())
            all += (all.empty() ? "" : ", ") + what;
    return all.empty() ? "" : style.warning("Busy at the moment: " + all) + "\n";
}

} // namespace Ctl
