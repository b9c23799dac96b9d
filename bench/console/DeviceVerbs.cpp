#include "bench/console/Verb.h"
#include "bench/text/Screen.h"

#include <filesystem>
#include <ostream>

namespace Bench
{

namespace
{

std::string unless(bool done, const char* error)
{
    return done ? "" : error;
}

std::string plugUsb(Unit& unit, const Arguments& given)
{
    const auto number = given.number(1, 1);
    return unless(given[0] == "in" ? unit.plugUsb(number) : unit.unplugUsb(number),
                  "the mount point cannot be changed");
}

std::string putUpdate(Unit& unit, const Arguments& given)
{
    const auto number = given.number(1, 1);
    if (unit.putUpdate(number, given[0] == "update"))
        return {};
    const auto storage = std::to_string(number);
    return unit.isUsbPlugged(number) ? "nothing can be put on storage " + storage
                                     : "storage " + storage + " is not plugged: usb in " + storage;
}

void breakCameraBus(Unit& unit, bool fails, std::chrono::milliseconds delay)
{
    unit.videoDecoder->setFailing(fails);
    unit.videoDecoder->slowBy(delay);
}

Outcome showLines(Console& console, const Arguments&)
{
    const auto& style = console.style;
    constexpr std::size_t longestName = 18;
    const auto lines = console.unit.gpio->lines();
    if (lines.empty())
        console.output << style.dim("  The unit has touched no line yet.") << "\n";
    for (const auto& [number, line] : lines)
    {
        auto name = lineName(number);
        name.resize(longestName, ' ');
        console.row("line " + std::to_string(number),
                    (line.level != 0 ? style.good("high") : style.dim("low ")) + "  " + name +
                        style.dim("  function " + std::to_string(line.function) + ", written " +
                                  std::to_string(line.writes) + " times"));
    }
    return {};
}

constexpr const char* remoteTakesNothing = "the remote is unplugged, or the unit does not read";

std::uint8_t remoteKey(const Arguments& given)
{
    return WiredRemote::findKey(given[0]).value_or(0);
}

Outcome pressRemote(Console& console, const Arguments& given)
{
    console.moveFinger();
    return console.unit.remote->press(remoteKey(given)) ? Outcome { Outcome::acted } : failed(remoteTakesNothing);
}

Outcome showRemote(Console& console, const Arguments&)
{
    showReport(console, "remote");
    auto& remote = console.unit.remote;
    const auto& style = console.style;
    const auto display = remote->display();
    const auto bar = std::string("────────────────");
    console.output << "  ┌" << bar << "┐\n"
                   << "  │" << style.bold(display.line(0)) << "│\n"
                   << "  │" << style.bold(display.line(1)) << "│" << style.dim(remote->isPlugged() ? "" : "  unplugged")
                   << "\n"
                   << "  └" << bar << "┘\n";
    return {};
}

Outcome savePictureOf(Console& console, const std::string& display, const std::string& name)
{
    if (console.pictureFolder.empty())
        return {};
    const auto file = (std::filesystem::path(console.pictureFolder) / (name + ".png")).lexically_normal().string();
    if (const auto error = savePicture(display, file); !error.empty())
        return failed(error);
    if (console.watched)
        console.output << "  Drawn: " << file << "\n";
    return {};
}

Outcome takePicture(Console& console, const Arguments& given)
{
    return savePictureOf(console, console.unit.engine().display(), given[0]);
}

Outcome takeDesktopPicture(Console& console, const Arguments& given)
{
    return savePictureOf(console, displayOfEnvironment(Display::ofEnvironment), given[0]);
}

} // namespace

Verbs deviceVerbs()
{
    return {
        { "usb in|out [STORAGE]", "USB storage comes and goes.", onUnit(plugUsb) },
        { "usb update|bad-update [STORAGE]", "An update program on it, or one that does not start.",
          onUnit(putUpdate) },
        { "camera on|off", "The camera's picture signal.",
          onUnit([](Unit& unit, auto& given) { unit.videoDecoder->setSignal(given[0] == "on"); }) },
        { "i2c slow TIME", "Each transfer of the camera's bus takes so much longer.",
          onUnit([](Unit& unit, auto& given) { breakCameraBus(unit, false, given.time(0)); }) },
        { "i2c fail", "Its transfers are refused.", onUnit([](Unit& unit, auto&) { breakCameraBus(unit, true, {}); }) },
        { "i2c well", "Ends both.", onUnit([](Unit& unit, auto&) { breakCameraBus(unit, false, {}); }) },
        { "gpio", "The lines that the unit has used.", showLines },
        { "gpio LINE 0|1", "A level from outside.",
          onUnit(
              [](Unit& unit, auto& given) {
                  unit.gpio->drive(static_cast<std::uint32_t>(given.number(0)),
                                   static_cast<std::uint32_t>(given.number(1)));
              }) },
        { "gpio slow TIME", "Each operation on a line takes so much longer.",
          onUnit([](Unit& unit, auto& given) { unit.gpio->slowBy(given.time(0)); }) },
        { "gpio well", "Ends that.", onUnit([](Unit& unit, auto&) { unit.gpio->slowBy({}); }) },
        { "remote REMOTE-KEY", "Presses a key of the wired remote.", pressRemote },
        { "remote hold REMOTE-KEY TIME", "Presses it every 100 ms.",
          onUnit([](Unit& unit, auto& given) { unit.remote->hold(remoteKey(given), given.time(1)); }) },
        { "remote bytes BYTE...", "Sends any bytes.",
          onUnit([](Unit& unit, auto& given)
                 { return unless(unit.remote->sendBytes(given.bytes(0)), remoteTakesNothing); }) },
        { "remote unplug", "Pulls it out.", onUnit([](Unit& unit, auto&) { unit.remote->unplug(); }) },
        { "remote plug", "Puts it back.", onUnit([](Unit& unit, auto&) { return unit.remote->plug(); }) },
        { "remote stall [off]", "Takes no bytes of the unit while it lasts.",
          onUnit([](Unit& unit, auto& given) { unit.remote->stall(!given.has(0)); }) },
        { "remote [show]", "What the engine wants it to show, and its display.", showRemote },
        { "touch X Y", "A finger on the screen, 0 0 at its top left.",
          onUnit([](Unit& unit, auto& given)
                 { return touchScreen(unit.engine().display(), given.number(0), given.number(1)); }) },
        { "picture NAME",
          "The screen as NAME.png in the folder of --pictures; without it, here, and in a script not at all.",
          takePicture },
        { "picture desktop NAME", "The same of the desktop, where the panel is.", takeDesktopPicture },
        { "engine start|stop|restart|kill", "The engine's process; its programs go on without it for a while.",
          onUnit([](Unit& unit, auto& given) { return unit.engine().controlEngine(given[0]); }) },
        { "engine stall GROUP TIME", "One of its groups of tasks (SystemGroup) hangs for so long, all others go on.",
          onUnit([](Unit& unit, auto& given) { return unit.engine().stall(given[0], given.time(1)); }) },
        { "engine go", "Ends that.", onUnit([](Unit& unit, auto&) { unit.engine().goOn(); }) },
        { "power cut", "Everything loses its power at once, programs and bus too, and has it back.",
          onUnit([](Unit& unit, auto&) { return unit.cutPower(); }) },
        { "bus start|stop|restart", "The message bus of the engine and its programs.",
          onUnit([](Unit& unit, auto& given) { return unit.engine().controlBus(given[0]); }) },
    };
}

} // namespace Bench
