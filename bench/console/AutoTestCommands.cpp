// The factory's test equipment on the console.
#include "bench/console/Console.h"

#include <algorithm>

namespace Bench
{

namespace
{

constexpr int mostFrames = 1000;

std::string restOf(const Words& words)
{
    std::string text = words[2];
    for (auto word = words.begin() + 3; word != words.end(); ++word)
        text += " " + *word;
    return text;
}

/** A command whose parameters are numbers of one byte. */
struct NumberCommand
{
    const char* name;
    std::size_t least, most; ///< parameters; one left out is 0
    void (*run)(TestEquipment& equipment, const std::array<std::uint8_t, 2>& numbers);
};

constexpr NumberCommand numberCommands[] = {
    { "enter", 0, 0, [](auto& equipment, auto&) { equipment.enterTestMode(); } },
    { "leave", 0, 0, [](auto& equipment, auto&) { equipment.leaveTestMode(); } },
    { "key", 1, 2, [](auto& equipment, auto& numbers) { equipment.pressKey(numbers[0], numbers[1]); } },
    { "source", 2, 2, [](auto& equipment, auto& numbers) { equipment.requestSource(numbers[0], numbers[1]); } },
    { "states", 0, 0, [](auto& equipment, auto&) { equipment.requestDeviceStates(); } },
    { "volume", 1, 1, [](auto& equipment, auto& numbers) { equipment.setVolume(numbers[0]); } },
    { "text", 1, 1, [](auto& equipment, auto& numbers) { equipment.requestText(numbers[0]); } },
    { "again", 0, 0, [](auto& equipment, auto&) { equipment.askAgain(); } },
    { "ack", 0, 0, [](auto& equipment, auto&) { equipment.acknowledge(); } },
    { "hold", 0, 0, [](auto& equipment, auto&) { equipment.hold(true); } },
    { "go", 0, 0, [](auto& equipment, auto&) { equipment.hold(false); } },
};

} // namespace

Outcome Console::autotest(const Words& words)
{
    constexpr int highestByte = 255;
    const auto what = words.size() > 1 ? words[1] : std::string();
    const auto turn = unit.testEquipment.use();
    auto& equipment = *turn;
    if (what == "id" && words.size() >= 3)
    {
        const auto text = restOf(words);
        if (text.size() > TestEquipment::longestId)
            return failed("an id has at most " + std::to_string(TestEquipment::longestId) + " characters");
        equipment.setDeviceId(text);
        return {};
    }
    if (what == "send" && words.size() >= 3)
    {
        const auto content = parseBytes(std::span(words).subspan(2));
        if (!content.error.empty())
            return failed(content.error);
        if (content.bytes.size() > TestEquipment::longestContent)
            return failed("a command with its parameters has at most " + std::to_string(TestEquipment::longestContent) +
                          " bytes");
        equipment.send(content.bytes);
        return {};
    }
    if (what == "damage" && words.size() <= 3)
    {
        const auto count = words.size() == 3 ? parseNumber(words[2], 0, mostFrames) : std::optional(1);
        if (!count)
            return failed("'" + words[2] + "' is no count: 0 to 1000 frames");
        equipment.damageNext(*count);
        return {};
    }
    const auto* command = std::ranges::find(numberCommands, what, &NumberCommand::name);
    if (command == std::end(numberCommands) || words.size() < 2 + command->least || words.size() > 2 + command->most)
        return usageOf("autotest");
    std::array<std::uint8_t, 2> numbers {};
    for (std::size_t i = 2; i < words.size(); ++i)
    {
        const auto number = parseNumber(words[i], 0, highestByte);
        if (!number)
            return failed("'" + words[i] + "' is no number from 0 to 255");
        numbers[i - 2] = static_cast<std::uint8_t>(*number);
    }
    command->run(equipment, numbers);
    return {};
}

} // namespace Bench
