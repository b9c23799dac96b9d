#pragma once

#include "bench/unit/UnitOptions.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace CLI
{
class App;
class Option;
} // namespace CLI

namespace Bench
{

/** What the command line says. */
struct CommandLine
{
    UnitOptions unit = UnitOptions::besideThisProgram();
    AttachedOptions attached;
    std::vector<std::string> programs; ///< "aux=./mine"
    std::string script, transcript, pictures, programFolder;
    bool tour = false, console = false, noEngine = false, printVerbs = false;
    bool ownDisplay = false, noDisplay = false, noWait = false, panel = false;

    /** `app` writes into this object when it parses. */
    void offerTo(CLI::App& app);
    /** Takes the programs over into `unit`. Empty on success, else what is wrong with one. */
    std::string takePrograms();

private:
    void offerAttachment(CLI::App& app, std::initializer_list<CLI::Option*> ofOwnEngine);
};

/** All options as a table of README.md. */
std::string optionTable();

} // namespace Bench
