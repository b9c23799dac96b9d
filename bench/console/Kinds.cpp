#include "bench/console/Kinds.h"

#include "bench/console/EventText.h"
#include "bench/mcu/Mcu.h"
#include "bench/network/NetworkDecode.h"
#include "bench/program/PageLayout.h"
#include "bench/remote/WiredRemote.h"
#include "bench/unit/Settings.h"
#include "bench/unit/Unit.h"
#include "ctl/Trace.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace Bench
{

namespace
{

Kind number(const char* name, int lowest, int highest)
{
    return { name, std::to_string(lowest) + " to " + std::to_string(highest),
             [=](const std::string& word) { return parseNumber(word, lowest, highest).has_value(); } };
}

Kind decimal(const char* name, double lowest, double highest, const char* meaning)
{
    return { name, meaning, [=](const std::string& word) { return parseDecimal(word, lowest, highest).has_value(); } };
}

Words sectionNames()
{
    auto names = appNames();
    names.insert(names.begin(), { "mcu", "devices" });
    return names;
}

/** What the names of the DSP's outputs are made of. */
const Words& outputWords()
{
    static const Words words { "front", "rear", "line", "output", "A", "B", "left", "right", "subwoofer" };
    return words;
}

Words groupWords()
{
    return { groupNames().begin(), groupNames().end() };
}

bool isByte(const std::string& word)
{
    return parseBytes(std::span(&word, 1)).error.empty();
}

bool isPage(const std::string& word)
{
    return findPage(word) != Pubhead::NUM_OF_PAGES;
}

bool isProgram(const std::string& word)
{
    return findApp(word) != Pubhead::AppUnknown;
}

bool isSource(const std::string& word)
{
    return findSource(std::span(&word, 1)).has_value();
}

constexpr int highestByte = 255;

} // namespace

std::span<const Kind> allKinds()
{
    static const Kind kinds[] = {
        number("AMOUNT", 0, 1000),
        { "BYTE", "two hexadecimal digits", isByte },
        number("BRIGHTNESS", 0, 11),
        number("COUNT", 1, 100'000),
        { "FRAME", "a name (EVENT_SRC_SWITCH, IND_KEY ...) or 1 to 32767",
          [](auto& word) { return commandOfName(word) >= 0; }, commandNames },
        { "FREQUENCY", "87.5 to 108 on FM, 522 to 1710 on AM",
          [](auto& word) { return Tuner::parseFrequency(word).has_value(); } },
        { "GROUP", joined(groupWords()),
          [](auto& word) { return std::ranges::find(groupNames(), word) != groupNames().end(); }, groupWords },
        number("ITEM", 0, highestByte),
        { "KEY", "a name (menu, source ...) or 0 to 255", [](auto& word) { return findKey(word).has_value(); },
          keyNames },
        { "KEY-LIST", "a KEY, or several with commas between them", [](auto& word) { return !findKeys(word).empty(); },
          keyNames },
        number("LEVEL", -128, 127),
        number("LINE", 0, 65'535),
        { "MESSAGE", "a name (RMSG_APP_EVENT) or 0 to 2147483647",
          [](auto& word) { return findMessage(word).has_value(); }, messageNames },
        number("NUMBER", 0, highestByte),
        number("ORIGIN", 0, highestByte),
        { "OUTPUT", "front, rear, line front, line rear, output A, output B, left, right or subwoofer",
          [](auto& word) { return std::ranges::find(outputWords(), word) != outputWords().end(); }, outputWords },
        { "PAGE", "a name (mbEQ) or a short one (eq)", isPage, pageNames },
        number("PARAMETER", std::numeric_limits<int>::min(), std::numeric_limits<int>::max()),
        number("PERCENT", 0, highestByte),
        number("PGN", 0, Pgn::highest),
        number("PORT", 0, 65'535),
        { "PROGRAM", "a name (AppRadio), a short one (radio) or one of its pages", isProgram,
          []
          {
              auto names = appNames();
              std::ranges::copy(pageNames(), std::back_inserter(names));
              return names;
          } },
        number("RATE", 1, McuSeries::mostPerSecond),
        { "REMOTE-KEY", "a name (source, rotary-next ...)",
          [](auto& word) { return WiredRemote::findKey(word).has_value(); },
          [] { return namesIn(WiredRemote::keys()); } },
        number("REQUEST", 1, std::numeric_limits<int>::max()),
        number("SECONDS", 1, Ctl::longestTraceSeconds),
        { "SECTION", "mcu, devices or a PROGRAM",
          [](auto& word) { return word == "mcu" || word == "devices" || isProgram(word); }, sectionNames },
        { "SETTING", "a name (eq-preset) or 0 to " + std::to_string(highestSetting()),
          [](auto& word) { return findSetting(word).has_value(); }, settingNames },
        { "SOURCE", "am fm disc aux sirius ipod usb bt off pandora wb, or a type, 0 to 255", isSource, sourceNames },
        { "SPEED", "0.01 to 1000, or 2x; 1 is the file's own",
          [](auto& word) { return parseSpeed(word).has_value(); } },
        number("STORAGE", 1, Unit::usbCount),
        { "SUBJECT", "pages, mcu, programs, sound, network, remote, log or unit",
          [](auto& word) { return findSubject(word) != nullptr; }, [] { return namesIn(allSubjects()); } },
        { "TIME", "for example 3s or 500ms, at most an hour",
          [](auto& word) { return parseDuration(word).has_value(); } },
        { "TONE", "fader, balance, subwoofer, treble, middle or bass",
          [](auto& word) { return std::ranges::find(toneFields, word, &ToneField::name) != toneFields.end(); },
          [] { return namesIn(toneFields); } },
        decimal("VOLTS", 0, 25.2, "0 to 25.2"),
        number("X", 0, BenchProgram::PageLayout::width - 1),
        number("Y", 0, BenchProgram::PageLayout::height - 1),
        number("ZONE", 0, highestByte),
    };
    return kinds;
}

const Kind* findKind(const std::string& name)
{
    const auto kinds = allKinds();
    const auto found = std::ranges::find(kinds, name, &Kind::name);
    return found != kinds.end() ? &*found : nullptr;
}

std::optional<double> parseDecimal(const std::string& text, double lowest, double highest)
{
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole && value >= lowest && value <= highest ? std::optional(value) : std::nullopt;
}

std::optional<double> parseSpeed(const std::string& text)
{
    constexpr double slowest = 0.01, fastest = 1000;
    return parseDecimal(text.substr(0, text.size() - (text.ends_with('x') ? 1 : 0)), slowest, fastest);
}

} // namespace Bench
