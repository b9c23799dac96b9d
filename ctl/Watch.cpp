#include "ctl/Watch.h"

#include "ctl/Columns.h"
#include "ctl/Fields.h"

#include <array>
#include <chrono>
#include <ctime>
#include <ostream>
#include <thread>

namespace Ctl
{

using namespace std::chrono_literals;

namespace
{

constexpr std::chrono::milliseconds pause = 250ms;

/** "15:04:05.250", by the clock on the wall. */
std::string timeOfDay()
{
    const auto now = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
    const auto seconds = std::chrono::system_clock::to_time_t(now);
    std::tm parts {};
    ::localtime_r(&seconds, &parts);
    std::ostringstream text;
    text << std::put_time(&parts, "%T") << "." << std::setw(3) << std::setfill('0')
         << now.time_since_epoch() % 1s / 1ms;
    return text.str();
}

bool isTime(const std::string& key)
{
    return key.ends_with("Ms") || key.ends_with("Us");
}

std::string valueText(const Json& value)
{
    const auto words = wordsOf(value);
    return words.empty() ? "none" : words;
}

} // namespace

std::vector<Difference> LastTold::take(const std::string& kind, const Json& answer)
{
    std::vector<Difference> differences;
    if (answer.is_object())
        takeRecord(kind, {}, answer, differences);
    else if (answer.is_array())
        for (const auto& record : answer)
            if (const auto name = Fields(record)[kind.c_str()]; !name.empty())
                takeRecord(kind, name, record, differences);
    return differences;
}

void LastTold::takeRecord(const std::string& kind, const std::string& name, const Json& record,
                          std::vector<Difference>& differences)
{
    auto& last = records.try_emplace({ kind, name }, Json::object()).first->second;
    for (const auto& [key, value] : record.items())
    {
        if (isTime(key))
            continue;
        auto& known = last[key];
        if (!known.is_null() && known != value)
            differences.push_back({ kind, name, key, known, value });
        known = value;
    }
}

Watch::Watch(Client& clientToAsk, std::ostream& outputToUse, const Style& styleToUse, bool asJson)
    : client(clientToAsk)
    , output(outputToUse)
    , style(styleToUse)
    , json(asJson)
{
}

Answer Watch::run(const std::function<bool()>& isInterrupted)
{
    while (!isInterrupted())
    {
        if (auto answer = look(); answer.kind == Answer::unknown)
            return answer;
        std::this_thread::sleep_for(pause);
    }
    return {};
}

Answer Watch::look()
{
    constexpr std::string_view unit = "unit";
    constexpr std::array questions { std::pair("State", unit.data()), std::pair("Pages", "page"),
                                     std::pair("Programs", "program") };
    for (const auto& [method, kind] : questions)
    {
        auto answer = client.ask(method);
        if (answer.kind == Answer::unknown)
            return answer;
        if (answer.kind != Answer::done)
        {
            if (std::exchange(last, answer.kind) != answer.kind)
                tell("engine", answer.error);
            return {};
        }
        if (kind == unit)
            noteEngine(answer.value);
        else if (client.engine() != engine)
            return {}; // another one meanwhile, which is looked at from the beginning
        for (const auto& difference : told.take(kind, answer.value))
            tell(difference);
    }
    return {};
}

/** Another name on the bus may be the same process on another bus: what has begun since it was heard last is another. */
void Watch::noteEngine(const Json& state)
{
    using std::chrono::steady_clock;
    const auto before = std::exchange(engine, client.engine());
    const bool wasAway = std::exchange(last, Answer::done) != Answer::done;
    const auto silence = steady_clock::now() - std::exchange(heard, steady_clock::now());
    const auto runsFor = Fields(state).number("runningForMs").value_or(0);
    if (before.empty())
        tell("engine", "the engine runs");
    else if (before != engine || wasAway)
        tell("engine", runsFor < silence / 1ms ? "the engine was started anew" : "the engine answers again");
}

void Watch::tell(const std::string& kind, const std::string& text)
{
    if (json)
        output << Json({ { "time", timeOfDay() }, { "kind", kind }, { "event", text } }).dump() << std::endl;
    else
        output << style.dim(timeOfDay()) << "  " << style.bold(text) << std::endl;
}

void Watch::tell(const Difference& difference)
{
    const auto& [kind, name, key, before, after] = difference;
    if (json)
    {
        output << Json({ { "time", timeOfDay() },
                         { "kind", kind },
                         { "name", name },
                         { "key", key },
                         { "before", before },
                         { "after", after } })
                      .dump()
               << std::endl;
        return;
    }
    constexpr int nameWidth = 14, keyWidth = 14;
    output << style.dim(timeOfDay()) << "  " << style.accent(padded(name.empty() ? kind : printable(name), nameWidth))
           << "  " << padded(printable(key), keyWidth) << "  " << style.dim(valueText(before) + " → ")
           << valueText(after) << std::endl;
}

} // namespace Ctl
