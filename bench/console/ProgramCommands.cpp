// The source programs, at the console.
#include "bench/console/Console.h"
#include "bench/unit/Settings.h"

#include <array>
#include <limits>

namespace Bench
{

using namespace Pubhead;

namespace
{

Outcome ifEmpty(const std::string& error)
{
    return error.empty() ? Outcome {} : failed(error);
}

Outcome ifTaken(bool taken, int appType)
{
    return taken ? Outcome {} : failed(std::string(appTypeName(appType)) + " does not run");
}

std::string joined(const Words& words, std::size_t from)
{
    std::string text;
    for (auto i = from; i < words.size(); ++i)
        text += (text.empty() ? "" : " ") + words[i];
    return text;
}

} // namespace

Outcome Console::program(const Words& words)
{
    if (words.size() < 3)
        return usageOf("program");
    const auto appType = findApp(words[1]);
    if (appType == AppUnknown)
        return failed("there is no program '" + words[1] + "'");
    const auto& what = words[2];
    auto& programs = unit.programs;
    if ((what == "show" || what == "stop") && words.size() <= 4)
    {
        const auto named = findPage(words.size() == 4 ? words[3] : words[1]);
        const auto page = named != NUM_OF_PAGES ? named : pageOfApp(appType)->page;
        if ((words.size() == 4 && named == NUM_OF_PAGES) || pageInfo(page)->appType != appType)
            return failed(std::string(appTypeName(appType)) + " has no page '" + words.back() + "'");
        const auto error = what == "show" ? programs.requestPage(page) : programs.stopPage(page);
        return ifEmpty(error);
    }
    if (what == "crash" && words.size() == 3)
        return ifTaken(programs.crash(appType), appType);
    if (what == "hang" && words.size() == 3)
        return ifTaken(programs.hang(appType), appType);
    if (what == "wake" && words.size() == 3)
        return ifTaken(programs.wakeUp(appType), appType);
    if (what == "exit" && words.size() == 3)
        return ifTaken(programs.exit(appType), appType);
    if (what == "silent" && (words.size() == 3 || (words.size() == 4 && words[3] == "off")))
        return ifTaken(programs.setSilent(appType, words.size() == 3), appType);
    if (what == "set" && words.size() == 5)
    {
        const auto setting = findSetting(words[3]);
        return setting ? ifTaken(programs.changeSetting(appType, *setting, words[4]), appType)
                       : failed("there is no setting '" + words[3] + "'");
    }
    if (what == "do" && words.size() >= 4)
        return ifEmpty(programs.tell(appType, joined(words, 3)));
    if (what == "text" && words.size() == 5)
        return ifTaken(programs.showOnRemote(appType, words[3], words[4]), appType);
    if (what == "slow" && words.size() == 4)
    {
        const auto delay = words[3] == "off" ? std::chrono::milliseconds(0) : parseDuration(words[3]);
        return delay ? ifTaken(programs.setSlow(appType, *delay), appType)
                     : failed("'" + words[3] + "' is no time, for example 800ms, or off");
    }
    if ((what == "send" || what == "window") && words.size() >= 4 && words.size() <= 6)
    {
        std::array<int, 3> values {};
        for (std::size_t i = 3; i < words.size(); ++i)
        {
            const auto number = parseNumber(words[i], std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
            if (!number)
                return failed("'" + words[i] + "' is no number");
            values[i - 3] = *number;
        }
        const bool taken = what == "send" ? programs.sendMessage(appType, values[0], values[1], values[2])
                                          : programs.sendWindowMessage(appType, values[0], values[1], values[2]);
        return ifTaken(taken, appType);
    }
    return usageOf("program");
}

Outcome Console::menu(const Words& words)
{
    return words.size() != 2 ? usageOf("menu") : ifEmpty(unit.programs.tell(AppMainMenu, words[1]));
}

Outcome Console::bluetooth(const Words& words)
{
    return words.size() < 2 ? usageOf("bt") : ifEmpty(unit.programs.tell(AppBluetooth, joined(words, 1)));
}

Outcome Console::iPod(const Words& words)
{
    return words.size() < 2 ? usageOf("ipod") : ifEmpty(unit.programs.tell(AppiPod, joined(words, 1)));
}

Outcome Console::satellite(const Words& words)
{
    return words.size() < 2 ? usageOf("satellite") : ifEmpty(unit.programs.tell(AppSirius, joined(words, 1)));
}

Outcome Console::unlock(const Words& words)
{
    return words.size() != 2 ? usageOf("unlock") : ifEmpty(unit.programs.tell(AppAntitheft, words[1]));
}

Outcome Console::set(const Words& words)
{
    if (words.size() != 3)
        return usageOf("set");
    const auto setting = findSetting(words[1]);
    return setting ? ifEmpty(unit.programs.changeSetting(*setting, words[2]))
                   : failed("there is no setting '" + words[1] + "'");
}

} // namespace Bench
