#include "EngineApi/Settings.h"
#include "EngineLayer/TLX70Dev.h"
#include "ProjectDepend/FavoriteBar.h"
#include "support/Golden.h"
#include "support/KeyFixture.h"

using namespace EngineApi;
using namespace EngineLayer;
using Platform::doubles::SerialPortDouble;

namespace
{

/** The wired remote, the key manager and the favourites bar together; the radio's program is the test's. */
class FavouritesSession : public KeyFixture
{
protected:
    FavouritesSession()
    {
        SerialPortDouble::onWrite(portName,
                                  [this](const juce::MemoryBlock& bytes)
                                  {
                                      transcript
                                          << "  to the remote  "
                                          << Platform::hexPairs(bytes.getData(), static_cast<int>(bytes.getSize()))
                                          << "\n";
                                  });
        add(TLX70Dev::getInstance(), Kernel::wiredRemoteId);
        Provided<WiredRemote>::set(TLX70Dev::getInstance());
        Provided<FavoriteBar>::set(&bar);
        TLX70Dev::getInstance()->showText(0, 0, "FM", false);
        TLX70Dev::getInstance()->showText(1, 0, "101.1 MHz", false);
    }
    ~FavouritesSession() override
    {
        Provided<FavoriteBar>::set(&favoriteBar);
        Provided<WiredRemote>::set(&remote);
        SerialPortDouble::onWrite(portName, {});
    }

    /** One byte of the remote, and what follows. */
    void key(std::uint8_t byte)
    {
        Platform::doubles::SystemDouble::advanceTicks(1000);
        transcript << "key " << Platform::hexPairs(&byte, 1) << "\n";
        SerialPortDouble::receive(portName, &byte, 1);
        run();
        for (const auto& each : takeSent())
            transcript << "  to " << Pubhead::appTypeName(each.appType) << "  " << each.what << " " << each.arg1 << " "
                       << each.arg2 << "\n";
        transcript << "  the bar is " << (bar.isShown() ? "shown" : "hidden") << "\n";
    }

    static constexpr const char* portName = "COM5:";
    juce::String transcript;
    Bar::FavoriteBar bar;
};

} // namespace

// The owner opens the favourites, stores the station in the third place, and comes back to it later.
TEST_F(FavouritesSession, StoresAndRecalls)
{
    constexpr std::uint8_t favorites = 0xA5, next = 0xAF, previous = 0xAE, store = 0xAC, enter = 0xA7, back = 0xA4;
    for (const auto byte : { favorites, next, next, store })
        key(byte);
    transcript << "the program stores it\n";
    setSettingInt(23 + 3, Pubhead::mbFM, true, Pubhead::AppRadio);
    setSettingString(39 + 3,
                     juce::String::fromUTF8("H\xC3\xA4"
                                            "fen 101.1"),
                     true, Pubhead::AppRadio);
    for (const auto byte : { back, favorites, previous, next, enter })
        key(byte);
    expectGolden("ProjectDepend/golden/favourites-session.txt", transcript);
}
