#pragma once

#include <string>

namespace Bench
{

/** Writes what is on the screen of the display, when it has come to rest, as a PNG. Empty on success, else what failed.
 */
std::string savePicture(const std::string& file);

/** Touches the screen at this point, in pixels, as a finger does: when the screen has come to rest, down and up. Empty
 * on success, else what failed. */
std::string touchScreen(int x, int y);

} // namespace Bench
