#pragma once

#include "platform/base/Descriptor.h"

#include <chrono>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace Diagnostics
{

/**
    A trace in the Trace Event Format (JSON), which the Perfetto viewer and its trace_processor open: slices on tracks, and
    arrows from one slice to another. Slices of one track lie one in the other or one after the other; they may come in any
    order. Whenever the process ends, what was flushed is a whole document. One thread at a time.
*/
class TraceFile
{
public:
    using Arguments = nlohmann::ordered_json;
    enum class Arrow { none, begins, ends };

    struct Slice
    {
        int track;
        std::string name;
        std::chrono::nanoseconds at;          ///< since the beginning of the trace
        std::chrono::nanoseconds duration {}; ///< 0 for what has happened at once
        Arguments arguments = Arguments::object();
        Arrow arrow = Arrow::none;
        std::uint64_t arrowNumber = 0; ///< one for each arrow; the slice where it begins is added first
    };

    /** The file beyond which nothing is written: more than the viewer holds. */
    static constexpr std::size_t mostBytes = 512 * 1024 * 1024;

    /** Keeps a duplicate of the descriptor, and empties its file. What is wrong with it is its failure. */
    explicit TraceFile(int descriptor, std::size_t limit = mostBytes);

    /** The track of this name in the group, which begins with its first use. */
    int track(const std::string& group, const std::string& name);
    void add(const Slice& slice);
    /** Writes what was added. */
    void flush();
    /** Flushes, and closes the document with facts about the whole. */
    void finish(const Arguments& facts);

    /** Empty, or a sentence why nothing is written any more. Then the file is as it was at the last flush. */
    const std::string& getFailure() const { return failure; }

private:
    struct Group
    {
        int process; ///< as which the viewer knows it
        std::map<std::string, int> tracks;
    };

    void addName(const char* kind, int process, int track, const std::string& name);
    void fail(std::string why);
    /** What was flushed, and the end of a document with the facts. */
    bool end(const Arguments& facts);
    bool writeAt(std::size_t position, const std::string& bytes);

    Platform::Descriptor file;
    const std::size_t limit;
    std::string failure;
    std::string text; ///< added, not flushed yet
    const char* separator = "\n";
    std::size_t size = 0; ///< of what was flushed, without the end of the document
    std::map<std::string, Group> groups;
    std::vector<int> processes; ///< of the tracks, by their numbers less one
};

} // namespace Diagnostics
