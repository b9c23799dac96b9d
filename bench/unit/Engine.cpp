#include "bench/unit/Engine.h"

#include <csignal>

namespace Bench
{

Engine::Engine(Journal& journalToUse)
    : journal(journalToUse)
{
}

std::string Engine::start(const Options& options)
{
    if (child.isRunning())
        return "the engine runs already";
    journal.add("engine", "started");
    const auto error = child.start(
        { options.program, { "--config", options.configuration }, options.environment, options.outputFile, {} },
        [this](int status) { journal.add("engine", describeStatus(status)); });
    if (!error.empty())
        journal.add("engine", "not started: " + error);
    return error;
}

void Engine::stop(std::chrono::milliseconds limit)
{
    child.end(limit);
}

void Engine::kill()
{
    child.signal(SIGKILL);
    child.end(std::chrono::seconds(1));
}

} // namespace Bench
