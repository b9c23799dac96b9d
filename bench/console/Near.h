#pragma once

#include "bench/console/Script.h"

namespace Bench
{

/**
    The names, three at most, that somebody may have meant who wrote this word: nearest first, in capitals or not, and with or
    without what names of pages (mbFM) and programs (AppRadio) begin with.
*/
Words nearNames(const std::string& word, const Words& names);
/** " Is it mbFM or AppRadio?", or "" when nothing is near. */
std::string nearText(const std::string& word, const Words& names);

} // namespace Bench
