#pragma once

#include <juce_graphics/juce_graphics.h>
#include <vector>

namespace BenchProgram
{

/** Something of a page that is touched to do something. */
struct Button
{
    int id = 0; ///< handed to Profile::onTouch
    juce::String label;
    bool lit = false; ///< it is on, or chosen
};

/** One line of a list: a setting with its value, a track, a device, a channel. Touching it chooses it or steps on. */
struct Row
{
    int id = 0; ///< handed to Profile::onTouch
    juce::String label;
    juce::String value {}; ///< at the right end
    bool lit = false;
    int down = 0; ///< not 0: the value has a key on each side, this one with a minus and `id` with a plus
};

/** A value with an upright bar, as of the equaliser. Touching its upper half calls `up`, its lower half `down`. */
struct Level
{
    int up = 0, down = 0; ///< ids, handed to Profile::onTouch
    juce::String label;   ///< "125 Hz"
    juce::String value;   ///< "+3 dB"
    int position = 0;     ///< lowest..highest
    int lowest = 0;
    int highest = 0;
    int hz = 0;         ///< where it stands along the curve; 0 when it is none of the curve's
    bool fixed = false; ///< to be seen, not touched
};

/** A page of the main menu. */
struct Tile
{
    int id = 0;
    int page = 0; ///< whose icon is drawn; NUM_OF_PAGES for none
    juce::String label;
    bool offered = true; ///< the unit has the page
    bool lit = false;    ///< its source plays
};

/**
    What a page shows, besides the bar with the clock and the buttons that every page has. Each part that is there is
    drawn, those that are empty leave their place to the others; a page has tiles, or a keypad, or rows or levels with
    its texts above them, or the texts beside its icon.
*/
struct PageContent
{
    juce::String title;  ///< large: "101.10 MHz"
    juce::String status; ///< below it, in the page's colour: "HARBOUR"
    juce::String detail; ///< small, at most two lines: "Tides at noon"
    std::vector<Button> buttons;
    std::vector<Row> rows; ///< at most six
    std::vector<Level> levels;
    std::vector<juce::Point<double>> curve; ///< behind the levels: Hz, rising, and a position on their scale
    std::vector<Tile> tiles;                ///< at most twelve
    bool keypad = false; ///< digits with the ids 0 to 9 and two more keys, below `status` with what was entered
    enum class Picture { none, live, lost } picture = Picture::none; ///< the camera's
};

/** Ids of the keypad's keys beside its digits. */
enum KeypadKey : int { keypadBack = 10, keypadEnter = 11 };

} // namespace BenchProgram
