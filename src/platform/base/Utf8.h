#pragma once

#include <juce_core/juce_core.h>
#include <string_view>

namespace Platform
{

/**
    The text of bytes from outside, up to the first null. What is not well-formed UTF-8 becomes U+FFFD: the string class
    itself takes any bytes and then reads past its end.
*/
juce::String textOfUtf8(std::string_view bytes);

/** The text's bytes, at most so many, cut between two characters. The view holds while the text does. */
std::string_view utf8Prefix(const juce::String& text, std::size_t longest);

} // namespace Platform
