#include "platform/base/Utf8.h"

#include <gtest/gtest.h>
#include <vector>

TEST(Utf8, ReplacesWhatIsMalformed)
{
    struct Case
    {
        std::string_view bytes;
        const char* text;
    };
    for (const auto& [bytes, text] :
         { Case { "Zone \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x90\x9F", "Zone \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x90\x9F" },
           Case { "a\xC3", "a\xEF\xBF\xBD" }, Case { "\xFF z", "\xEF\xBF\xBD z" }, Case { "\"\\\n", "\"\\\n" },
           Case { "overlong \xC0\x80.", "overlong \xEF\xBF\xBD\xEF\xBF\xBD." },
           Case { std::string_view("cut\0here", 8), "cut" }, Case { "", "" } })
        EXPECT_EQ(Platform::textOfUtf8(bytes), juce::String::fromUTF8(text)) << bytes;
}

TEST(Utf8, IsCutBetweenCharacters)
{
    const auto text = juce::String::fromUTF8("a\xC3\xA9\xE2\x82\xAC!");
    const std::vector<std::string> byLength {
        "", "a", "a", "a\xC3\xA9", "a\xC3\xA9", "a\xC3\xA9", "a\xC3\xA9\xE2\x82\xAC"
    };
    for (std::size_t longest = 0; longest < byLength.size(); ++longest)
        EXPECT_EQ(Platform::utf8Prefix(text, longest), byLength[longest]) << longest;
    EXPECT_EQ(Platform::utf8Prefix(text, 100), text.toStdString());
}
