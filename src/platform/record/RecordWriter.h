#pragma once

#include "platform/base/Descriptor.h"
#include "platform/base/Threads.h"
#include "platform/record/Recorder.h"

#include <memory>
#include <mutex>

namespace Platform
{

/**
    Writes a recording: a ring of files, FILE, FILE.1, FILE.2 and so on, of which the first one and the newest are kept. A
    thread of its own writes; a step only appends to a buffer. What a slow disk does not take in time is left out, counted,
    and said in the recording. A write error ends the recording (logged); the engine goes on. One for the process.
*/
class RecordWriter : public Recorder, private Thread
{
public:
    struct Options
    {
        std::string file;
        std::string configuration; ///< the engine's configuration file
        std::string engine;        ///< its version
        std::uint64_t limit = 0;   ///< bytes of all files together, at least `leastLimit`
    };
    static constexpr std::uint64_t leastLimit = 1024 * 1024;

    /**
        Keeps an earlier recording of the same name as FILE.old, and begins with what the engine's start depends on: the
        configuration, which is loaded already, and the files of the system folder. Null, and why not, when it cannot be
        written. Before any other thread runs.
    */
    static std::unique_ptr<RecordWriter> open(const Options& options, std::string& error);
    /** Writes what is left. Nobody may be told of a step any more. */
    ~RecordWriter() override;

    void enter(Step step, const Fields& fields) override;
    void leave() override { lock.unlock(); }
    std::int64_t answer(Step step, Fields& asked, std::int64_t own) override { return answerWith(step, asked, own); }
    std::string answer(Step step, Fields& asked, std::string own) override
    {
        return answerWith(step, asked, std::move(own));
    }

    void finish() override;

    /** Writes what is there, as the process may end at once. Any thread. */
    void flush();

private:
    explicit RecordWriter(const Options& chosen);

    template <typename Answer>
    Answer answerWith(Step step, Fields& asked, Answer own)
    {
        asked.put(own);
        enter(step, asked);
        leave();
        return own;
    }

    // Under the lock of the steps.
    int threadNumber();
    void append(Step step, int thread, const std::string& fields);

    // Under the lock of the file.
    std::string beginFile();
    std::string writeStart();
    std::string write(std::string_view bytes);
    std::string pathOf(int number) const;

    void run() override;

    const Options options;
    const std::uint64_t largestFile;
    const std::size_t largestBuffer;
    const std::uint64_t identity;
    const Clock::time_point begin;

    std::mutex lock; ///< of the steps
    Condition filled;
    std::string buffer;
    std::vector<std::string> threads; ///< their names, by number - 1
    std::int64_t lost = 0;
    bool writerSleeps = false, finished = false;

    std::mutex fileLock; ///< taken before the other one
    Descriptor file;
    int fileNumber = -1;
    std::uint64_t fileSize = 0;
};

} // namespace Platform
