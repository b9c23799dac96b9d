#pragma once

#include "bench/program/PageContent.h"

#include <array>
#include <juce_graphics/juce_graphics.h>
#include <vector>

namespace BenchProgram
{

/** Something of the screen that can be touched, and what that does. */
struct Touch
{
    enum class Does { touches, chooses, leaves };
    juce::Rectangle<int> area;
    Does does;
    int number; ///< what is touched: its id; the page that is chosen or left
};

/** A button that every page has, whatever it shows. */
struct CommonButton
{
    juce::Rectangle<int> area;
    juce::String label;
};

/**
    Where everything of a page is on the screen. The lists have the order of the content's; areas of what the content
    lacks are empty. From top to bottom: what every page has to be touched, what the page has of its own, and the foot,
    where nothing is touched. So nothing lies under the engine's bars: the mute, between the buttons at the top, and the
    volume, over the foot.
*/
struct PageLayout
{
    enum class Kind { texts, tiles, keypad, rows, levels, picture };

    PageLayout(int page, const PageContent& content);

    const Touch* touchAt(juce::Point<int> position) const;

    static constexpr int width = 800;
    static constexpr int height = 480;
    static constexpr int margin = 32;
    /** Of the keypad's keys, row by row. */
    static constexpr std::array keyIds { 1, 2, 3, 4, 5, 6, 7, 8, 9, int { keypadBack }, 0, int { keypadEnter } };

    Kind kind;
    juce::Rectangle<int> icon;  ///< the plate with the page's icon
    juce::Rectangle<int> texts; ///< title, status and detail, beside the icon
    juce::Rectangle<int> clock; ///< with the zone below it
    juce::Rectangle<int> note;  ///< the detail in the foot, where the texts are above it
    juce::Rectangle<int> entry; ///< what was entered with the keypad
    juce::Rectangle<int> scene; ///< the camera's picture
    juce::Rectangle<int> list;  ///< around all rows, or levels
    std::vector<juce::Rectangle<int>> tiles, keys, rows, levels, buttons;
    /** Of a row whose value is stepped; empty areas for another. */
    struct StepKeys
    {
        juce::Rectangle<int> down, value, up;
    };
    std::vector<StepKeys> steps;
    std::vector<CommonButton> common;
    std::vector<Touch> touches;

private:
    void placeCommon(int page);
    void placeFoot();
    void placeTiles(const PageContent& content, juce::Rectangle<int> area);
    void placeKeypad(const PageContent& content, juce::Rectangle<int> area);
    void placeRow(const Row& row, juce::Rectangle<int> area);
    void placeRows(const PageContent& content, juce::Rectangle<int> area);
    void placeLevels(const PageContent& content, juce::Rectangle<int> area);
    void placePicture(const PageContent& content, juce::Rectangle<int> area);
    void placeTexts(const PageContent& content, juce::Rectangle<int> area);
    /** Places the content's buttons in a grid of so many columns. */
    void placeButtons(const PageContent& content, juce::Rectangle<int> area, int columns);
};

} // namespace BenchProgram
