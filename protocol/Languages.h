#pragma once

#include <string>

namespace Protocol
{

/** `headunit/protocol.h`, for C and C++. Every name has HU_ in front, as the system's headers have keys of the same names. */
std::string header();
/** `headunit_protocol.py`. */
std::string pythonModule();

} // namespace Protocol
