// The main menu: what the unit offers, to be chosen by a touch.
#include "bench/program/profiles/Profiles.h"
#include "bench/text/Names.h"
#include "platform/channel/RemoteMessageIds.h"

#include <algorithm>
#include <array>

namespace BenchProgram
{

using namespace Platform;
using namespace Pubhead;

namespace
{

/** First argument of RMSG_MAINMENU_NOTIFY. */
enum Notice : int { sourceNotice = 1, stateNotice = 2 };

constexpr std::array sources { mbFM,          mbAM,      mbWB,     mbSirius,  mbUSBAudio, mbiPodAudio,
                               mbiPodPandora, mbBTAudio, mbAuxin2, mbBTPhone, mbSetup };
constexpr std::array others { mbUSBVideo, mbiPodVideo, mbAuxin1, mbReariPod, mbRearAV1,  mbRearAV2,
                              mbCamera,   mbEQ,        mbAVOff,  mbStandby,  mbAntitheft };
constexpr int turnOver = NUM_OF_PAGES; ///< id of the tile that shows the other half

class MainMenuProfile : public Profile
{
public:
    using Profile::Profile;

    void onCommandLine(const AppCommandLine& line) override
    {
        takeState(line.getExtraData());
        if (line.isFrontShow())
            second = false;
    }

    void onMessage(const RemoteMessage& message) override
    {
        if (message.what != RMSG_MAINMENU_NOTIFY)
            return;
        if (message.arg1 == stateNotice)
            takeState(message.bundle);
        else if (message.arg1 == sourceNotice)
            takeSource(message.arg2);
        host.changed();
    }

    PageContent content(int) const override
    {
        PageContent content;
        for (const auto page :
             second ? std::span<const eAppServiceType>(others) : std::span<const eAppServiceType>(sources))
            content.tiles.push_back({ page, page, Bench::pageInfo(page)->title, isOffered(page),
                                      page == normalSource || page == rearSource });
        content.tiles.push_back({ turnOver, NUM_OF_PAGES, second ? "Sources" : "More" });
        return content;
    }

    void onTouch(int, int id) override
    {
        if (id == turnOver)
        {
            second = !second;
            host.changed();
        }
        else if (id == mbEQ)
            host.send(RMSG_EQ_PAGE_SHOW, 0);
        else if (id == mbStandby)
            host.send(RMSG_APP_EVENT, menuStandby, enterStandby);
        else
            host.send(RMSG_APP_EVENT, menuPageChosen, id);
    }

    std::string onOrder(const juce::StringArray& words) override
    {
        if (words.size() == 1 && words[0] == "state")
            host.send(RMSG_APP_EVENT, menuWantsState);
        else if (const auto page = Bench::findPage(words.joinIntoString(" ").toStdString()); page != NUM_OF_PAGES)
            onTouch(mbMainMenu, page);
        else
            return "a page to choose, or 'state' to ask what the unit offers";
        return {};
    }

private:
    juce::MemoryBlock offered;
    int normalSource = NUM_OF_PAGES;
    int rearSource = NUM_OF_PAGES;
    bool second = false;

    void takeState(const Bundle::Ptr& state)
    {
        if (state == nullptr)
            return;
        if (const auto pages = state->getByteArray("state"); !pages.isEmpty())
            offered = pages;
        normalSource = state->getInt("normalSrc", normalSource);
        rearSource = state->getInt("rearSrc", rearSource);
    }

    /** Of either zone. */
    void takeSource(int page)
    {
        const bool isRear = page == mbRearOff || Bench::isRearZone(page);
        (isRear ? rearSource : normalSource) = page;
    }

    bool isOffered(int page) const
    {
        const auto* pages = static_cast<const std::uint8_t*>(offered.getData());
        return std::find(pages, pages + offered.getSize(), page) != pages + offered.getSize();
    }
};

} // namespace

std::unique_ptr<Profile> makeMainMenuProfile(Host& host)
{
    return std::make_unique<MainMenuProfile>(host);
}

} // namespace BenchProgram
