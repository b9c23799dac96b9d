#pragma once

#include "ctl/Client.h"
#include "ctl/Style.h"

#include <chrono>
#include <iosfwd>
#include <map>

namespace Ctl
{

/** Something about the unit that is not as it was. */
struct Difference
{
    std::string kind; ///< "unit", "page", "program"
    std::string name; ///< of the page or program
    std::string key;  ///< of the answer
    Json before, after;
};

/** What was told last of each thing. What an answer leaves out is as it was. */
class LastTold
{
public:
    /**
        What is new in an answer: a record, or several that are told apart by their value for `kind`. What is told for
        the first time is not, and times never are: they always differ.
    */
    std::vector<Difference> take(const std::string& kind, const Json& answer);

private:
    std::map<std::pair<std::string, std::string>, Json> records;

    void takeRecord(const std::string& kind, const std::string& name, const Json& record,
                    std::vector<Difference>& differences);
};

/** Asks an engine again and again, and writes a line for everything that has changed. */
class Watch
{
public:
    /** A line is text, or a JSON document. */
    Watch(Client& clientToAsk, std::ostream& outputToUse, const Style& styleToUse, bool asJson);

    /** Every 250 ms, until it is interrupted, whether there is an engine or not. */
    Answer run(const std::function<bool()>& isInterrupted);
    /** Once. That there is no engine, or that it fails, is one of the changes; not that it knows no such question. */
    Answer look();

private:
    Client& client;
    std::ostream& output;
    const Style& style;
    const bool json;
    LastTold told;
    std::string engine;                          ///< that has answered last
    std::chrono::steady_clock::time_point heard; ///< when it has
    Answer::Kind last = Answer::done;            ///< what came of the last question

    void tell(const Difference& difference);
    void tell(const std::string& kind, const std::string& text);
    void noteEngine(const Json& state);
};

} // namespace Ctl
