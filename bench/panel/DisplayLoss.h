#pragma once

namespace BenchPanel
{

/**
    When the toolkit's connection to its display breaks, this function is called, on the thread that has just found out, and must not
    return: the process would end at once, in the middle of what it does. The toolkit has opened the display before.
*/
void onDisplayLoss(void (*function)());

} // namespace BenchPanel
