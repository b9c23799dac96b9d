#pragma once

#include <juce_core/juce_core.h>

/**
    A sound that can be played in a loop, from a description (see alert_49.toml): struck tones, each of which dies away
    exponentially; what is still to be heard at the end goes on at the beginning, so that the loop has no seam. Written
   as WAV, 16 bits, one channel.
*/
juce::Result makeChime(const juce::File& description, const juce::File& wav);
