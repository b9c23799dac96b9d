#include "protocol/Languages.h"

#include "platform/channel/linux/IpcSdBus.h"
#include "protocol/Entries.h"

#include <functional>

namespace Protocol
{

namespace
{

constexpr const char* what = "The messages between the head unit's engine and its source programs: names and numbers. "
                             "source-programs.md says how they are used.";

/** How a language writes what there is. */
struct Language
{
    std::function<std::string(const std::string& title, const std::vector<Entry>&)> numbers;
    std::function<std::string(const std::string& name, const std::string& text, const std::string& comment)> text;
};

std::string quoted(const std::string& text)
{
    return "\"" + text + "\"";
}

std::string contents(const Language& language)
{
    std::vector<Entry> messageNumbers, codeNumbers, pageNumbers, timeNumbers;
    for (const auto& each : messages())
        messageNumbers.push_back({ each.entry.name, each.entry.number, each.direction + ": " + each.entry.meaning });
    for (const auto& each : codes())
        codeNumbers.push_back(
            { each.entry.name, each.entry.number, each.argument + " of " + each.message + ": " + each.entry.meaning });
    for (const auto& each : pages())
        pageNumbers.push_back(
            { each.entry.name, each.entry.number, each.program.empty() ? each.entry.meaning : "of " + each.program });
    std::string text = language.text("ENDPOINT_PATH", Platform::endpointPath, "the object of every program") +
                       language.text("ENDPOINT_INTERFACE", Platform::endpointInterface, "and its interface");
    text += language.numbers("messages: what", messageNumbers) + language.numbers("values of arguments", codeNumbers) +
            language.numbers("programs: their types, and the names behind BUS_NAME", programs()) +
            language.numbers("pages", pageNumbers) + language.numbers("keys: arg1 of RMSG_KEY", keys()) +
            language.numbers("times in milliseconds", times());
    for (const auto& each : bundleKeys())
        text += language.text(each.name, each.text, each.type + ": " + each.meaning);
    for (const auto& each : commandLines())
        text += language.text(each.name, each.name, "type of a command line: " + each.meaning);
    return text;
}

std::string cNumbers(const std::string& title, const std::vector<Entry>& entries)
{
    std::string text = "\n/* " + title + " */\nenum\n{\n";
    for (const auto& each : entries)
        text += "    HU_" + each.name + " = " + std::to_string(each.number) + (&each == &entries.back() ? "" : ",") +
                (each.meaning.empty() ? "" : " /* " + each.meaning + " */") + "\n";
    return text + "};\n";
}

std::string pythonNumbers(const std::string& title, const std::vector<Entry>& entries)
{
    std::string text = "\n# " + title + "\n";
    for (const auto& each : entries)
        text += each.name + " = " + std::to_string(each.number) + (each.meaning.empty() ? "" : "  # " + each.meaning) +
                "\n";
    return text;
}

} // namespace

std::string header()
{
    const Language c { cNumbers, [](const std::string& name, const std::string& text, const std::string& comment)
                       { return "#define HU_" + name + " " + quoted(text) + " /* " + comment + " */\n"; } };
    return std::string("/* ") + what + " */\n#ifndef HEADUNIT_PROTOCOL_H\n#define HEADUNIT_PROTOCOL_H\n\n" +
           "/* HU_BUS_NAME(AppMain): the name of a program on the bus */\n#define HU_BUS_NAME(program) " +
           quoted(Platform::busNamePrefix) + " #program\n" + contents(c) + "\n#endif\n";
}

std::string pythonModule()
{
    const Language python { pythonNumbers,
                            [](const std::string& name, const std::string& text, const std::string& comment)
                            { return name + " = " + quoted(text) + "  # " + comment + "\n"; } };
    return std::string("\"\"\"") + what + "\"\"\"\n\nBUS_NAME = " + quoted(Platform::busNamePrefix) +
           "  # and the name of a program: BUS_NAME + \"AppMain\"\n" + contents(python);
}

} // namespace Protocol
