#include "bench/unit/Engine.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>

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
    asked = false;
    std::error_code none;
    const auto size = std::filesystem::file_size(options.outputFile, none);
    const auto begin = none ? 0 : static_cast<std::streamoff>(size); // runs before are in the same file
    journal.add("engine", "started");
    const auto error = child.start({ options.program, options.arguments, options.environment, options.outputFile, {} },
                                   [this, begin, file = options.outputFile](int status)
                                   {
                                       journal.add("engine", "ended");
                                       journal.add("engine", describeStatus(status));
                                       if (!asked)
                                           tellLastWords(file, begin);
                                   });
    if (!error.empty())
        journal.add("engine", "not started: " + error);
    return error;
}

void Engine::tellLastWords(const std::string& outputFile, std::streamoff begin)
{
    constexpr std::size_t most = 20;
    std::ifstream output(outputFile);
    output.seekg(begin);
    std::deque<std::string> lines;
    for (std::string line; std::getline(output, line);)
    {
        lines.push_back(line);
        if (lines.size() > most)
            lines.pop_front();
    }
    for (const auto& line : lines)
        std::cerr << "engine: " << line << "\n";
}

void Engine::stop(std::chrono::milliseconds limit)
{
    asked = true;
    child.end(limit);
}

void Engine::cut()
{
    asked = true;
    child.signal(SIGKILL);
}

void Engine::kill()
{
    cut();
    child.end(std::chrono::seconds(1));
}

} // namespace Bench
