#pragma once

#include <string>

namespace Check
{

/**
    The reasons that the devices' classes log. From `keep` on the process's log goes here and nowhere else: the last error
    is what was found.
*/
struct Errors
{
    static void keep();
    /** The last error since the last call, or `otherwise`. Any thread. */
    static std::string take(const std::string& otherwise);
};

} // namespace Check
