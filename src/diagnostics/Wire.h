#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <systemd/sd-bus.h>

/** What the engine tells of itself, and how it goes over the bus. Any thread. */
namespace Diagnostics
{

/** The keys keep the order in which they were added. */
using Json = nlohmann::ordered_json;

namespace Wire
{

constexpr const char* busName = "com.corvane.Diagnostics";
constexpr const char* interfaceName = "com.corvane.Diagnostics";
constexpr const char* objectPath = "/com/corvane/Diagnostics";
/** Of the interface. What is added does not change it; what is taken away or becomes something else does. */
constexpr std::uint32_t version = 1;
constexpr const char* unknownError = "com.corvane.Diagnostics.Error.Unknown";
constexpr const char* failedError = "com.corvane.Diagnostics.Error.Failed";

/** The types of an answer: of one thing, and of several. */
constexpr const char* recordType = "a{sv}";
constexpr const char* recordsType = "aa{sv}";

/**
    Appends an object as a{sv}, or a list of objects as aa{sv}: truths as b, whole numbers as x, others as d, texts as s,
    lists of texts as `as`, of numbers as ax, an empty one as a list of `whenEmpty`. What is null is left out. A negative
    errno when the bus refuses it.
*/
int append(sd_bus_message* message, const Json& value, const char* whenEmpty = "s");
/**
    What the message has from here on, one value for each that it carries: a list when there are several, null when there
    is none. Of other types only what the bus has for numbers and texts is read. Throws std::runtime_error for a message that is not
    well formed.
*/
Json read(sd_bus_message* message);

} // namespace Wire

} // namespace Diagnostics
