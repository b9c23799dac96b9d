#pragma once

#include "bench/checker/Checks.h"
#include "ctl/Style.h"

#include <nlohmann/json_fwd.hpp>
#include <set>

namespace Checker
{

/** What became of a check. */
struct Result
{
    const char* name;
    bool finished; ///< the program came to the end of it
    std::vector<Fault> faults;
    std::vector<std::string> trace;
    std::string output;  ///< of the program
    std::string problem; ///< why it could not be made; "" when it could
};

/** Prints results one by one, in words. A fault that was told before is only named. */
class Report
{
public:
    Report(Ctl::Style styleToUse, bool withTrace)
        : style(styleToUse)
        , verbose(withTrace)
    {
    }

    void add(const Result& result);
    /** What all of it comes to. */
    void end() const;

private:
    void printFault(const Result& result, const Fault& fault);

    Ctl::Style style;
    bool verbose;
    int checks = 0, unmade = 0;
    std::set<std::string> told;
    std::vector<std::string> broken; ///< rules, in the order in which they were found
};

/** The same for programs. */
nlohmann::json describe(const Result& result, bool withTrace);

} // namespace Checker
