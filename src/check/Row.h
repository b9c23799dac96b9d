#pragma once

#include <string>
#include <vector>

/** What `headunit-engine --check` looks at. Nothing here changes what the unit has, plays or shows. */
namespace Check
{

enum class State {
    ok,
    note,   ///< the unit works without it, or it cannot be told from here
    missing ///< the unit needs it
};

struct Row
{
    std::string what;
    State state;
    std::string found;
    std::string whatToDo; ///< "" when there is nothing to do
};

using Rows = std::vector<Row>;

struct Group
{
    std::string title;
    Rows rows;
};

} // namespace Check
