#pragma once

#include <string>

namespace Bench
{

/**
    Writes what is on the screen of the display (":0"; "" for none), when it has come to rest, as a PNG. Empty on
    success, else what failed.
*/
std::string savePicture(const std::string& display, const std::string& file);

/**
    Touches the screen of the display at this point, in pixels, as a finger does: when the screen has come to rest, down
    and up. Empty on success, else what failed.
*/
std::string touchScreen(const std::string& display, int x, int y);

/** Whether something can be drawn there. False for "". */
bool canBeOpened(const std::string& display);

/** Whether a window of a page's size, or nearly, is on the display. False without a display. */
bool isPageShown(const std::string& display);

} // namespace Bench
