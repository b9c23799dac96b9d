#pragma once

#include <string>
#include <vector>

/** The engine's tables of names and numbers, as an author of source programs sees them. */
namespace Protocol
{

/** A named number. */
struct Entry
{
    std::string name;
    int number;
    std::string meaning;
};

struct Message
{
    Entry entry; ///< its meaning says who sends it when
    std::string direction;
    std::string arg1, arg2, bundle;
    std::string expected; ///< what has to follow, "" for nothing
};

/** A value of one of a message's arguments. */
struct Code
{
    std::string message, argument;
    Entry entry;
};

/** A key of a bundle. */
struct Key
{
    std::string name; ///< in programs
    std::string text; ///< on the bus
    std::string type; ///< as D-Bus signatures have it
    std::string meaning;
};

struct Page
{
    Entry entry;
    std::string program; ///< "" for a number that no page of this unit has
    bool isSource, isRear;
};

std::vector<Message> messages();
std::vector<Code> codes();
std::vector<Key> bundleKeys();
std::vector<Entry> commandLines(); ///< their types; numbers are of no use
std::vector<Entry> programs();
std::vector<Page> pages();
std::vector<Entry> keys();
std::vector<Entry> states();
std::vector<Entry> times(); ///< in milliseconds

} // namespace Protocol
