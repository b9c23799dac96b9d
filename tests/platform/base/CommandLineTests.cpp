#include "platform/base/CommandLine.h"
#include "platform/base/Pubhead.h"
#include "platform/channel/Ipc.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace Platform;
using namespace Pubhead;
using nlohmann::json;

namespace
{

json jsonOf(const AppCommandLine::Ptr& commandLine)
{
    return json::parse(CmdLineHelper::genCommandLine(RemoteObjFormat::formatCommandLine(*commandLine)).toStdString());
}

} // namespace

TEST(CommandLine, EachTypeHasItsKeysAndComesBackTheSame)
{
    struct Case
    {
        AppCommandLine::Ptr commandLine;
        const char* text;
        bool front;
    };
    const Case cases[] = {
        { AppCommandLine::genCmdPageShow(mbFM, true),
          R"({"commandLine": {"type": "pageShow", "page": 52, "flag": true}})", true },
        { AppCommandLine::genCmdPageHide(mbFM, NUM_OF_PAGES),
          R"({"commandLine": {"type": "pageHide", "page": 52, "otherPage": 55}})", false },
        { AppCommandLine::genCmdSourceEnter(mbUSBAudio, false, true),
          R"({"commandLine": {"type": "sourceEnter", "page": 6, "flag": false, "onTop": true}})", true },
        { AppCommandLine::genCmdSourceEnter(mbUSBAudio, true, false),
          R"({"commandLine": {"type": "sourceEnter", "page": 6, "flag": true, "onTop": false}})", false },
        { AppCommandLine::genCmdSourceExit(mbUSBAudio, mbFM),
          R"({"commandLine": {"type": "sourceExit", "page": 6, "otherPage": 52}})", false },
    };
    for (const auto& each : cases)
    {
        SCOPED_TRACE(each.text);
        EXPECT_EQ(jsonOf(each.commandLine), json::parse(each.text));
        EXPECT_EQ(each.commandLine->isFrontShow(), each.front);
        const auto back = RemoteObjFormat::generateCommandLine(CmdLineHelper::parseCommandLine(each.text));
        ASSERT_NE(back, nullptr);
        EXPECT_EQ(jsonOf(back), json::parse(each.text));
    }
}

TEST(CommandLine, ExtraDataGoesAlongUnlessItIsEmpty)
{
    const auto commandLine = AppCommandLine::genCmdPageShow(mbSetup, false);
    commandLine->putExtraData(Bundle::obtain());
    EXPECT_FALSE(jsonOf(commandLine)["commandLine"].contains("extra"));

    const auto nested = Bundle::obtain();
    nested->putBool("on", true);
    const auto extra = Bundle::obtain();
    extra->putInt("index", -1);
    extra->putString("text", juce::CharPointer_UTF8("\"Stra\xc3\x9f"
                                                    "e\"\n"));
    extra->putByteArray("bytes", "\x00\x80\xff", 3);
    extra->putBundle("nested", nested);
    extra->putBundleList("list", { nested, nested });
    commandLine->putExtraData(extra);
    const auto text = CmdLineHelper::genCommandLine(RemoteObjFormat::formatCommandLine(*commandLine));
    EXPECT_EQ(json::parse(text.toStdString())["commandLine"]["extra"]["bytes"], json::parse("[0, 128, 255]"));

    const auto back = RemoteObjFormat::generateCommandLine(CmdLineHelper::parseCommandLine(text));
    ASSERT_NE(back, nullptr);
    ASSERT_TRUE(back->hasExtraData());
    EXPECT_EQ(back->getExtraData()->getInt("index", 0), -1);
    EXPECT_EQ(back->getExtraData()->getString("text", {}), extra->getString("text", {}));
    EXPECT_EQ(back->getExtraData()->getByteArray("bytes"), juce::MemoryBlock("\x00\x80\xff", 3));
    EXPECT_TRUE(back->getExtraData()->getBundle("nested")->getBool("on", false));
    EXPECT_EQ(back->getExtraData()->getBundleList("list").size(), 2u);
}

