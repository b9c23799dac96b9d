#pragma once

#include "bench/unit/PacketServer.h"

#include <nlohmann/json_fwd.hpp>
#include <optional>

namespace Bench
{

/**
    The source programs of the unit. The engine starts and ends them; each running one reports here over a control
    socket and takes orders from here. Packets are JSON objects, see bench/README.md.

    Journal streams: "program AppRadio" (running, connected, gone, and what it received), "page mbFM" (shown, hidden,
    covered, confirmed), "front" (the page in front, or "none"). Any thread.
*/
class Programs
{
public:
    Programs(Loop& loopToUse, Journal& journalToUse);

    /** Opens the control socket. Empty on success, else what failed. */
    std::string start(const std::string& socketPath);
    /** Ends the programs that are left, the hung ones too, and closes the socket. */
    void stop();

    /** All at once, by force. */
    void kill();

    struct Program
    {
        int connection = 0;
        int pid = -1;
        bool connected = false; ///< the engine has acknowledged its hello
        bool silent = false, hung = false;
        std::chrono::milliseconds slow { 0 };
        unsigned heartbeats = 0;
        int source; ///< the page whose source it plays, NUM_OF_PAGES for none

        /** "silent", "slow 800 ms", "hung", with commas between them; empty for none. */
        std::string faultText() const;
    };
    /** By application type; those that run. */
    std::map<int, Program> running() const;
    /** NUM_OF_PAGES when no page of these programs is in front. */
    int pageInFront() const;
    /** The page in front and those behind it that come back, as far as the programs know. */
    std::vector<int> pageStack() const;

    // Orders; each is false when the program does not run.
    bool setSilent(int appType, bool silent);                   ///< takes everything, answers nothing
    bool setSlow(int appType, std::chrono::milliseconds delay); ///< answers this much later; 0 ends it
    bool crash(int appType);                                    ///< ends by a fault
    bool hang(int appType);                                     ///< stops altogether, like a program in an endless loop
    bool wakeUp(int appType);                                   ///< ends `hang`
    bool exit(int appType);                                     ///< ends properly
    /** Any remote message to the engine, from this program. */
    bool sendMessage(int appType, int what, int arg1, int arg2);
    /** Gives the program an order of its own ("connect analog"). Empty when it was carried out, else what is wrong. */
    std::string tell(int appType, const std::string& words);
    /** Lets it change a setting; a whole number as an integer, anything else as a text. */
    bool changeSetting(int appType, int setting, const std::string& value);
    /** Lets it write both lines of the wired remote. */
    bool showOnRemote(int appType, const std::string& line1, const std::string& line2);
    /** Like sendMessage, to the engine's window; without a display there is none. */
    bool sendWindowMessage(int appType, int message, int wParam, int lParam);

    /**
        Asks for a page, as a program does for the user's choice in it: through the page's own program when it runs,
        else through the one in front, else any. Empty on success, else why not.
    */
    std::string requestPage(int page);
    /** Changes a setting, through the setup program when it runs, else through any. Empty on success, else why not. */
    std::string changeSetting(int setting, const std::string& value);
    /** Asks for a page to be left, in the same way. */
    std::string stopPage(int page);

private:
    Loop& loop; // its turns guard everything below
    Journal& journal;
    PacketServer server { loop };
    std::map<int, Program> programs;
    std::map<int, int> pidOfConnection;
    int front;
    std::vector<int> shown; ///< pages, the last one first

    void onPacket(int connection, PacketLine::Packet packet);
    void onHello(int connection, int appType, const std::string& commandLine, Clock::time_point at);
    void onClosed(int connection);
    void onPage(int page, const std::string& change, Clock::time_point at);
    void onCommandLine(int appType, const std::string& text);
    void setFront(int page, Clock::time_point at);
    int appOfConnection(int connection) const;
    int carrierFor(int appType) const;
    bool order(int appType, const nlohmann::json& what, const std::function<void(Program&)>& note = {});
};

} // namespace Bench
