#pragma once

#include "bench/console/Expect.h"
#include "bench/console/Style.h"
#include "bench/console/Transcript.h"
#include "bench/unit/Unit.h"

#include <iosfwd>
#include <utility>

namespace Bench
{

/** What became of one command. */
struct Outcome
{
    enum Kind { done, failed, leave } kind = done;
    std::string error {}; ///< for `failed`; one line, more for what was seen instead
};

inline Outcome failed(std::string error)
{
    return { Outcome::failed, std::move(error) };
}

/** The commands of the bench, from a person or a script. Everything that they do is done on a Unit. One thread. */
class Console
{
public:
    struct Command
    {
        const char* name;
        const char* usage;
        const char* help;
        Outcome (Console::*run)(const Words& words);
        /** What may come at the place of the word that is being typed, given the words before it. */
        Words (*completions)(const Words& before);
    };

    Console(Unit& unitToUse, Style styleToUse, std::ostream& outputToUse, bool somebodyWatches);

    /** Where `picture` writes to; "" leaves pictures out. */
    void setPictureFolder(const std::string& folder) { pictureFolder = folder; }

    Outcome run(const std::string& line);
    /** Runs every line and stops at the first that fails, which it names ("tour.scenario:12"). True when all succeeded.
     */
    bool runScript(std::istream& script, const std::string& name);
    /** Those that the script has chosen, else all. */
    TranscriptSections transcriptSections() const { return chosenSections.value_or(TranscriptSections::all()); }
    /** One line: what the unit is doing. */
    std::string promptState() const;
    /** Words that may come next, each a whole word. */
    static Words completionsFor(const Words& before);
    static std::span<const Command> commands();

private:
    Unit& unit;
    Style style;
    std::ostream& output;
    bool watched;
    bool inScript = false;
    Expectations expectations;
    Place headline; ///< the journal's end when the last headline was written
    Clock::time_point headlineAt = Clock::now();
    static constexpr std::chrono::milliseconds fingerGap { 150 };
    Clock::time_point nextKey; ///< not earlier
    std::string pictureFolder;
    std::optional<TranscriptSections> chosenSections;

    Outcome mcu(const Words& words);
    Outcome autotest(const Words& words);
    Outcome mfd(const Words& words);
    Outcome n2k(const Words& words);
    Outcome program(const Words& words);
    Outcome menu(const Words& words);
    Outcome bluetooth(const Words& words);
    Outcome iPod(const Words& words);
    Outcome satellite(const Words& words);
    Outcome unlock(const Words& words);
    Outcome set(const Words& words);
    Outcome usb(const Words& words);
    Outcome camera(const Words& words);
    Outcome engine(const Words& words);
    Outcome bus(const Words& words);
    Outcome gpio(const Words& words);
    Outcome i2c(const Words& words);
    Outcome remote(const Words& words);
    Outcome watch(const Words& words);
    Outcome tune(const Words& words);
    Outcome seek(const Words& words);
    Outcome rds(const Words& words);
    Outcome weather(const Words& words);
    Outcome battery(const Words& words);
    Outcome lights(const Words& words);
    Outcome panel(const Words& words);
    Outcome dsp(const Words& words);
    Outcome log(const Words& words);
    Outcome state(const Words& words);
    Outcome pages(const Words& words);
    Outcome events(const Words& words);
    Outcome trail(const Words& words);
    Outcome expect(const Words& words);
    Outcome expectAbsence(Words words);
    Outcome expectOrder(Words words, std::chrono::milliseconds limit);
    Outcome mark(const Words& words);
    Outcome transcript(const Words& words);
    Outcome say(const Words& words);
    Outcome pause(const Words& words);
    Outcome switches(const Words& words);
    Outcome picture(const Words& words);
    Outcome touch(const Words& words);
    Outcome help(const Words& words);
    Outcome quit(const Words& words);
    Outcome ifDisplay(const std::string& command);
    /** No finger presses one key after the other faster than in `fingerGap`: waits for the rest of it. */
    void moveFinger();

    Outcome mcuKeys(const Words& words);
    Outcome mcuFault(const Words& words);
    Outcome mfdCommand(const Words& words);
    Outcome mfdState();
    /** To a person: what the display has been told since then. */
    void showAnswers(Place from);
    Outcome dspState();
    Outcome dspPlay(const Words& words);
    Outcome dspFault(const Words& words);
    /** Fails with the usage of a command. */
    static Outcome usageOf(const char* command);
    void row(const std::string& label, const std::string& value) const;
};

} // namespace Bench
