#include "platform/Utf8.h"

#include <gtest/gtest.h>

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
