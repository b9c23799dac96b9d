#pragma once

#include <map>
#include <optional>
#include <string>

namespace Bench
{

/** Where programs and bars draw. */
enum class Display {
    ofEnvironment, ///< where DISPLAY says, else nowhere
    own,           ///< on one that nobody looks at
    none
};

/** Of a unit whose engine and bus somebody else runs, a service manager for example. */
struct AttachedOptions
{
    std::string configuration; ///< the engine's
    std::string log;           ///< where the engine writes it; "" when nobody knows
    std::string control;       ///< socket of the programs; "" for "control" beside that of the DSP's bus
    /** Commands for a shell that do what stands in place of each "{}": start, stop or restart. "" for none. */
    std::string engineCommand, busCommand;
};

struct UnitOptions
{
    std::string engine;  ///< the engine's program
    std::string standIn; ///< the program that stands for every source program
    std::string logLibrary;
    std::string resources;
    std::string recording {}; ///< of the engine; its second run is recorded as "...-2", and so on; "" for none
    bool keepFolder = false;
    Display display = Display::ofEnvironment;
    std::map<int, std::string> programs {};     ///< by application type; these files in place of the stand-in
    std::optional<AttachedOptions> attached {}; ///< empty: engine and bus are the bench's own

    /** Everything beside the running program: its folder, ../lib and ../resources. */
    static UnitOptions besideThisProgram();
};

} // namespace Bench
