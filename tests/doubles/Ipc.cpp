#include "doubles/IpcDouble.h"

#include "platform/base/Pubhead.h"
#include "platform/config/Configuration.h"

#include <algorithm>
#include <map>
#include <mutex>

namespace Platform
{

namespace
{

constexpr int toAll = -1;

struct State
{
    std::map<int, int> present; ///< program -> its process
    std::map<int, int> expected;
    std::vector<IpcDouble::Posted> posted;
    std::vector<IpcDouble::NamedBroadcast> named;
    std::function<void(const IpcDouble::Posted&)> program;
};

std::mutex lock;
State state;

/** Calls to the receiver run under this lock, so that none runs after `close`; recursive as a receiver may post. */
std::recursive_mutex receiverLock;
IMsgProc* receiver = nullptr;

template <typename Call>
bool deliver(Call&& call)
{
    const std::lock_guard guard(receiverLock);
    if (receiver == nullptr)
        return false;
    call(*receiver);
    return true;
}

Bundle::Ptr copyOf(const Bundle::Ptr& original)
{
    if (original == nullptr)
        return nullptr;
    const Bundle::Ptr copy = new Bundle(*original);
    for (const auto& [key, value] : original->getValues())
        if (const auto* inner = std::get_if<Bundle::Ptr>(&value))
            copy->putBundle(key, copyOf(*inner));
        else if (const auto* list = std::get_if<std::vector<Bundle::Ptr>>(&value))
        {
            std::vector<Bundle::Ptr> copies;
            std::transform(list->begin(), list->end(), std::back_inserter(copies), copyOf);
            copy->putBundleList(key, std::move(copies));
        }
    return copy;
}

bool post(int appType, const RemoteMessage::Ptr& message)
{
    if (message == nullptr)
        return false;
    const IpcDouble::Posted posted { appType, message->what, message->arg1, message->arg2, copyOf(message->bundle) };
    std::function<void(const IpcDouble::Posted&)> program;
    {
        const std::lock_guard guard(lock);
        state.posted.push_back(posted);
        program = state.program;
    }
    if (program)
        program(posted);
    return true;
}

} // namespace

MsgSession::~MsgSession()
{
    close();
}

bool MsgSession::init(IMsgProc* newReceiver)
{
    const std::lock_guard guard(receiverLock);
    receiver = newReceiver;
    open = true;
    return true;
}

void MsgSession::close()
{
    const std::lock_guard guard(receiverLock);
    if (std::exchange(open, false))
        receiver = nullptr;
}

namespace IPCMsg
{

void MessageHelper::config(int, const char* (*)(int)) {}

std::string MessageHelper::busAddress()
{
    return Configuration::get().ipcAddress.toStdString();
}

bool MessageHelper::postMessage(int appType, const RemoteMessage::Ptr& message)
{
    return isPresent(appType) && post(appType, message);
}

bool MessageHelper::broadcastMessage(const RemoteMessage::Ptr& message)
{
    return post(toAll, message);
}

bool MessageHelper::sendBroadcast(const juce::String& action, const Bundle::Ptr& bundle)
{
    const std::lock_guard guard(lock);
    state.named.push_back({ action, copyOf(bundle) });
    return true;
}

bool MessageHelper::isPresent(int appType)
{
    const std::lock_guard guard(lock);
    return state.present.contains(appType);
}

int MessageHelper::ownerProcess(int appType)
{
    const std::lock_guard guard(lock);
    const auto found = state.present.find(appType);
    return found == state.present.end() ? -1 : found->second;
}

void MessageHelper::expectProcess(int appType, int pid)
{
    const std::lock_guard guard(lock);
    state.expected.insert_or_assign(appType, pid);
}

} // namespace IPCMsg

namespace IpcDouble
{

void reset()
{
    const std::lock_guard guard(lock);
    state = {};
}

void setPresent(int appType, bool present, int pid)
{
    {
        const std::lock_guard guard(lock);
        const bool before = state.present.contains(appType);
        if (present)
            state.present.insert_or_assign(appType, pid);
        else
            state.present.erase(appType);
        if (before == present)
            return;
    }
    deliver([=](IMsgProc& target) { target.onPresence(appType, present); });
}

void setAllPresent(bool present)
{
    for (int appType = Pubhead::AppMain + 1; appType < Pubhead::AppUnknown; ++appType)
        setPresent(appType, present);
}

std::vector<Posted> takePosted()
{
    const std::lock_guard guard(lock);
    return std::exchange(state.posted, {});
}

std::vector<Posted> takePosted(int appType)
{
    const std::lock_guard guard(lock);
    std::vector<Posted> taken;
    std::erase_if(state.posted,
                  [&](const Posted& each)
                  {
                      if (each.appType == appType)
                          taken.push_back(each);
                      return each.appType == appType;
                  });
    return taken;
}

std::vector<NamedBroadcast> takeNamedBroadcasts()
{
    const std::lock_guard guard(lock);
    return std::exchange(state.named, {});
}

void onPost(std::function<void(const Posted&)> program)
{
    const std::lock_guard guard(lock);
    state.program = std::move(program);
}

int expectedProcess(int appType)
{
    const std::lock_guard guard(lock);
    const auto found = state.expected.find(appType);
    return found == state.expected.end() ? -1 : found->second;
}

bool injectMessage(int fromAppType, juce::int32 what, juce::int32 arg1, juce::int32 arg2, Bundle::Ptr bundle)
{
    return deliver(
        [&](IMsgProc& target)
        {
            auto message = RemoteMessage::obtain();
            message->what = what;
            message->arg1 = arg1;
            message->arg2 = arg2;
            message->bundle = bundle;
            message->appType = fromAppType;
            target.onRemoteMessage(std::move(message));
        });
}

bool injectWindowMessage(juce::int32 message, juce::int32 wParam, juce::int32 lParam)
{
    return deliver([=](IMsgProc& target) { target.onWindowMessage(message, wParam, lParam); });
}

} // namespace IpcDouble

} // namespace Platform
