#pragma once

#include "platform/base/Descriptor.h"

#include <string>
#include <vector>

namespace Platform
{

/** A program with all that its process needs, ready to be started where nothing may be allocated any more. */
class Execution
{
public:
    /**
        `environment` is a list of "NAME=value". With `content` that is executed in place of the file at `path`; as such a
        program cannot tell from its path where it lies, it starts in its folder.
    */
    Execution(std::string path, std::vector<std::string> arguments, std::vector<std::string> environment,
              Descriptor content = {});
    Execution(const Execution&) = delete;
    Execution& operator=(const Execution&) = delete;

    /**
        The calling process becomes the program, with default signal handling, normal scheduling, no capabilities beyond
        its user's and only standard input, output and error. Answers only when that fails: the system's error number.
        Async-signal-safe.
    */
    int run() const;

private:
    std::string executed;
    std::string folder; ///< that it starts in, empty = the one of this process
    std::vector<std::string> texts;
    std::vector<std::string> variables;
    std::vector<char*> words;    ///< of `texts`, ended by null
    std::vector<char*> settings; ///< of `variables`, ended by null
    Descriptor content;
};

} // namespace Platform
