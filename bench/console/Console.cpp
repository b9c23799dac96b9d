#include "bench/console/Console.h"

#include "bench/console/Columns.h"

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
{
}

void Console::moveFinger()
{
    std::this_thread::sleep_until(nextKey);
    restFinger();
}

void Console::row(const std::string& label, const std::string& value) const
{
    constexpr int labelWidth = 16;
    output << "  " << style.dim(padded(label + " ", labelWidth)) << value << "\n";
}

} // namespace Bench
