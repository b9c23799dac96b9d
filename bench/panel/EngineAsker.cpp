#include "bench/panel/EngineAsker.h"

namespace BenchPanel
{

EngineAsker::EngineAsker(Unit& unitToAsk, std::function<void()> changedCall)
    : unit(unitToAsk)
    , changed(std::move(changedCall))
{
    thread = std::jthread([this](const std::stop_token& stop) { work(stop); });
}

EngineAsker::~EngineAsker() = default;

std::shared_ptr<const EngineTold> EngineAsker::told() const
{
    const std::scoped_lock guard(lock);
    return answers;
}

void EngineAsker::work(const std::stop_token& stop)
{
    Ctl::Client client(unit.engine().busAddress());
    // What has no consequence for what is asked.
    const auto isNews = [](const Event& event)
    { return !isDetail(event) && event.stream != "frame EVENT_HEAT_BEAT" && event.stream != "gpio"; };
    std::uint64_t seen = 0;
    for (bool first = true; !stop.stop_requested(); first = false)
    {
        const auto newest = unit.journal.find({}, 1, isNews);
        if (first || (!newest.empty() && newest.back().number != seen))
        {
            seen = newest.empty() ? 0 : newest.back().number;
            const auto ask = [&](const char* method)
            { return stop.stop_requested() ? Ctl::Json() : client.ask(method).value; };
            auto now = unit.engine().isRunning()
                           ? EngineTold { ask("State"), ask("Requests"), ask("Programs"), Clock::now() }
                           : EngineTold {};
            {
                const std::scoped_lock guard(lock);
                answers = std::make_shared<const EngineTold>(std::move(now));
            }
            changed();
        }
        std::unique_lock guard(lock);
        ended.wait_for(guard, stop, pause, [] { return false; });
    }
}

} // namespace BenchPanel
