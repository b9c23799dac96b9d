#include "bench/panel/RequestWords.h"

#include "bench/text/Names.h"

#include <array>
#include <cctype>
#include <regex>

namespace BenchPanel
{

namespace
{

struct AskerTitle
{
    const char* asker; ///< as the engine names it
    const char* title;
};
constexpr std::array askerTitles { AskerTitle { "KeyManager", "a key" },
                                   AskerTitle { "DeviceStatusManager", "the microcontroller" },
                                   AskerTitle { "NavicoManager", "the boat's network" },
                                   AskerTitle { "SystemStateManager", "the unit's state" },
                                   AskerTitle { "GeneralApplication", "the unit" },
                                   AskerTitle { "MainMenuApplication", "the main menu" },
                                   AskerTitle { "SetupApplication", "the setup" },
                                   AskerTitle { "BluetoothApplication", "Bluetooth" },
                                   AskerTitle { "RadioApplication", "the radio" },
                                   AskerTitle { "UsbApplication", "USB" },
                                   AskerTitle { "iPodApplication", "the iPod" },
                                   AskerTitle { "SiriusApplication", "the satellite radio" },
                                   AskerTitle { "AuxInApplication", "AUX" } };

void replaceAll(std::string& text, const std::string& name, const std::string& title)
{
    for (auto at = text.find(name); at != std::string::npos; at = text.find(name, at + title.size()))
        text.replace(at, name.size(), title);
}

std::string verbOf(const std::string& action)
{
    return action == "ToStop" ? " stopped " : action == "ToHide" ? " hid " : " asked for ";
}

} // namespace

std::string withTitles(std::string sentence)
{
    // "RadioApplication (mbFM)" is the radio's page, "KeyManager" a key.
    static const std::regex ofPage(R"(\w+Application \((\w+)\))");
    sentence = std::regex_replace(sentence, ofPage, "$1");
    for (const auto& info : Bench::allPages())
        replaceAll(sentence, Pubhead::pageName(info.page), info.title);
    for (const auto& [asker, title] : askerTitles)
        replaceAll(sentence, asker, title);
    return sentence;
}

RequestWords wordsOf(const Ctl::Json& request)
{
    using Kind = RequestWords::Kind;
    const Ctl::Fields told(request);
    const auto status = told["status"], because = withTitles(told["because"]), time = told.time("finishedUs");
    RequestWords words { told.number("number").value_or(0), {}, {}, Kind::open };
    const auto asker = withTitles(told["asker"]), page = withTitles(told["page"]);
    words.asked = asker + verbOf(told["action"]) + (asker == page ? "its page" : page);
    words.asked[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(words.asked[0])));
    words.kind = status == "done"      ? Kind::done
                 : status == "refused" ? Kind::refused
                 : status == "failed"  ? Kind::failed
                                       : Kind::open;
    words.outcome =
        status + (words.kind == Kind::done || words.kind == Kind::failed ? " in " + time : "") + ": " + because;
    return words;
}

} // namespace BenchPanel
