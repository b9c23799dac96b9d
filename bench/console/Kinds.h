#pragma once

#include "bench/console/Script.h"

#include <functional>

namespace Bench
{

/** A kind of word in a line: a KEY, a TIME, a PAGE. */
struct Kind
{
    std::string name;
    std::string meaning; ///< "0 to 255"
    std::function<bool(const std::string& word)> accepts;
    std::function<Words()> names {}; ///< of all that have one
};

/** In the order of their names. A word of any other name (FILE, TEXT) may be anything. */
std::span<const Kind> allKinds();
const Kind* findKind(const std::string& name);

/** A number that may have a point, within the limits. */
std::optional<double> parseDecimal(const std::string& text, double lowest, double highest);

/** "2" or "2x": 0.01 to 1000 times as fast. */
std::optional<double> parseSpeed(const std::string& text);

} // namespace Bench
