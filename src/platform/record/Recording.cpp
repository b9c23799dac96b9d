#include "platform/record/Recording.h"

#include "platform/base/Utf8.h"

#include <algorithm>
#include <array>
#include <zlib.h>

namespace Platform
{

namespace
{

constexpr std::string_view magic { "HEADUNIT-REC" };
constexpr std::size_t checkSize = 4;
constexpr int bitsPerByte = 8;
constexpr unsigned bitsPerGroup = 7;
constexpr std::uint64_t groupMask = 0x7F;
constexpr std::uint8_t moreFollows = 0x80;
constexpr std::size_t longestVarint = 10;

void putVarint(std::string& target, std::uint64_t value)
{
    for (; value > groupMask; value >>= bitsPerGroup)
        target += static_cast<char>((value & groupMask) | moreFollows);
    target += static_cast<char>(value);
}

/** Takes it off the front. Nothing when it does not end. */
std::optional<std::uint64_t> takeVarint(std::string_view& from)
{
    std::uint64_t value = 0;
    for (std::size_t index = 0; index < std::min(from.size(), longestVarint); ++index)
    {
        const auto byte = static_cast<std::uint8_t>(from[index]);
        value |= (byte & groupMask) << (bitsPerGroup * index);
        if ((byte & moreFollows) == 0)
        {
            from.remove_prefix(index + 1);
            return value;
        }
    }
    return {};
}

template <typename Number>
void putFixed(std::string& target, Number value)
{
    for (std::size_t index = 0; index < sizeof value; ++index)
        target += static_cast<char>(value >> (bitsPerByte * index));
}

template <typename Number>
Number fixedAt(std::string_view bytes, std::size_t offset)
{
    std::uint64_t value = 0;
    for (std::size_t index = 0; index < sizeof(Number); ++index)
        value |= static_cast<std::uint64_t>(static_cast<std::uint8_t>(bytes[offset + index])) << (bitsPerByte * index);
    return static_cast<Number>(value);
}

std::uint32_t checkOf(std::string_view bytes)
{
    return static_cast<std::uint32_t>(
        ::crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())));
}

StepInfo makeInfo(Step step, const char* name, StepRole role, std::string_view fields)
{
    StepInfo info { step, name, role, {} };
    while (!fields.empty())
    {
        const auto word = fields.substr(0, fields.find(' '));
        fields.remove_prefix(std::min(fields.size(), word.size() + 1));
        const auto kind = word.back() == '$'   ? StepField::Kind::text
                          : word.back() == '*' ? StepField::Kind::bytes
                                               : StepField::Kind::number;
        info.fields.push_back({ kind == StepField::Kind::number ? word : word.substr(0, word.size() - 1), kind });
    }
    return info;
}

