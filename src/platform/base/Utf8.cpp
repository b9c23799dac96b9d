#include "platform/base/Utf8.h"

#include <nlohmann/json.hpp>

namespace Platform
{

juce::String textOfUtf8(std::string_view bytes)
{
    // The JSON library has the strict decoder: it writes the replacement where one is due.
    const nlohmann::json text(std::string(bytes.substr(0, bytes.find('\0'))));
    const auto valid = nlohmann::json::parse(text.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    return juce::String::fromUTF8(valid.get_ref<const std::string&>().c_str());
}

std::string_view utf8Prefix(const juce::String& text, std::size_t longest)
{
    const std::string_view bytes(text.toRawUTF8(), text.getNumBytesAsUTF8());
    if (bytes.size() <= longest)
        return bytes;
    const auto isContinuation = [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0) == 0x80; };
    auto end = longest;
    while (end > 0 && isContinuation(bytes[end]))
        --end;
    return bytes.substr(0, end);
}

} // namespace Platform
