#pragma once

#include "platform/base/Pubhead.h"

#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

/** Names of the unit's things: the system's own, and short forms for the console. */
namespace Bench
{

struct PageInfo
{
    int page;
    int appType;
    const char* title;      ///< for people
    const char* shortNames; ///< separated by blanks
    bool inBackground;      ///< the engine starts its program behind the scenes as soon as the unit runs
};

/** The 23 pages that have a program. */
std::span<const PageInfo> allPages();
const PageInfo* pageInfo(int page);
bool isRearZone(int page);
/** Whether its program has no other page. */
bool isOnlyPage(int page);
/** The first page of a program. */
const PageInfo* pageOfApp(int appType);
/** By the page's name (mbFM) or a short form (fm); NUM_OF_PAGES when there is none. */
int findPage(const std::string& name);
std::vector<std::string> pageNames();

/** By the program's name (AppRadio), a short form (radio) or one of its pages; AppUnknown when there is none. */
int findApp(const std::string& name);
/** Every application type that has a page, in the order of the types. */
const std::set<int>& allApps();
std::vector<std::string> appNames();

/** A source as the microcontroller names it: type and number. */
struct Source
{
    int type = 1;
    int number = 0;
    bool operator==(const Source&) const = default;
};

/** "fm", "usb 2", "type 30 0". */
std::string sourceName(Source source);
/** `words` is the name or the type's number and, for USB, optionally a number. */
std::optional<Source> findSource(std::span<const std::string> words);
std::vector<std::string> sourceNames();

/** A key by name ("menu") or number, decimal or 0x; empty when it is neither or above 255. */
std::optional<int> findKey(const std::string& name);
std::vector<std::string> keyNames();
/** Of keys with commas between them; none when one of them is no key. */
std::vector<std::uint8_t> findKeys(const std::string& names);
/** The key's name; its number when it has none. */
std::string keyName(int value);
/** With its argument, if it has one: "volume-up", "42 3". */
std::string keyText(int key, int argument);

/** A message between engine and programs by name ("RMSG_APP_EVENT") or number. */
std::optional<int> findMessage(const std::string& name);
std::vector<std::string> messageNames();

/** The engine's groups of tasks, each of which has a thread. */
std::span<const char* const> groupNames();

/** What a general-purpose line does on the unit, "" for one without a name. */
std::string lineName(std::uint32_t line);

/** "12.6 V" */
std::string voltsText(double volts);

std::string lowerCase(std::string text);

/** Of each row of a table. */
template <typename Table>
std::vector<std::string> namesIn(const Table& table)
{
    std::vector<std::string> names;
    for (const auto& row : table)
        names.emplace_back(row.name);
    return names;
}

} // namespace Bench
