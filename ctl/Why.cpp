#include "ctl/Why.h"

#include "ctl/Fields.h"
#include "ctl/Reports.h"
#include "ctl/Table.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

namespace Ctl
{

namespace
{

/** Where names are to be had from. */
struct NameSource
{
    std::string_view parameter;
    const char* method;
    std::vector<std::string> parameters;
    const char* key;
    std::string_view prefix;
};

bool isSame(std::string_view one, std::string_view other)
{
    const auto lower = [](unsigned char c) { return std::tolower(c); };
    return std::ranges::equal(one, other, {}, lower, lower);
}

} // namespace

std::span<const Question> questions()
{
    static constexpr std::array table {
        Question { "page", "page", "PAGE", "Why a page is on the screen, or not." },
        Question { "source", "source", "PAGE", "Why a source is heard, or not." },
        Question { "silent", "silent", nullptr, "Why nothing is heard." },
        Question { "request", "request", "REQUEST", "What became of a request, by its number." },
        Question { "not running", "program", "PROGRAM", "Why a program does not run." },
    };
    return table;
}

std::string fullName(Client& client, const std::string& parameter, const std::string& given)
{
    static const std::array sources { NameSource { "PAGE", "Pages", {}, "page", "mb" },
                                      NameSource { "PROGRAM", "Programs", {}, "program", "App" },
                                      NameSource { "NAME", "Settings", { "" }, "name", "" } };
    const auto* source = std::ranges::find(sources, parameter, &NameSource::parameter);
    if (source == sources.end() || given.empty())
        return given;
    const auto answer = client.ask(source->method, source->parameters);
    for (const auto& record : answer.value.is_array() ? answer.value : Json::array())
    {
        const auto name = Fields(record)[source->key];
        if (isSame(name, given) || isSame(name, std::string(source->prefix) + given))
            return name;
    }
    return given;
}

Answer askWhy(Client& client, const Question& question, const std::string& parameter)
{
    const auto name = question.parameter != nullptr ? fullName(client, question.parameter, parameter) : "";
    return client.ask("Why", { question.subject, name });
}

std::string whyText(const Json& answer, const Style& style)
{
    const Fields why(answer);
    constexpr int indent = 4;
    auto text = style.bold(broken(why["sentence"], style.width, 0)) + "\n";
    for (const auto& fact : why.list("facts"))
        text += "  " + style.dim("-") + " " + broken(fact, style.width > 0 ? style.width - indent : 0, indent) + "\n";
    return text + busyText(answer, style);
}

} // namespace Ctl
