#include "bench/panel/RequestWords.h"

#include "bench/text/Names.h"

#include <algorithm>
#include <array>

namespace BenchPanel
{

namespace
{

struct AskerTitle
{
    const char* asker; ///< as the engine names it
    const char* title;
};
constexpr std::array askerTitles { AskerTitle { "KeyManager", "A key" },
                                   AskerTitle { "DeviceStatusManager", "The microcontroller" },
                                   AskerTitle { "NavicoManager", "The boat's network" },
                                   AskerTitle { "SystemStateManager", "The unit's state" },
                                   AskerTitle { "GeneralApplication", "The unit" },
                                   AskerTitle { "the system", "The system" } };

/** "RadioApplication (mbFM)" is the radio's page, "KeyManager" a key. */
std::string titleOf(const std::string& asker)
{
    if (const auto bracket = asker.find('('); bracket != std::string::npos)
        return withTitles(asker.substr(bracket + 1, asker.find(')') - bracket - 1));
    const auto* found = std::ranges::find(askerTitles, asker, &AskerTitle::asker);
    return found != askerTitles.end() ? found->title : asker;
}

std::string verbOf(const std::string& action)
{
    return action == "ToStop" ? " stopped " : action == "ToHide" ? " hid " : " asked for ";
}

} // namespace

std::string withTitles(std::string sentence)
{
    for (const auto& info : Bench::allPages())
    {
        const std::string name = Pubhead::pageName(info.page), title = info.title;
        for (auto at = sentence.find(name); at != std::string::npos; at = sentence.find(name, at + title.size()))
            sentence.replace(at, name.size(), title);
    }
    return sentence;
}

RequestWords wordsOf(const Ctl::Json& request)
{
    using Kind = RequestWords::Kind;
    const Ctl::Fields told(request);
    const auto status = told["status"], because = withTitles(told["because"]), time = told.time("finishedUs");
    RequestWords words { told.number("number").value_or(0), {}, {}, Kind::open };
    const auto asker = titleOf(told["asker"]), page = withTitles(told["page"]);
    words.asked = asker + verbOf(told["action"]) + (asker == page ? "its page" : page);
    words.kind = status == "done"      ? Kind::done
                 : status == "refused" ? Kind::refused
                 : status == "failed"  ? Kind::failed
                                       : Kind::open;
    words.outcome =
        status + (words.kind == Kind::done || words.kind == Kind::failed ? " in " + time : "") + ": " + because;
    return words;
}

} // namespace BenchPanel
