#pragma once

#include <cstdlib>
#include <gtest/gtest.h>
#include <juce_core/juce_core.h>

/**
    Compares a transcript with the one kept at this path below tests/. With HEADUNIT_BLESS set, which `./test --bless`
    does, it is kept from now on instead.
*/
inline void expectGolden(const juce::String& path, const juce::String& transcript)
{
    const auto file = juce::File(HEADUNIT_SOURCE_DIR).getChildFile("tests").getChildFile(path);
    if (std::getenv("HEADUNIT_BLESS") != nullptr)
    {
        ASSERT_TRUE(file.getParentDirectory().createDirectory().wasOk() &&
                    file.replaceWithText(transcript, false, false, "\n"))
            << file.getFullPathName();
        return;
    }
    const auto kept = juce::StringArray::fromLines(file.loadFileAsString());
    const auto seen = juce::StringArray::fromLines(transcript);
    for (int line = 0; line < std::max(kept.size(), seen.size()); ++line)
        ASSERT_EQ(seen[line], kept[line]) << path << ", line " << line + 1 << "; ./test --bless keeps what is new";
}