/** A name with '$' is a text, with '*' bytes, any other a number. */
std::vector<StepInfo> makeSteps()
{
    using enum StepRole;
    return {
        makeInfo(Step::thread, "thread", about, "number name$"),
        makeInfo(Step::lost, "lost", about, "steps"),
        makeInfo(Step::begin, "begin", about, "engine$ time-of-day"),
        makeInfo(Step::configuration, "configuration", about, "file$ text$ os-version$"),
        makeInfo(Step::file, "file", about, "folder$ name$ offset bytes*"),
        makeInfo(Step::end, "end", about, ""),
        makeInfo(Step::portBytes, "port bytes", input, "port$ bytes*"),
        makeInfo(Step::message, "message", input, "program what arg1 arg2 bundle*"),
        makeInfo(Step::presence, "presence", input, "program present"),
        makeInfo(Step::broadcast, "broadcast", input, "text$"),
        makeInfo(Step::windowMessage, "window message", input, "message wparam lparam"),
        makeInfo(Step::timer, "timer", input, "timer id"),
        makeInfo(Step::touch, "touch", input, "window"),
        makeInfo(Step::pointer, "pointer", input, "window$ x y down"),
        makeInfo(Step::portBack, "port back", input, "port$"),
        makeInfo(Step::portOpen, "port open", deed, "port$ baud await ok"),
        makeInfo(Step::portClose, "port close", deed, "port$ ok"),
        makeInfo(Step::portWrite, "port write", deed, "port$ bytes* count"),
        makeInfo(Step::portConnected, "port connected", deed, "port$ yes"),
        makeInfo(Step::post, "post", deed, "program what arg1 arg2 bundle* ok"),
        makeInfo(Step::postToAll, "post to all", deed, "what arg1 arg2 bundle* ok"),
        makeInfo(Step::postNamed, "post named", deed, "action$ bundle* ok"),
        makeInfo(Step::isPresent, "is present", deed, "program yes"),
        makeInfo(Step::ownerOf, "owner of", deed, "program process"),
        makeInfo(Step::launch, "launch", deed, "path$ arguments$ process"),
        makeInfo(Step::findProcess, "find process", deed, "process ok"),
        makeInfo(Step::isRunning, "is running", deed, "process yes"),
        makeInfo(Step::kill, "kill", deed, "process ok"),
        makeInfo(Step::processEnd, "process end", deed, "process"),
        makeInfo(Step::lineFunction, "line function", deed, "line function ok"),
        makeInfo(Step::lineLevel, "line level", deed, "line level ok"),
        makeInfo(Step::i2cOpen, "i2c open", deed, "bus$ ok"),
        makeInfo(Step::i2cWrite, "i2c write", deed, "address register value ok"),
        makeInfo(Step::i2cRead, "i2c read", deed, "address register value"),
        makeInfo(Step::spiOpen, "spi open", deed, "bus$ ok"),
        makeInfo(Step::spiConfigure, "spi configure", deed, "record* ok"),
        makeInfo(Step::spiSelect, "spi select", deed, "on ok"),
        makeInfo(Step::spiWrite, "spi write", deed, "bytes* ok"),
        makeInfo(Step::spiRead, "spi read", deed, "prefix* count bytes*"),
        makeInfo(Step::storage, "storage", deed, "name$ present"),
        makeInfo(Step::cameraHolds, "camera holds", deed, "yes"),
        makeInfo(Step::updateIsThere, "update is there", deed, "program$ yes"),
        makeInfo(Step::findWindow, "find window", deed, "title$ window"),
        makeInfo(Step::isWindow, "is window", deed, "window yes"),
        makeInfo(Step::windowProcess, "window process", deed, "window process"),
        makeInfo(Step::postToWindow, "post to window", deed, "window message wparam lparam ok"),
        makeInfo(Step::showWindow, "show window", deed, "window visible ok"),
        makeInfo(Step::raiseWindow, "raise window", deed, "window ok"),
        makeInfo(Step::sound, "sound", deed, "file$ ok"),
        makeInfo(Step::systemValue, "system value", deed, "index value"),
        makeInfo(Step::uniqueId, "unique id", deed, "id"),
        makeInfo(Step::hasDisplay, "has display", deed, "yes"),
        makeInfo(Step::touchIsBeside, "touch is beside", deed, "window yes"),
        makeInfo(Step::setting, "setting", deed, "index value*"),
        makeInfo(Step::setSetting, "set setting", deed, "index value* ok"),
        makeInfo(Step::setSystemValue, "set system value", deed, "index value ok"),
        makeInfo(Step::waitEnd, "wait end", order, "woken"),
        makeInfo(Step::posted, "posted", order, "receiver id arg1 arg2"),
        makeInfo(Step::takenOver, "taken over", order, ""),
        makeInfo(Step::begun, "begun", order, "receiver id"),
        makeInfo(Step::timerStart, "timer start", order, "id interval timer"),
        makeInfo(Step::jobPosted, "job posted", order, "worker$ key"),
        makeInfo(Step::jobBegun, "job begun", order, ""),
        makeInfo(Step::callPosted, "call posted", order, ""),
        makeInfo(Step::callBegun, "call begun", order, ""),
        makeInfo(Step::timeCome, "time come", order, "yes"),
        makeInfo(Step::locked, "locked", order, ""),
        makeInfo(Step::seen, "seen", order, "value"),
    };
}

/** The kinds of a bundle's values, as they stand in the file. */
enum class BundleValue { number, truth, text, bytes, bundle, list };
/** Far deeper than any program nests them. */
constexpr int deepestBundle = 32;

std::string encodeBundle(const Bundle& bundle)
{
    Fields fields(bundle.getValues().size());
    for (const auto& [key, value] : bundle.getValues())
    {
        fields.put(key);
        fields.put(value.index());
        if (const auto* number = std::get_if<juce::int32>(&value))
            fields.put(*number);
        else if (const auto* truth = std::get_if<bool>(&value))
            fields.put(*truth);
        else if (const auto* text = std::get_if<juce::String>(&value))
            fields.put(*text);
        else if (const auto* bytes = std::get_if<juce::MemoryBlock>(&value))
            fields.put(std::string_view(bytes->begin(), bytes->getSize()));
        else if (const auto* inner = std::get_if<Bundle::Ptr>(&value))
            fields.put(*inner);
        else if (const auto* list = std::get_if<std::vector<Bundle::Ptr>>(&value))
        {
            fields.put(list->size());
            for (const auto& each : *list)
                fields.put(each);
        }
    }
    return fields.bytes();
}

