#include "protocol/Entries.h"

#include "EngineApi/Catalogue.h"
#include "EngineApi/KeyCodes.h"
#include "EngineApi/ProgramTimes.h"
#include "EngineApi/Remote.h"
#include "protocol/Rules.h"

namespace Protocol
{

namespace
{

constexpr const char* toProgram = "to the program";
constexpr const char* toAll = "to all programs";
constexpr const char* fromProgram = "from the program";
constexpr const char* bothWays = "both ways";
constexpr const char* toWindow = "to the engine's window";
constexpr const char* fromWindow = "to the program's window";

const char* stateMeaning(int state)
{
    switch (state)
    {
    case EngineApi::kDisconnect:
        return "no process of it is known";
    case EngineApi::kStarting:
        return "its process has been started and has not said hello";
    case EngineApi::kConnected:
        return "it has said hello, or ran already";
    case EngineApi::kClosing:
        return "it was told to end, and its process has not ended yet";
    default:
        return "never entered";
    }
}

} // namespace

std::vector<Message> messages()
{
    return {
#define REMOTE_MESSAGE(name, number, direction, arg1, arg2, bundle, meaning, expected)                                 \
    { { #name, number, withTimes(meaning) }, direction, arg1, arg2, bundle, withTimes(expected) },
#define REMOTE_CODE(message, argument, name, number, meaning)
#include "platform/channel/RemoteMessages.def"
#undef REMOTE_MESSAGE
#undef REMOTE_CODE
    };
}

std::vector<Code> codes()
{
    return {
#define REMOTE_MESSAGE(name, number, direction, arg1, arg2, bundle, meaning, expected)
#define REMOTE_CODE(message, argument, name, number, meaning) { #message, argument, { #name, number, meaning } },
#include "platform/channel/RemoteMessages.def"
#undef REMOTE_MESSAGE
#undef REMOTE_CODE
    };
}

std::vector<Key> bundleKeys()
{
    return {
#define BUNDLE_KEY(name, text, type, meaning) { #name, text, type, meaning },
#define COMMAND_LINE(type, meaning)
#include "platform/base/BundleKeys.def"
#undef BUNDLE_KEY
#undef COMMAND_LINE
    };
}

std::vector<Entry> commandLines()
{
    return {
#define BUNDLE_KEY(name, text, type, meaning)
#define COMMAND_LINE(type, meaning) { #type, 0, meaning },
#include "platform/base/BundleKeys.def"
#undef BUNDLE_KEY
#undef COMMAND_LINE
    };
}

std::vector<Entry> programs()
{
    std::vector<Entry> all;
    for (int type = 0; type < Pubhead::AppUnknown; ++type)
        all.push_back({ Pubhead::appTypeName(type), type, type == Pubhead::AppMain ? "the engine itself" : "" });
    return all;
}

std::vector<Page> pages()
{
    std::vector<Page> all;
    for (int page = 0; page <= Pubhead::NUM_OF_PAGES; ++page)
    {
        const Entry entry { Pubhead::pageName(page), page, page == Pubhead::NUM_OF_PAGES ? "no page" : "" };
        const auto* config = EngineApi::pageScheduleConfig(page);
        if (config == nullptr)
            all.push_back({ entry, "", false, false });
        else
            all.push_back({ entry, Pubhead::appTypeName(config->appType), config->isSourcePage, config->isRear });
    }
    return all;
}

std::vector<Entry> keys()
{
    std::vector<Entry> all;
    for (const auto& key : EngineApi::allKeys())
        all.push_back({ key.name, key.value, "" });
    return all;
}

std::vector<Entry> states()
{
    std::vector<Entry> all;
    for (const int state : { EngineApi::kDisconnect, EngineApi::kStarting, EngineApi::kConnected, EngineApi::kClosing })
        all.push_back({ EngineApi::programStateName(state), state, stateMeaning(state) });
    return all;
}

std::vector<Entry> times()
{
    return {
#define PROGRAM_TIME(name, milliseconds, meaning) { #name, milliseconds, meaning },
#include "EngineApi/ProgramTimes.def"
#undef PROGRAM_TIME
    };
}

} // namespace Protocol
