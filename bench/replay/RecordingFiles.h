#pragma once

#include "platform/record/Recording.h"

#include <string>
#include <vector>

namespace Replay
{

/** All files of a recording, as far as they can be read. */
struct RecordingFiles
{
    std::vector<Platform::Record> records;
    std::vector<std::string> threads; ///< their names, by number - 1
    std::string engine;               ///< its version
    std::int64_t timeOfDay = 0;       ///< when it began, in milliseconds since the beginning of 1970
    /** From this record on something is missing before; the number of records when nothing is. */
    std::size_t gap = 0;
    std::vector<std::string> notes; ///< what is missing, for people

    /** Empty on success, else why nothing can be read: the file that the recording begins with is wanted. */
    std::string load(const std::string& file);

    const std::string& threadName(const Platform::Record& record) const;

private:
    std::string loadOne(const std::string& path, int expectedNumber);
    void take(Platform::Record record);
    void noteGap(const std::string& what);
    void note(const std::string& what);

    std::uint64_t identity = 0;
};

} // namespace Replay
