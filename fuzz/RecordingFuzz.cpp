#include "platform/record/Recording.h"

#include <algorithm>
#include <cstdlib>

using namespace Platform;

namespace
{

void require(bool condition)
{
    if (!condition)
        std::abort();
}

bool isOneLine(const std::string& text)
{
    return !text.empty() && std::ranges::none_of(text, [](char each) { return each >= 0 && each < ' '; });
}

} // namespace

/** As a file, as the fields of every step, and as a bundle. */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    std::string error;
    require(decodeHeader(bytes, error).has_value() == error.empty());

    RecordCutter cutter(bytes.substr(std::min(size, headerSize)));
    while (const auto record = cutter.next())
    {
        std::string again;
        encodeRecord(again, *record);
        require(RecordCutter(again).next()->fields == record->fields);
        require(record->asked().size() + record->answer().size() <= record->fields.size());
    }
    for (const auto& info : allSteps())
        require(isOneLine(describe(info.step, bytes)));

    error.clear();
    if (const auto bundle = bundleOf(bytes, error); error.empty())
    {
        const Fields fields(bundle);
        FieldReader reader(fields.bytes());
        require(Fields(bundleOf(reader.bytes(), error)).bytes() == fields.bytes());
    }
    return 0;
}
