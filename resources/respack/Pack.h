#pragma once

#include <juce_core/juce_core.h>

/**
    A resource pack made from a folder. A file `NAME.xml` becomes the layout `NAME.bin`, a file `NAME.svg` the picture
    `NAME.png` of the size that the drawing has; every other file goes in as it is. A drawing whose name holds %d stands
   for a series, one picture a value: its root says which with `data-first` and `data-last`, and in its text `{value}`
   is the value and
    `{level*N}` is N times the way from the first value to the last, 0 to N.
*/
juce::Result makePack(const juce::File& folder, const juce::File& pack);
