#include "bench/console/Console.h"

#include "ctl/Table.h"

#include <ostream>
#include <thread>

namespace Bench
{

Console::Console(Unit& unitToUse, Style styleToUse, std::ostream& outputToUse, bool somebodyWatches)
    : unit(unitToUse)
    , style(styleToUse)
    , output(outputToUse)
    , watched(somebodyWatches)
    , expectations(unitToUse.journal)
    , recorder(unitToUse.journal)
    , headline(unitToUse.journal.end())
{
}

void Console::moveFinger()
{
    std::this_thread::sleep_until(nextKey);
    restFinger();
}

void Console::row(const std::string& label, const std::string& value) const
{
    output << Ctl::labelled(style, label, value);
}

} // namespace Bench
