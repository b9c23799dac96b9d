#include "diagnostics/Wire.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace Diagnostics::Wire
{

namespace
{

/** The type of one element, or null for what does not go over the bus. */
const char* typeOf(const Json& value)
{
    if (value.is_boolean())
        return "b";
    if (value.is_number_integer())
        return "x";
    if (value.is_number())
        return "d";
    if (value.is_string())
        return "s";
    if (value.is_object())
        return recordType;
    if (!value.is_array())
        return nullptr;
    if (value.empty() || value.front().is_string())
        return "as";
    return value.front().is_object() ? recordsType : "ax";
}

int appendBare(sd_bus_message* message, const Json& value)
{
    if (value.is_boolean())
    {
        const int truth = value.get<bool>() ? 1 : 0;
        return sd_bus_message_append_basic(message, 'b', &truth);
    }
    if (value.is_number_integer())
    {
        const auto number = value.get<std::int64_t>();
        return sd_bus_message_append_basic(message, 'x', &number);
    }
    if (value.is_number())
    {
        const auto number = value.get<double>();
        return sd_bus_message_append_basic(message, 'd', &number);
    }
    if (value.is_string())
        return sd_bus_message_append_basic(message, 's', value.get_ref<const std::string&>().c_str());
    return append(message, value);
}

int appendVariant(sd_bus_message* message, const Json& value)
{
    int result = sd_bus_message_open_container(message, SD_BUS_TYPE_VARIANT, typeOf(value));
    if (result >= 0)
        result = appendBare(message, value);
    return result < 0 ? result : sd_bus_message_close_container(message);
}

int appendRecord(sd_bus_message* message, const Json& record)
{
    int result = sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "{sv}");
    for (auto each = record.begin(); each != record.end() && result >= 0; ++each)
    {
        if (typeOf(each.value()) == nullptr)
            continue;
        result = sd_bus_message_open_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv");
        if (result >= 0)
            result = sd_bus_message_append_basic(message, 's', each.key().c_str());
        if (result >= 0)
            result = appendVariant(message, each.value());
        if (result >= 0)
            result = sd_bus_message_close_container(message);
    }
    return result < 0 ? result : sd_bus_message_close_container(message);
}

void check(int result)
{
    if (result < 0)
        throw std::runtime_error(std::strerror(-result));
}

Json readOne(sd_bus_message* message);

template <typename Number>
Json readNumber(sd_bus_message* message, char type)
{
    Number number {};
    check(sd_bus_message_read_basic(message, type, &number));
    return number;
}

Json readBasic(sd_bus_message* message, char type)
{
    switch (type)
    {
    case 'b':
        return readNumber<int>(message, type) != 0;
    case 'y':
        return readNumber<std::uint8_t>(message, type);
    case 'n':
        return readNumber<std::int16_t>(message, type);
    case 'q':
        return readNumber<std::uint16_t>(message, type);
    case 'i':
        return readNumber<std::int32_t>(message, type);
    case 'u':
        return readNumber<std::uint32_t>(message, type);
    case 'x':
        return readNumber<std::int64_t>(message, type);
    case 't':
        return readNumber<std::uint64_t>(message, type);
    case 'd':
        return readNumber<double>(message, type);
    case 's':
    case 'o':
    case 'g':
    {
        const char* text = nullptr;
        check(sd_bus_message_read_basic(message, type, &text));
        return text;
    }
    default:
        check(-EBADMSG);
        return {};
    }
}

/** The entries of a dictionary become an object, others a list. */
Json readArray(sd_bus_message* message, const char* contents)
{
    const bool isRecord = contents[0] == '{';
    Json all = isRecord ? Json::object() : Json::array();
    check(sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, contents));
    while (sd_bus_message_at_end(message, 0) == 0)
    {
        if (!isRecord)
        {
            all.push_back(readOne(message));
            continue;
        }
        check(sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, nullptr));
        const auto key = readOne(message);
        all[key.is_string() ? key.get<std::string>() : key.dump()] = readOne(message);
        check(sd_bus_message_exit_container(message));
    }
    check(sd_bus_message_exit_container(message));
    return all;
}

Json readOne(sd_bus_message* message)
{
    char type = 0;
    const char* contents = nullptr;
    check(sd_bus_message_peek_type(message, &type, &contents));
    if (type == SD_BUS_TYPE_ARRAY)
        return readArray(message, contents);
    if (type != SD_BUS_TYPE_VARIANT)
        return readBasic(message, type);
    check(sd_bus_message_enter_container(message, type, nullptr));
    auto value = readOne(message);
    check(sd_bus_message_exit_container(message));
    return value;
}

} // namespace

int append(sd_bus_message* message, const Json& value, const char* whenEmpty)
{
    if (value.is_object())
        return appendRecord(message, value);
    const auto* elements = value.empty() ? whenEmpty : typeOf(value.front());
    int result = sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, elements);
    for (auto each = value.begin(); each != value.end() && result >= 0; ++each)
        result = appendBare(message, *each);
    return result < 0 ? result : sd_bus_message_close_container(message);
}

Json read(sd_bus_message* message)
{
    Json all = Json::array();
    while (sd_bus_message_at_end(message, 1) == 0)
        all.push_back(readOne(message));
    if (all.empty())
        return nullptr;
    return all.size() == 1 ? Json(all.front()) : all;
}

} // namespace Diagnostics::Wire