juce::String juceText(std::string_view text)
{
    return juce::String::fromUTF8(text.data(), static_cast<int>(text.size()));
}

Bundle::Ptr decodeBundle(std::string_view bytes, bool& good, int depth)
{
    if (bytes.empty())
        return nullptr;
    const auto bundle = Bundle::obtain();
    good = good && depth <= deepestBundle;
    FieldReader reader(bytes);
    for (auto left = reader.number(); left > 0 && good; --left)
    {
        const auto key = juceText(reader.bytes());
        const auto kind = static_cast<BundleValue>(reader.number());
        if (kind == BundleValue::number)
            bundle->putInt(key, static_cast<juce::int32>(reader.number()));
        else if (kind == BundleValue::truth)
            bundle->putBool(key, reader.number() != 0);
        else if (kind == BundleValue::text)
            bundle->putString(key, juceText(reader.bytes()));
        else if (kind == BundleValue::bytes)
        {
            const auto block = reader.bytes();
            bundle->putByteArray(key, block.data(), static_cast<int>(block.size()));
        }
        else if (kind == BundleValue::bundle)
            bundle->putBundle(key, decodeBundle(reader.bytes(), good, depth + 1));
        else if (kind == BundleValue::list)
        {
            std::vector<Bundle::Ptr> list;
            for (auto count = reader.number(); count > 0 && reader.good(); --count)
                list.push_back(decodeBundle(reader.bytes(), good, depth + 1));
            bundle->putBundleList(key, std::move(list));
        }
        else
            good = false;
        good = good && reader.good();
    }
    good = good && reader.good() && reader.atEnd();
    return bundle;
}

/** Where the last field of these begins; nothing when they are not what the step has. */
std::optional<std::size_t> lastFieldOf(Step step, std::string_view fields)
{
    const auto* info = infoOf(step);
    if (info == nullptr || info->fields.empty())
        return {};
    FieldReader reader(fields);
    std::size_t begin = 0;
    for (const auto& field : info->fields)
    {
        begin = fields.size() - reader.left().size();
        if (field.kind == StepField::Kind::number)
            reader.number();
        else
            reader.bytes();
    }
    return reader.good() && reader.atEnd() ? std::optional(begin) : std::nullopt;
}

void appendHex(std::string& text, std::uint8_t byte)
{
    constexpr const char* digits = "0123456789ABCDEF";
    constexpr unsigned nibble = 4, nibbleMask = 0xF;
    text += digits[byte >> nibble];
    text += digits[byte & nibbleMask];
}

std::string hexOf(std::string_view bytes)
{
    std::string text;
    for (const char each : bytes)
    {
        text += text.empty() ? "" : " ";
        appendHex(text, static_cast<std::uint8_t>(each));
    }
    return text;
}

std::string describeField(StepField::Kind kind, FieldReader& reader, std::size_t longest)
{
    if (kind == StepField::Kind::number)
        return std::to_string(reader.number());
    const auto bytes = reader.bytes();
    const auto shown = bytes.substr(0, longest);
    const auto text = kind == StepField::Kind::text ? printable(shown) : hexOf(shown);
    return bytes.size() > longest ? text + " ... (" + std::to_string(bytes.size()) + " bytes)" : text;
}

} // namespace

const std::vector<StepInfo>& allSteps()
{
    static const auto steps = makeSteps();
    return steps;
}

const StepInfo* infoOf(Step step)
{
    static const auto byNumber = []
    {
        std::array<const StepInfo*, 256> table {};
        for (const auto& info : allSteps())
            table[static_cast<std::size_t>(info.step)] = &info;
        return table;
    }();
    return byNumber[static_cast<std::size_t>(step)];
}

void Fields::put(std::string_view text)
{
    putVarint(encoded, text.size());
    encoded += text;
}

void Fields::put(const Bundle::Ptr& bundle)
{
    put(bundle == nullptr ? std::string() : encodeBundle(*bundle));
}

Bundle::Ptr bundleOf(std::string_view bytes, std::string& error)
{
    bool good = true;
    auto bundle = decodeBundle(bytes, good, 1);
    if (!good)
        error = "a bundle is damaged";
    return good ? bundle : nullptr;
}

void Fields::putNumber(std::int64_t number)
{
    // The sign goes to the lowest bit, so that small negative numbers are short too.
    constexpr unsigned signShift = 63;
    putVarint(encoded, (static_cast<std::uint64_t>(number) << 1) ^ static_cast<std::uint64_t>(number >> signShift));
}

std::uint64_t FieldReader::varint()
{
    const auto value = intact ? takeVarint(rest) : std::nullopt;
    intact = value.has_value();
    return value.value_or(0);
}

