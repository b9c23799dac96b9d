#pragma once

#include "platform/base/Bundle.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

/**
    The form of a recording: what went on between the engine and everything around it, step by step, in the order in which
    it happened (docs/recording.md). Pure; for any thread.
*/
namespace Platform
{

/** What can happen. The numbers are those of the file. */
enum class Step : std::uint8_t {
    // About the recording itself.
    thread = 1,
    lost,
    begin,
    configuration,
    file,
    end,
    // What the outside does.
    portBytes = 16,
    message,
    presence,
    broadcast,
    windowMessage,
    timer,
    touch,
    pointer,
    portBack,
    // What the engine does or asks; the answer comes last.
    portOpen = 48,
    portClose,
    portWrite,
    portConnected,
    post,
    postToAll,
    postNamed,
    isPresent,
    ownerOf,
    launch,
    findProcess,
    isRunning,
    kill,
    processEnd,
    lineFunction,
    lineLevel,
    i2cOpen,
    i2cWrite,
    i2cRead,
    spiOpen,
    spiConfigure,
    spiSelect,
    spiWrite,
    spiRead,
    storage,
    cameraHolds,
    updateIsThere,
    findWindow,
    isWindow,
    windowProcess,
    postToWindow,
    showWindow,
    raiseWindow,
    sound,
    systemValue,
    uniqueId,
    hasDisplay,
    touchIsBeside,
    setting,
    setSetting,
    setSystemValue,
    // In which order the engine's threads went on.
    waitEnd = 128,
    posted,
    takenOver,
    begun,
    timerStart,
    jobPosted,
    jobBegun,
    callPosted,
    callBegun,
    timeCome,
    locked,
    seen,
};

enum class StepRole {
    about, ///< the recording itself
    input, ///< the outside does something
    deed,  ///< the engine does or asks something: its last field is the answer
    order  ///< a thread of the engine goes on
};

struct StepField
{
    enum class Kind { number, text, bytes };
    std::string_view name;
    Kind kind;
};

struct StepInfo
{
    Step step;
    const char* name;
    StepRole role;
    std::vector<StepField> fields;
};

/** Null for a number that means nothing. */
const StepInfo* infoOf(Step step);
/** All of them, in the order of their numbers. */
const std::vector<StepInfo>& allSteps();

/** The values of a step, as they stand in the file. */
class Fields
{
public:
    template <typename... Values>
    explicit Fields(const Values&... values)
    {
        (put(values), ...);
    }

    void put(std::string_view text);
    void put(const std::string& text) { put(std::string_view(text)); }
    void put(const char* text) { put(std::string_view(text)); }
    void put(const juce::String& text) { put(std::string_view(text.toRawUTF8(), text.getNumBytesAsUTF8())); }
    /** As bytes; none for null. */
    void put(const Bundle::Ptr& bundle);
    void put(std::span<const std::uint8_t> bytes)
    {
        put(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }
    void put(std::span<const std::byte> bytes)
    {
        put(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }
    template <typename Number>
    requires std::is_integral_v<Number> || std::is_enum_v<Number>
    void put(Number number) { putNumber(static_cast<std::int64_t>(number)); }

    const std::string& bytes() const { return encoded; }

private:
    void putNumber(std::int64_t number);

    std::string encoded;
};

/** Null for what `Fields::put` has written for null; null, and `error`, for what it has not written. */
Bundle::Ptr bundleOf(std::string_view bytes, std::string& error);

/** Reads what `Fields` has written. Once something is missing or damaged, every value is 0 or "", and `good` false. */
class FieldReader
{
public:
    explicit FieldReader(std::string_view fields)
        : rest(fields)
    {
    }

    std::int64_t number();
    std::string_view bytes();
    bool good() const { return intact; }
    bool atEnd() const { return rest.empty(); }
    std::string_view left() const { return rest; }

private:
    std::uint64_t varint();

    std::string_view rest;
    bool intact = true;
};

/** One step. */
struct Record
{
    Step step = Step::end;
    int thread = 0;        ///< by its number in the recording; 0 for what is about the recording itself
    std::int64_t time = 0; ///< in microseconds since the recording began
    std::string fields;

    /** The fields before the answer, and the answer. Both are empty when it is damaged. */
    std::string_view asked() const;
    std::string_view answer() const;
};

/** "port bytes port=/dev/ttyS1 bytes=FF 55 02", for people. Of a text or bytes only so many bytes. */
std::string describe(const Record& record, std::size_t longest = std::string::npos);
std::string describe(Step step, std::string_view fields, std::size_t longest = std::string::npos);
/** On one line, and harmless to a terminal: controls become "\x0A", what is no UTF-8 U+FFFD. */
std::string printable(std::string_view text);

// The file: a header, and records.

struct RecordingHeader
{
    int number = 0;             ///< of the file in its recording
    std::uint64_t identity = 0; ///< the same in all files of a recording
};

inline constexpr int recordingVersion = 1;
inline constexpr std::size_t headerSize = 28;
/** Of one record, its frame not counted. A longer one in a file is damage. */
inline constexpr std::size_t longestRecord = 1024 * 1024;

std::string encodeHeader(const RecordingHeader& header);
/** Empty, and why not, when it is no header of this version. */
std::optional<RecordingHeader> decodeHeader(std::string_view bytes, std::string& error);

void encodeRecord(std::string& target, const Record& record);

/** The records of a file, from the first one to the first that is not whole. */
class RecordCutter
{
public:
    /** Without the header. */
    explicit RecordCutter(std::string_view fileBytes)
        : rest(fileBytes)
    {
    }

    /** Nothing at the end, or where the file was cut or damaged. */
    std::optional<Record> next();
    /** How many bytes are behind the last whole record. */
    std::size_t left() const { return rest.size(); }

private:
    std::string_view rest;
};

} // namespace Platform