TEST(CommandLine, WhatIsNoneIsRefusedAndWhatDoesNotFitLeftOut)
{
    const std::string deep = R"({"commandLine": {"type": "pageShow", "page": 1, "extra": )";
    std::string nested;
    for (int level = 0; level < 100000; ++level)
        nested += "{\"a\":";
    const std::string hostile = deep + nested + "1" + std::string(100000, '}') + "}}";
    for (const char* text :
         { "", "pageShow", "[]", "{}", "null", R"({"commandLine": 1})", R"({"commandLine": {}})",
           R"({"commandLine": {"page": 1}})", R"({"commandLine": {"type": "pageShow"}})",
           R"({"commandLine": {"type": "show", "page": 1}})", R"({"commandLine": {"type": 0, "page": 1}})",
           R"({"commandLine": {"type": "pageShow", "page": 56}})",
           R"({"commandLine": {"type": "pageShow", "page": 18446744073709551615}})",
           R"({"commandLine": {"type": "pageHide", "page": 1, "otherPage": -1}})",
           R"({"commandLine": {"type": "pageShow", "page": 1})" })
        EXPECT_EQ(CmdLineHelper::parseCommandLine(text), nullptr) << text;
    EXPECT_NE(CmdLineHelper::parseCommandLine(juce::String(hostile)), nullptr);

    const auto odd = RemoteObjFormat::generateCommandLine(CmdLineHelper::parseCommandLine(
        R"({"commandLine": {"type": "pageShow", "page": 1, "extra":
            {"half": 1.5, "none": null, "mixed": [1, {}], "large": 4294967295, "bytes": [256], "int": 2147483647}}})"));
    ASSERT_NE(odd, nullptr);
    EXPECT_EQ(odd->getExtraData()->getValues().size(), 1u);
    EXPECT_EQ(odd->getExtraData()->getInt("int", 0), std::numeric_limits<juce::int32>::max());

    EXPECT_EQ(CmdLineHelper::genCommandLine(nullptr), "");
    EXPECT_EQ(CmdLineHelper::genCommandLine(RemoteObjFormat::formatInt(3)), "");
}

TEST(Bundle, AnswersTheDefaultForWhatItDoesNotHold)
{
    const auto bundle = Bundle::obtain();
    bundle->putInt("key", 1);
    EXPECT_EQ(bundle->getString("key", "x"), "x") << "another type";
    EXPECT_EQ(bundle->getBundle("key"), nullptr);
    EXPECT_FALSE(bundle->getBool("absent", false));
    bundle->putString("key", "text");
    EXPECT_EQ(bundle->getInt("key", 5), 5) << "the later value took its place";
    bundle->putBundle("null", nullptr);
    bundle->putBundleList("list", { nullptr });
    EXPECT_EQ(bundle->getValues().size(), 2u);
    EXPECT_TRUE(bundle->getBundleList("list").empty());

    EXPECT_EQ(RemoteObjFormat::getInt(nullptr, 9), 9);
}

/** A message that somebody still holds is not handed to the next one. */
TEST(RemoteMessagePool, TakesBackOnlyWhatNobodyHolds)
{
    auto message = RemoteMessage::obtain();
    message->what = 5;
    message->bundle = Bundle::obtain();
    const auto holder = message;
    RemoteMessage::recycle(std::move(message));
    EXPECT_EQ(holder->what, 5);
    auto other = RemoteMessage::obtain();
    EXPECT_NE(other.get(), holder.get());

    auto* known = other.get();
    other->appType = AppUSB;
    RemoteMessage::recycle(std::move(other));
    const auto again = RemoteMessage::obtain();
    EXPECT_EQ(again.get(), known);
    EXPECT_EQ(again->appType, AppMain);
}