std::int64_t FieldReader::number()
{
    const auto value = varint();
    return static_cast<std::int64_t>(value >> 1) ^ -static_cast<std::int64_t>(value & 1);
}

std::string_view FieldReader::bytes()
{
    const auto size = varint();
    if (!intact || size > rest.size())
    {
        intact = false;
        return {};
    }
    const auto found = rest.substr(0, size);
    rest.remove_prefix(size);
    return found;
}

std::string_view Record::asked() const
{
    const auto begin = lastFieldOf(step, fields);
    return std::string_view(fields).substr(0, begin.value_or(0));
}

std::string_view Record::answer() const
{
    const auto begin = lastFieldOf(step, fields);
    return begin ? std::string_view(fields).substr(*begin) : std::string_view();
}

std::string printable(std::string_view bytes)
{
    constexpr std::uint8_t firstPrintable = 0x20, erase = 0x7F;
    // Of the controls of two bytes, and the first printable one after them.
    constexpr std::uint8_t leadOfLateControls = 0xC2, afterLateControls = 0xA0;
    const auto valid = textOfUtf8(bytes).toStdString();
    const auto byteAt = [&](std::size_t index) { return static_cast<std::uint8_t>(valid[index]); };
    std::string text;
    for (std::size_t index = 0; index < valid.size(); ++index)
    {
        const bool isLate = byteAt(index) == leadOfLateControls && byteAt(index + 1) < afterLateControls;
        if (isLate)
            ++index;
        if (isLate || byteAt(index) < firstPrintable || byteAt(index) == erase)
        {
            text += "\\x";
            appendHex(text, byteAt(index));
        }
        else
            text += valid[index];
    }
    return text;
}

std::string describe(Step step, std::string_view fields, std::size_t longest)
{
    const auto* info = infoOf(step);
    if (info == nullptr)
        return "step " + std::to_string(static_cast<int>(step));
    std::string text = info->name;
    FieldReader reader(fields);
    for (const auto& field : info->fields)
    {
        // An answer may be missing where only what was asked is told.
        if (reader.atEnd())
            break;
        text += " " + std::string(field.name) + "=" + describeField(field.kind, reader, longest);
    }
    return text;
}

std::string describe(const Record& record, std::size_t longest)
{
    return describe(record.step, record.fields, longest);
}

std::string encodeHeader(const RecordingHeader& header)
{
    std::string bytes(magic);
    putFixed(bytes, static_cast<std::uint16_t>(recordingVersion));
    putFixed(bytes, static_cast<std::uint16_t>(header.number));
    putFixed(bytes, header.identity);
    putFixed(bytes, checkOf(bytes));
    return bytes;
}

std::optional<RecordingHeader> decodeHeader(std::string_view bytes, std::string& error)
{
    constexpr std::size_t versionAt = magic.size(), numberAt = versionAt + 2, identityAt = numberAt + 2;
    if (bytes.size() < headerSize || !bytes.starts_with(magic))
        error = "no recording";
    else if (const auto version = fixedAt<std::uint16_t>(bytes, versionAt); version != recordingVersion)
        error = "a recording of version " + std::to_string(version) + "; version " + std::to_string(recordingVersion) +
                " is read";
    else if (fixedAt<std::uint32_t>(bytes, headerSize - checkSize) != checkOf(bytes.substr(0, headerSize - checkSize)))
        error = "its header is damaged";
    else
        return RecordingHeader { fixedAt<std::uint16_t>(bytes, numberAt), fixedAt<std::uint64_t>(bytes, identityAt) };
    return {};
}

void encodeRecord(std::string& target, const Record& record)
{
    std::string body;
    body += static_cast<char>(record.step);
    putVarint(body, static_cast<std::uint64_t>(record.thread));
    putVarint(body, static_cast<std::uint64_t>(record.time));
    body += record.fields;
    putVarint(target, body.size());
    target += body;
    putFixed(target, checkOf(body));
}

std::optional<Record> RecordCutter::next()
{
    auto from = rest;
    const auto size = takeVarint(from);
    if (!size || *size == 0 || *size > longestRecord || from.size() < *size + checkSize)
        return {};
    auto body = from.substr(0, *size);
    if (fixedAt<std::uint32_t>(from, *size) != checkOf(body))
        return {};
    Record record;
    record.step = static_cast<Step>(static_cast<std::uint8_t>(body.front()));
    body.remove_prefix(1);
    const auto thread = takeVarint(body);
    const auto time = thread ? takeVarint(body) : std::nullopt;
    if (!time)
        return {};
    record.thread = static_cast<int>(*thread);
    record.time = static_cast<std::int64_t>(*time);
    record.fields = body;
    rest = from.substr(*size + checkSize);
    return record;
}

} // namespace Platform
