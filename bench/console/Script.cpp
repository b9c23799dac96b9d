#include "bench/console/Script.h"

#include <charconv>
#include <utility>

namespace Bench
{

Line parseLine(const std::string& text)
{
    Line line;
    std::string word;
    bool inWord = false;
    bool inQuotes = false;
    const auto finish = [&]
    {
        if (inWord)
            line.words.push_back(std::exchange(word, {}));
        inWord = false;
    };
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const char c = text[i];
        if (inQuotes)
        {
            if (c == '\\' && i + 1 < text.size() && (text[i + 1] == '"' || text[i + 1] == '\\'))
                word += text[++i];
            else if (c == '"')
                inQuotes = false;
            else
                word += c;
        }
        else if (c == '"')
            inWord = inQuotes = true;
        else if (c == ' ' || c == '\t' || c == '\r')
            finish();
        else if (c == '#' && !inWord)
            break;
        else
        {
            inWord = true;
            word += c;
        }
    }
    finish();
    if (inQuotes)
        return { {}, "the quotes are not closed" };
    return line;
}

std::string joined(std::span<const std::string> words)
{
    std::string text;
    for (const auto& word : words)
        text += (text.empty() ? "" : " ") + word;
    return text;
}

std::string quotedLine(std::span<const std::string> words)
{
    std::string text;
    for (const auto& word : words)
    {
        text += text.empty() ? "" : " ";
        if (!word.empty() && word.find_first_of(" \t\r#\"") == std::string::npos)
        {
            text += word;
            continue;
        }
        text += '"';
        for (const char c : word)
            text += c == '"' || c == '\\' ? std::string { '\\', c } : std::string { c };
        text += '"';
    }
    return text;
}

std::optional<std::chrono::milliseconds> parseDuration(const std::string& text)
{
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    const std::string unit(end, text.data() + text.size());
    constexpr double msPerSecond = 1000;
    constexpr double longestMs = 3600 * msPerSecond;
    if (error != std::errc() || !(unit.empty() || unit == "s" || unit == "ms"))
        return {};
    const auto ms = unit == "ms" ? value : value * msPerSecond;
    if (!(ms >= 0 && ms <= longestMs))
        return {};
    return std::chrono::milliseconds(static_cast<long>(ms));
}

std::optional<int> parseNumber(const std::string& text, int lowest, int highest)
{
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    int value = 0;
    const auto* last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data() + (isHex ? 2 : 0), last, value, isHex ? 16 : 10);
    if (error != std::errc() || end != last || value < lowest || value > highest)
        return {};
    return value;
}

ParsedBytes parseBytes(std::span<const std::string> words)
{
    constexpr int highestByte = 255;
    ParsedBytes parsed;
    for (const auto& word : words)
    {
        const auto byte = parseNumber("0x" + word, 0, highestByte);
        if (!byte)
            return { {}, "'" + word + "' is no byte: two hexadecimal digits" };
        parsed.bytes.push_back(static_cast<std::uint8_t>(*byte));
    }
    return parsed;
}

std::string takeTime(Words& words, const std::string& name, std::chrono::milliseconds& time)
{
    if (words.size() < 2 || words[words.size() - 2] != name)
        return words.empty() || words.back() != name ? "" : name + " what time? For example: " + name + " 3s";
    const auto duration = parseDuration(words.back());
    if (!duration)
        return "'" + words.back() + "' is no time, for example 3s or 500ms";
    time = *duration;
    words.resize(words.size() - 2);
    return {};
}

} // namespace Bench
