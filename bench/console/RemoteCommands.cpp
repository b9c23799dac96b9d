// The wired remote at the console.
#include "bench/console/Console.h"

#include <ostream>

namespace Bench
{

Outcome Console::remote(const Words& words)
{
    const auto what = words.size() > 1 ? words[1] : std::string("show");
    auto& remote = unit.remote;
    constexpr const char* notTaken = "the remote is unplugged, or the unit does not read";
    if (words.size() <= 2 && what == "show")
    {
        const auto display = remote->display();
        const auto bar = std::string("────────────────");
        output << "  ┌" << bar << "┐\n"
               << "  │" << style.bold(display.line(0)) << "│\n"
               << "  │" << style.bold(display.line(1)) << "│" << style.dim(remote->isPlugged() ? "" : "  unplugged")
               << "\n"
               << "  └" << bar << "┘\n";
        return {};
    }
    if (words.size() == 2 && what == "unplug")
        remote->unplug();
    else if (words.size() == 2 && what == "plug")
    {
        if (auto error = remote->plug(); !error.empty())
            return failed(error);
    }
    else if (what == "stall" && (words.size() == 2 || (words.size() == 3 && words[2] == "off")))
        remote->stall(words.size() == 2);
    else if (what == "hold" && words.size() == 4)
    {
        const auto key = WiredRemote::findKey(words[2]);
        const auto duration = parseDuration(words[3]);
        if (!key || !duration)
            return failed("remote hold KEY TIME, for example: remote hold rotary-next 2s");
        remote->hold(*key, *duration);
    }
    else if (what == "bytes" && words.size() >= 3)
    {
        std::vector<std::uint8_t> bytes;
        for (auto word = words.begin() + 2; word != words.end(); ++word)
        {
            constexpr int highestByte = 255;
            const auto byte = parseNumber("0x" + *word, 0, highestByte);
            if (!byte)
                return failed("'" + *word + "' is no byte: two hexadecimal digits");
            bytes.push_back(static_cast<std::uint8_t>(*byte));
        }
        return remote->sendBytes(bytes) ? Outcome {} : failed(notTaken);
    }
    else if (const auto key = WiredRemote::findKey(what); key && words.size() == 2)
    {
        moveFinger();
        return remote->press(*key) ? Outcome {} : failed(notTaken);
    }
    else
        return failed("the remote has no '" + what + "', see help remote");
    return {};
}

} // namespace Bench
