#include "platform/Utf8.h"

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

} // namespace Platform
