#include "bench/panel/EngineAsker.h"

#include "ctl/Fields.h"

namespace BenchPanel
{

EngineAsker::EngineAsker(Unit& unitToAsk)
    : unit(unitToAsk)
{
    thread = std::jthread([this, bus = unit.engine().busAddress()](const std::stop_token& stop) { work(stop, bus); });
}

EngineAsker::~EngineAsker() = default;

std::shared_ptr<const EngineTold> EngineAsker::told() const
{
    const std::scoped_lock guard(lock);
    return answers;
}

void EngineAsker::work(const std::stop_token& stop, const std::string& bus)
{
    Ctl::Client client(bus);
    // What has no consequence for what is asked.
    const auto isNews = [](const Event& event)
    { return !isDetail(event) && event.stream != "frame EVENT_HEAT_BEAT" && event.stream != "gpio"; };
    std::optional<std::uint64_t> seen;
    Clock::time_point next;
    while (!stop.stop_requested())
    {
        const auto newest = unit.journal.find({}, 1, isNews);
        const auto number = newest.empty() ? 0 : newest.back().number;
        const bool isNew = std::exchange(seen, number) != number;
        if (isNew || Clock::now() >= next)
        {
            // What has just happened may not be all.
            next = Clock::now() + (isNew ? pause : pauseAtRest);
            const auto ask = [&](const char* method, const std::vector<std::string>& parameters = {})
            { return stop.stop_requested() ? Ctl::Json() : client.ask(method, parameters).value; };
            EngineTold now;
            if (unit.engine().isRunning())
            {
                now = { ask("State"), ask("Pages"), ask("Requests"), ask("Programs"), {}, Clock::now() };
                if (const auto front = Ctl::Fields(now.state)["front"]; !front.empty() && front != "none")
                    now.why = ask("Why", { "page", front });
            }
            const std::scoped_lock guard(lock);
            answers = std::make_shared<const EngineTold>(std::move(now));
        }
        std::unique_lock guard(lock);
        ended.wait_for(guard, stop, pause, [] { return false; });
    }
}

} // namespace BenchPanel
