#include "bench/program/ProgramModel.h"

#include "EngineApi/KeyCodes.h"
#include "bench/program/Describe.h"
#include "bench/program/profiles/Profiles.h"
#include "bench/text/Names.h"
#include "platform/base/BundleKeys.h"
#include "platform/base/Pubhead.h"
#include "platform/channel/RemoteMessageIds.h"
#include "platform/settings/SetupIndex.h"

namespace BenchProgram
{

using namespace EngineApi;
using namespace Platform;
using namespace Pubhead;

namespace
{

/** Second argument of RMSG_SETTING_CHANGED. */
constexpr int settingIsText = 0;

} // namespace

ProgramModel::ProgramModel(int ownType, juce::String firstLine, Outside& outsideToUse)
    : appType(ownType)
    , outside(outsideToUse)
    , profile(makeProfile(ownType, *this))
    , firstCommandLine(std::move(firstLine))
    , shownPage(NUM_OF_PAGES)
    , source(NUM_OF_PAGES)
    , playing(NUM_OF_PAGES)
{
}

ProgramModel::~ProgramModel() = default;

void ProgramModel::engineIsPresent(bool present)
{
    if (present == std::exchange(engineHere, present))
        return;
    // The engine has this long to come back, or to answer the hello: the name may be another's for it. Meanwhile the
    // music plays on and the page stays, as it may only be the bus that has gone.
    outside.awaitEngine(true);
    if (present)
    {
        sayHello();
        if (const auto line = std::exchange(firstCommandLine, {}); line.isNotEmpty())
            onCommandLine(CmdLineHelper::parseCommandLine(line));
    }
}

void ProgramModel::sayHello()
{
    send(RMSG_APP_HELLO, appType);
}

void ProgramModel::handle(const RemoteMessage& message)
{
    switch (message.what)
    {
    case RMSG_ENGINE_STARTED:
        // Who shows what is the engine's decision; a new one starts with an empty screen.
        if (shownPage != NUM_OF_PAGES)
            giveUpPage(shownPage, "hidden");
        outside.clear();
        sayHello();
        break;
    case RMSG_APP_HELLO_ACK:
        outside.awaitEngine(false);
        report("connected", {});
        profile->onConnected();
        break;
    case RMSG_HEARTBEAT:
        report("heartbeat", {});
        send(RMSG_HEARTBEAT_REPLY, appType);
        break;
    case RMSG_COMMAND_LINE:
        onCommandLine(message.bundle);
        break;
    case RMSG_PAGE_SHOW:
        showPage(message.arg1);
        send(RMSG_PAGE_SHOW_READY, message.arg1);
        break;
    case RMSG_PAGE_HIDE:
        // It is seen until the next page is there: between the two the screen is not to be bare.
        giveUpPage(message.arg1, "hidden");
        send(RMSG_PAGE_HIDE_READY, message.arg1);
        break;
    case RMSG_PAGE_COVERED:
        giveUpPage(message.arg1, "covered");
        if (shownPage == NUM_OF_PAGES)
            outside.clear();
        break;
    case RMSG_SOURCE_STOP:
        report("stop", {});
        outside.quit();
        break;
    case RMSG_PAGE_NOTIFY:
        report("power-off", pageName(message.arg1));
        send(RMSG_STATE_TO_SYSTEM, message.arg1);
        break;
    case RMSG_KEY:
        report("key", Bench::keyText(message.arg1, message.arg2));
        profile->onKey(message.arg1);
        break;
    case RMSG_FAVOURITE:
    case RMSG_SXM_FAVOURITE:
    case RMSG_DAB_FAVOURITE:
        onFavourite(message);
        break;
    default:
        onOwnMessage(message);
        break;
    }
}

void ProgramModel::onCommandLine(const Bundle::Ptr& bundle)
{
    const auto line = RemoteObjFormat::generateCommandLine(bundle);
    if (line == nullptr)
    {
        report("command-line", "malformed");
        return;
    }
    report("command-line", describe(*line));
    if (line->isSourceEnter())
        outside.showSource(source = line->getPage());
    if (line->isSourceExit() && line->getPage() == source)
        outside.showSource(source = NUM_OF_PAGES);
    profile->onCommandLine(*line);
    if (const auto extra = line->getExtraData(); extra != nullptr)
        if (const auto favourite = extra->getInt(BundleKeys::favouriteKey, 0); favourite != 0)
            profile->playFavourite(favourite);
    if (line->isFrontShow())
        send(RMSG_PAGE_REQUEST_SHOW, line->getPage());
    // The page stays on the screen until the next one is ready; this only says that the order has arrived.
    if (line->isPageHide() && line->getPage() == shownPage && shownPage != NUM_OF_PAGES)
    {
        outside.reportPage("confirmed", shownPage);
        send(RMSG_PAGE_TOP_SHOWN, shownPage);
    }
}

void ProgramModel::onOwnMessage(const RemoteMessage& message)
{
    report("message", describe(message));
    profile->onMessage(message);
}

void ProgramModel::onFavourite(const RemoteMessage& message)
{
    const auto favourite = message.arg2;
    const juce::String number(favourite);
    switch (message.arg1)
    {
    case favouriteStore:
    {
        const auto label = profile->favouriteLabel();
        report("favourite", "stored " + number + " " + label);
        changeSetting(favouritePageSetting(favourite), source != NUM_OF_PAGES ? source : shownPage);
        changeSetting(favouriteLabelSetting(favourite), label);
        profile->favouriteStored(favourite);
        break;
    }
    case favouritePlay:
        report("favourite", "played " + number);
        profile->playFavourite(favourite);
        break;
    case favouriteOpen:
        report("favourite", "opened at " + number);
        profile->openFavourites();
        break;
    default:
        onOwnMessage(message);
        break;
    }
}

void ProgramModel::showPage(int page)
{
    shownPage = page;
    outside.show(page);
    outside.reportPage("shown", page);
}

void ProgramModel::giveUpPage(int page, const char* change)
{
    if (page == shownPage)
        shownPage = NUM_OF_PAGES;
    outside.reportPage(change, page);
}

void ProgramModel::changeSetting(int setting, int value)
{
    send(RMSG_SETTING_CHANGED, setting, settingIsInteger, RemoteObjFormat::formatInt(value));
    outside.contentChangesSoon();
}

void ProgramModel::changeSetting(int setting, const juce::String& value)
{
    send(RMSG_SETTING_CHANGED, setting, settingIsText, RemoteObjFormat::formatString(value));
    outside.contentChangesSoon();
}

void ProgramModel::showOnRemote(const juce::String& line1, const juce::String& line2)
{
    const auto texts = Bundle::obtain();
    texts->putString(BundleKeys::remoteLine1Key, line1);
    texts->putInt(BundleKeys::remoteColumn1Key, 0);
    texts->putString(BundleKeys::remoteLine2Key, line2);
    texts->putInt(BundleKeys::remoteColumn2Key, 0);
    send(RMSG_WIRED_REMOTE_TEXT, 0, 0, texts);
}

void ProgramModel::setPlaying(int page)
{
    playing = page;
    outside.contentChanged();
}

void ProgramModel::choosePage(int page)
{
    if (page == mbEQ)
        send(RMSG_EQ_PAGE_SHOW, 0);
    else
        send(RMSG_APP_EVENT, menuPageChosen, page);
}

void ProgramModel::leavePage(int page)
{
    if (page == mbEQ)
        send(RMSG_EQ_PAGE_HIDE, 0);
    else if (page == mbBTPhone)
        postToWindow(RMSG_MENU_COMMAND_WINDOW, sourceCommand, 0);
    else if (Bench::isOnlyPage(page))
        send(RMSG_SOURCE_STOP, 0);
    else
        send(RMSG_APP_EVENT, menuPageChosen, Bench::isRearZone(page) ? mbRearOff : mbAVOff);
}

void ProgramModel::send(int what, int arg1, int arg2, Bundle::Ptr bundle)
{
    if (!silent)
        outside.post(what, arg1, arg2, std::move(bundle));
}

} // namespace BenchProgram
