#include "protocol/Document.h"

#include "platform/channel/linux/IpcSdBus.h"
#include "protocol/Entries.h"
#include "protocol/Rules.h"

#include <map>

namespace Protocol
{

namespace
{

using Row = std::vector<std::string>;

std::string code(const std::string& text)
{
    return text.empty() ? text : "`" + text + "`";
}

std::string line(const Row& row)
{
    std::string text = "|";
    for (const auto& cell : row)
        text += (cell.empty() ? " " : " " + cell + " ") + "|";
    return text + "\n";
}

std::string table(const Row& head, const std::vector<Row>& rows)
{
    std::string text = line(head) + "|";
    for (std::size_t column = 0; column < head.size(); ++column)
        text += "---|";
    text += "\n";
    for (const auto& row : rows)
        text += line(row);
    return text;
}

std::string entryTable(const std::string& name, const std::string& number, const std::vector<Entry>& entries)
{
    std::vector<Row> rows;
    for (const auto& each : entries)
        rows.push_back({ code(each.name), std::to_string(each.number), each.meaning });
    return table({ name, number, "Meaning" }, rows);
}

std::string messageTable()
{
    std::vector<Row> rows;
    for (const auto& each : messages())
        rows.push_back({ code(each.entry.name), std::to_string(each.entry.number), each.direction, each.arg1, each.arg2,
                         each.bundle, each.entry.meaning, each.expected });
    return table({ "Message", "`what`", "Goes", "`arg1`", "`arg2`", "Bundle", "Sent when", "What has to follow" },
                 rows);
}

std::string codeTable()
{
    std::vector<Row> rows;
    for (const auto& each : codes())
        rows.push_back({ code(each.message), code(each.argument), std::to_string(each.entry.number),
                         code(each.entry.name), each.entry.meaning });
    return table({ "Message", "Argument", "Value", "Name", "Meaning" }, rows);
}

std::string bundleKeyTable()
{
    std::vector<Row> rows;
    for (const auto& each : bundleKeys())
        rows.push_back({ code(each.text), code(each.type), code(each.name), each.meaning });
    return table({ "Key", "Type", "Name in programs", "Meaning" }, rows);
}

std::string commandLineTable()
{
    std::vector<Row> rows;
    for (const auto& each : commandLines())
        rows.push_back({ code(each.name), each.meaning });
    return table({ "`type`", "Meaning" }, rows);
}

/** With the pages that each program has on this unit. */
std::string programTable()
{
    std::map<std::string, std::string> pagesOf;
    for (const auto& page : pages())
        if (auto& list = pagesOf[page.program]; !page.program.empty())
            list += (list.empty() ? "" : ", ") + code(page.entry.name);
    std::vector<Row> rows;
    for (const auto& each : programs())
        rows.push_back({ code(each.name), std::to_string(each.number), code(Platform::busNamePrefix + each.name),
                         each.meaning.empty() ? pagesOf[each.name] : each.meaning });
    return table({ "Program", "Type", "Name on the bus", "Pages" }, rows);
}

std::string pageTable()
{
    std::vector<Row> rows;
    for (const auto& each : pages())
        if (!each.program.empty())
            rows.push_back({ code(each.entry.name), std::to_string(each.entry.number), code(each.program),
                             each.isSource ? "yes" : "", each.isRear ? "rear" : "front" });
    return table({ "Page", "Number", "Program", "Has a source", "Zone" }, rows);
}

std::string keyTable()
{
    std::vector<Row> rows;
    for (const auto& each : keys())
        rows.push_back({ code(each.name), std::to_string(each.number) });
    return table({ "Key", "`arg1`" }, rows);
}

std::string ruleTable()
{
    std::vector<Row> rows;
    for (const auto& each : rules())
        rows.push_back({ each.id, withTimes(each.sentence) });
    return table({ "", "What a program owes" }, rows);
}

std::string tableOf(const std::string& name)
{
    static const std::map<std::string, std::string (*)()> tables {
        { "messages", messageTable },
        { "codes", codeTable },
        { "bundle keys", bundleKeyTable },
        { "command lines", commandLineTable },
        { "programs", programTable },
        { "pages", pageTable },
        { "keys", keyTable },
        { "rules", ruleTable },
        { "states", [] { return entryTable("State", "Number", states()); } },
        { "times", [] { return entryTable("Time", "ms", times()); } },
    };
    const auto found = tables.find(name);
    return found == tables.end() ? "" : found->second();
}

} // namespace

std::string filledIn(const std::string& document, std::string& problem)
{
    const std::string begin = "<!-- table ", close = " -->\n", end = "<!-- end -->";
    std::string text;
    std::size_t done = 0;
    for (auto at = document.find(begin); at != std::string::npos; at = document.find(begin, done))
    {
        const auto nameAt = at + begin.size(), nameEnd = document.find(close, nameAt);
        const auto endAt = document.find(end, nameAt);
        const auto name = document.substr(nameAt, std::min(nameEnd, endAt) - nameAt);
        const auto made = tableOf(name);
        if (nameEnd > endAt || endAt == std::string::npos || made.empty())
        {
            problem = made.empty() ? "there is no table \"" + name + "\"" : "table \"" + name + "\" has no end";
            return {};
        }
        text += document.substr(done, nameEnd + close.size() - done) + made;
        done = endAt;
    }
    return text + document.substr(done);
}

} // namespace Protocol
