#include "ctl/ReportTables.h"

#include "ctl/Columns.h"
#include "ctl/Table.h"

#include <algorithm>
#include <functional>

namespace Ctl
{

namespace
{

constexpr auto right = Table::right;

/** A row for each record that tells of the thing with this key; the text for none when there is no such record. */
std::string tableOf(const Json& answer, const Style& style, const char* key, const char* whenNone, Table table,
                    const std::function<std::vector<Cell>(const Fields& record)>& rowOf)
{
    if (answer.is_array())
        for (const auto& each : answer)
            if (const Fields record(each); record.has(key))
                table.add(rowOf(record));
    return table.isEmpty() ? style.dim(whenNone) + "\n" : table.text(style);
}

/** The number, unless it is 0. */
std::string aboveZero(const Fields& record, const char* key)
{
    return record.number(key) == 0 ? "" : record[key];
}

constexpr std::int64_t topPlace = 1, lowestPlace = 125; ///< the second is of pages that are not shown

std::string placeOf(const Fields& page)
{
    const auto place = page.number("show");
    return place == topPlace ? "top" : place == lowestPlace ? "" : page["show"];
}

std::string held(const Fields& page)
{
    if (page.is("audio"))
        return page.is("video") ? "audio, video" : "audio";
    return page.is("video") ? "video" : "";
}

std::vector<Cell> pageRow(const Fields& page)
{
    const bool isTop = page.number("show") == topPlace;
    const auto play = page["play"], zone = page["zone"];
    const Look look = isTop ? &Style::bold : page.is("running") ? nullptr : &Style::dim;
    return { { isTop ? "▸" : "", &Style::good },
             { page["page"], look },
             { page["program"], look },
             { page.is("running") ? "yes" : "", look },
             { placeOf(page), look },
             { play == "stopped" ? "" : play, &Style::good },
             { held(page) },
             { zone == "front" ? "" : zone },
             { page["showLevel"] + "/" + page["playLevel"], look },
             { page["audioChannel"], look },
             { page.time("changedForMs"), &Style::dim } };
}

/** In MiB, and of how many it may have. */
Cell memoryOf(const Fields& program)
{
    constexpr double mebibyte = 1024 * 1024, scarce = 0.9;
    const auto used = program.number("memoryBytes");
    const auto limit = program.number("memoryLimitBytes");
    if (!used)
        return { "" };
    auto text = fixed(static_cast<double>(*used) / mebibyte, 1);
    if (!limit)
        return { text };
    const auto most = static_cast<double>(*limit);
    return { text + "/" + fixed(most / mebibyte, 0),
             static_cast<double>(*used) > scarce * most ? &Style::warning : nullptr };
}

std::vector<Cell> programRow(const Fields& program)
{
    const bool runs = program.number("process").value_or(0) != 0;
    const bool isLost = runs && !program.is("onBus");
    return { { program["program"], runs ? nullptr : &Style::dim },
             { program["state"], runs ? nullptr : &Style::dim },
             { program.time("stateForMs"), &Style::dim },
             { aboveZero(program, "process") },
             { isLost ? "not there" : "", &Style::warning },
             { program.time("heartbeatForMs") },
             memoryOf(program),
             { program.time("cpuMs") },
             { aboveZero(program, "starts") },
             { aboveZero(program, "ends") },
             { aboveZero(program, "waitingMessages"), &Style::warning },
             { program["path"], &Style::dim } };
}

Look lookOf(const std::string& status)
{
    if (status == "done")
        return &Style::good;
    return status == "failed" || status == "refused" ? &Style::warning : &Style::accent;
}

std::vector<Cell> requestRow(const Fields& request)
{
    const auto status = request["status"];
    return { { request["number"] },
             { request.time("askedForMs"), &Style::dim },
             { request["page"], &Style::bold },
             { request["action"] },
             { request["asker"] + (request.is("automatic") ? ", by itself" : "") },
             { status, lookOf(status) },
             { request.time("finishedUs") },
             { request["because"], &Style::dim } };
}

std::vector<Cell> settingRow(const Fields& setting)
{
    const auto smallest = setting["smallest"], largest = setting["largest"];
    return { { setting["index"], &Style::dim },
             { setting["name"] },
             { setting["value"], &Style::bold },
             { smallest.empty() && largest.empty() ? "" : smallest + " to " + largest, &Style::dim },
             { setting["meaning"], &Style::dim } };
}

std::vector<Cell> groupRow(const Fields& group)
{
    const bool works = group.has("component") || group.has("message");
    return { { group["group"] },
             { works ? "works" : "waits", works ? &Style::accent : &Style::dim },
             { group.time("forMs") },
             { aboveZero(group, "queued"), &Style::warning },
             { aboveZero(group, "deferred"), &Style::warning },
             { group["component"] },
             { group["message"] } };
}

std::vector<Cell> queueRow(const Fields& queue)
{
    const auto waiting = queue.number("waiting").value_or(0), most = queue.number("most").value_or(0);
    const Look look = waiting == 0 ? &Style::dim : most > 0 && waiting >= most ? &Style::bad : &Style::bold;
    return { { queue["queue"] }, { queue["waiting"], look }, { queue["most"], &Style::dim } };
}

std::vector<Cell> counterRow(const Fields& counter)
{
    const Look look = counter.number("count") == 0 ? &Style::dim : nullptr;
    return { { counter["count"], look == nullptr ? &Style::bold : look },
             { counter["counter"], look },
             { counter["meaning"], &Style::dim } };
}

std::vector<Cell> latencyRow(const Fields& latency)
{
    return { { latency["from"] },
             { latency["to"] },
             { latency["count"], &Style::dim },
             { latency.time("medianUs"), &Style::bold },
             { latency.time("p90Us") },
             { latency.time("p99Us") },
             { latency.time("maxUs") } };
}

} // namespace

std::string pagesText(const Json& answer, const Style& style)
{
    return tableOf(answer, style, "page", "no pages",
                   Table({ { "" },
                           { "page" },
                           { "program" },
                           { "runs" },
                           { "place", right },
                           { "sound" },
                           { "holds" },
                           { "zone" },
                           { "levels", right },
                           { "channel" },
                           { "since", right } }),
                   pageRow);
}

std::string programsText(const Json& answer, const Style& style)
{
    return tableOf(answer, style, "program", "no programs",
                   Table({ { "program" },
                           { "state" },
                           { "since", right },
                           { "process", right },
                           { "bus" },
                           { "heartbeat", right },
                           { "MiB", right },
                           { "processor", right },
                           { "starts", right },
                           { "ends", right },
                           { "waiting", right },
                           { "path" } }),
                   programRow);
}

std::string requestsText(const Json& answer, const Style& style)
{
    return tableOf(answer, style, "number", "nobody has asked for a page yet",
                   Table({ { "no.", right },
                           { "ago", right },
                           { "page" },
                           { "action" },
                           { "asker" },
                           { "status" },
                           { "took", right },
                           { "because" } }),
                   requestRow);
}

std::string settingsText(const Json& answer, const Style& style)
{
    return tableOf(answer, style, "name", "no settings",
                   Table({ { "no.", right }, { "name" }, { "value" }, { "range" }, { "meaning" } }), settingRow);
}

std::string groupsText(const Json& answer, const Style& style)
{
    return tableOf(answer, style, "group", "no groups",
                   Table({ { "group" },
                           { "thread" },
                           { "for", right },
                           { "queued", right },
                           { "deferred", right },
                           { "component" },
                           { "message" } }),
                   groupRow);
}

std::string queuesText(const Json& answer, const Style& style)
{
    return tableOf(answer, style, "queue", "no queues",
                   Table({ { "queue" }, { "waiting", right }, { "at most", right } }), queueRow);
}

std::string countersText(const Json& answer, const Style& style)
{
    return tableOf(answer, style, "counter", "nothing was counted",
                   Table({ { "count", right }, { "of" }, { "meaning" } }), counterRow);
}

std::string latencyText(const Json& answer, const Style& style)
{
    return tableOf(withoutZeros(answer), style, "from", "nothing was measured yet",
                   Table({ { "from" },
                           { "to" },
                           { "count", right },
                           { "median", right },
                           { "90 %", right },
                           { "99 %", right },
                           { "longest", right } }),
                   latencyRow);
}

Json withoutZeros(const Json& answer)
{
    if (!answer.is_array())
        return answer;
    Json some = Json::array();
    std::ranges::copy_if(answer, std::back_inserter(some),
                         [](const Json& record) { return Fields(record).number("count") != 0; });
    return some;
}

} // namespace Ctl
