// USB storage and the AUX inputs.
#include "EngineApi/KeyCodes.h"
#include "bench/console/Script.h"
#include "bench/program/profiles/Profiles.h"
#include "platform/base/Pubhead.h"
#include "platform/channel/RemoteMessageIds.h"
#include "platform/config/Configuration.h"
#include "platform/settings/SetupIndex.h"
#include "platform/settings/SetupStore.h"

namespace BenchProgram
{

using namespace EngineApi;
using namespace Platform;
using namespace Pubhead;

namespace
{

constexpr int mostRows = 6;

/** What is on all storage that is plugged in, sorted. */
juce::StringArray filesOnStorage()
{
    juce::StringArray names;
    for (const auto& folder :
         juce::File(Configuration::get().mediaRoot).findChildFiles(juce::File::findDirectories, false, "Hard Disk*"))
        for (const auto& file : folder.findChildFiles(juce::File::findFiles, false, "*.mp3;*.mp4"))
            names.add(file.getFileNameWithoutExtension());
    names.sort(true);
    return names;
}

class USBProfile : public Profile
{
public:
    using Profile::Profile;

    void onCommandLine(const AppCommandLine&) override { look(); }

    void onMessage(const RemoteMessage& message) override
    {
        // The factory's test chooses a piece.
        if (message.what == RMSG_USB_CONTROL && look())
            play(message.arg2);
    }

    void onKey(int key) override
    {
        if (look() && files.onKey(key))
            tellPiece();
    }

    PageContent content(int page) const override
    {
        auto content = plainContent(page, host.getSource());
        // Storage comes and goes without a word to the program.
        if (filesOnStorage().isEmpty())
        {
            content.status = "No storage";
            content.detail = "Plug in USB storage with music";
            return content;
        }
        content.rows = files.rows();
        if (content.rows.size() > mostRows)
            content.rows.resize(mostRows);
        return content;
    }

    void onTouch(int, int id) override
    {
        if (look())
            play(id);
    }

    std::string onOrder(const juce::StringArray& words) override
    {
        const auto pieces = look() ? files.getPieces().size() : 0;
        const auto piece = Bench::parseNumber(words[1].toStdString(), 1, pieces);
        if (words.size() != 2 || words[0] != "play" || !piece)
            return "play N, a piece on the storage";
        play(*piece - 1);
        return {};
    }

private:
    Playlist files { {} };

    /** False when there is nothing to play. */
    bool look()
    {
        if (auto found = filesOnStorage(); found != files.getPieces())
            files = Playlist(std::move(found));
        host.changed();
        return !files.getPieces().isEmpty();
    }

    void play(int piece)
    {
        files.play(piece);
        tellPiece();
    }

    void tellPiece()
    {
        host.report("plays", files.title());
        host.changed();
    }
};

class AuxInProfile : public Profile
{
public:
    using Profile::Profile;

    /** AUX has nothing to choose from: its rotary is the volume's. */
    void onKey(int key) override
    {
        if (key == KEY_ROTARY_NEXT || key == KEY_ROTARY_PRE)
            host.postToWindow(RMSG_MENU_COMMAND_WINDOW, panelKey, key == KEY_ROTARY_NEXT ? panelLouder : panelSofter);
    }

    PageContent content(int page) const override
    {
        auto content = plainContent(page, host.getSource());
        if (const auto name = VX_GetSetupValueString(auxNameSetting); page == mbAuxin2 && name.isNotEmpty())
            content.title = name == "AUX" ? content.title : name;
        return content;
    }
};

} // namespace

std::unique_ptr<Profile> makeUSBProfile(Host& host)
{
    return std::make_unique<USBProfile>(host);
}

std::unique_ptr<Profile> makeAuxInProfile(Host& host)
{
    return std::make_unique<AuxInProfile>(host);
}

} // namespace BenchProgram
