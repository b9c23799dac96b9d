#pragma once

#include <string>

namespace Protocol
{

/**
    The document with what stands between "<!-- table NAME -->" and "<!-- end -->" made anew. An unknown name, or a
    marker without its end, goes into `problem`.
*/
std::string filledIn(const std::string& document, std::string& problem);

} // namespace Protocol
