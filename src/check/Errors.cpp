#include "check/Errors.h"

#include "platform/base/Logger.h"

#include <array>
#include <cstdio>
#include <mutex>
#include <utility>

namespace Check
{

namespace
{

std::mutex lock;
std::string last;

bool note(const char*, int, const char*, const char* format, va_list arguments)
{
    std::array<char, 512> text {};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    const std::lock_guard guard(lock);
    last = text.data();
    return true;
}

} // namespace

void Errors::keep()
{
    Platform::Logger::getInstance()->redirect(nullptr, nullptr, nullptr, &note);
}

std::string Errors::take(const std::string& otherwise)
{
    const std::lock_guard guard(lock);
    auto found = std::exchange(last, {});
    return found.empty() ? otherwise : found;
}

} // namespace Check
