#include "platform/base/LaunchRequest.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>
#include <sys/socket.h>
#include <sys/time.h>

namespace Platform
{

namespace
{

using Json = nlohmann::json;

Json parsed(const std::string& text)
{
    constexpr bool throws = false;
    return Json::parse(text, nullptr, throws);
}

/** No text that goes to the system may hold an end. */
bool isText(const Json& value)
{
    return value.is_string() && value.get_ref<const std::string&>().find('\0') == std::string::npos;
}

bool isList(const Json& value)
{
    return value.is_array() && std::ranges::all_of(value, isText);
}

bool isVariable(const std::string& text)
{
    return text.find('=') != std::string::npos && text.front() != '=';
}

/** Takes one value into the request. False when it has not the wanted form. */
bool take(const std::string& key, const Json& value, LaunchRequest& request)
{
    if (key == "end")
        return value.is_boolean() && (request.ends = value.get<bool>());
    if (key == "path" && isText(value))
        return !(request.path = value.get<std::string>()).empty() && request.path.front() == '/';
    if (key == "user" && isText(value))
        return !(request.user = value.get<std::string>()).empty();
    if (key == "arguments" && isList(value))
    {
        request.arguments = value.get<std::vector<std::string>>();
        return true;
    }
    if (key == "environment" && isList(value))
    {
        request.environment = value.get<std::vector<std::string>>();
        return std::ranges::all_of(request.environment, isVariable);
    }
    return false;
}

/** The call's answer, asked again when a signal came between. */
template <typename Call>
ssize_t uninterrupted(Call call)
{
    for (;;)
        if (const ssize_t answer = call(); answer >= 0 || errno != EINTR)
            return answer;
}

} // namespace

std::string LaunchRequest::toText() const
{
    Json request = ends ? Json { { "end", true } }
                        : Json { { "path", path }, { "arguments", arguments }, { "environment", environment } };
    if (!user.empty())
        request["user"] = user;
    return request.dump();
}

std::optional<LaunchRequest> LaunchRequest::parse(const std::string& text, std::string& problem)
{
    const auto content = parsed(text);
    if (!content.is_object())
    {
        problem = "the request is no JSON object";
        return {};
    }
    LaunchRequest request;
    for (const auto& [key, value] : content.items())
        if (!take(key, value, request))
        {
            problem = "the request's \"" + key.substr(0, 32) + "\" is not as it should be";
            return {};
        }
    const bool starts = !request.path.empty();
    if (starts == request.ends)
    {
        problem = "the request asks neither for a start nor for an end alone";
        return {};
    }
    return request;
}

std::string LaunchAnswer::toText() const
{
    if (!error.empty())
        return Json { { "error", error } }.dump(-1, ' ', false, Json::error_handler_t::replace);
    return (ended ? Json { { "ended", true } } : Json { { "pid", pid } }).dump();
}

LaunchAnswer LaunchAnswer::parse(const std::string& text)
{
    const auto content = parsed(text);
    LaunchAnswer answer;
    const auto is = [&](const char* key, auto check)
    { return content.is_object() && content.contains(key) && check(content[key]); };
    if (is("pid", [](const Json& number) { return number.is_number_integer() && number > 0 && number <= INT32_MAX; }))
        answer.pid = content["pid"].get<int>();
    else if (is("ended", [](const Json& flag) { return flag == true; }))
        answer.ended = true;
    else if (is("error", isText))
        answer.error = content["error"].get<std::string>();
    if (answer.pid == 0 && !answer.ended && answer.error.empty())
        answer.error = "the answer of the launcher is not understood";
    return answer;
}

int LaunchPacket::send(int socket, const std::string& text, int passed)
{
    iovec part { const_cast<char*>(text.data()), text.size() };
    msghdr message {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] {};
    if (passed >= 0)
    {
        message.msg_control = control;
        message.msg_controllen = sizeof(control);
        auto* header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(sizeof(int));
        std::memcpy(CMSG_DATA(header), &passed, sizeof(int));
    }
    return uninterrupted([&] { return sendmsg(socket, &message, MSG_NOSIGNAL); }) < 0 ? errno : 0;
}

int LaunchPacket::receive(int socket)
{
    text.resize(LaunchRequest::maxBytes);
    passed.reset();
    iovec part { text.data(), text.size() };
    msghdr message {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] {};
    message.msg_control = control;
    message.msg_controllen = CMSG_LEN(sizeof(int)); // Without the padding, which would hold a second one.
    const auto length = uninterrupted([&] { return recvmsg(socket, &message, MSG_CMSG_CLOEXEC); });
    const int error = length < 0 ? errno : (message.msg_flags & MSG_TRUNC) != 0 ? EMSGSIZE : 0;
    text.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    if (const auto* header = length < 0 ? nullptr : CMSG_FIRSTHDR(&message);
        header != nullptr && header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_RIGHTS)
    {
        int descriptor = -1;
        std::memcpy(&descriptor, CMSG_DATA(header), sizeof(int));
        passed.reset(descriptor);
    }
    return error;
}

int LaunchPacket::limitWaits(int socket)
{
    constexpr timeval limit { LaunchRequest::patience.count(), 0 };
    return setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit)) != 0 ||
                   setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit)) != 0
               ? errno
               : 0;
}

} // namespace Platform
