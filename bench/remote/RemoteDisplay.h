#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace Bench
{

/**
    What the wired remote makes of the unit's bytes: two lines of 16 characters and three levels of brightness. Bytes
    may come in any pieces. What makes no sense is skipped and counted.
*/
class RemoteDisplay
{
public:
    static constexpr int rows = 2;
    static constexpr int columns = 16;

    enum class Change { none, display, dimmer, damage };

    /** Takes one byte; says what it completed. */
    Change take(std::uint8_t byte);

    /** Always 16 characters. */
    const std::string& line(int row) const { return lines[static_cast<std::size_t>(row)]; }
    /** "|Favorites       |1  FM 98.5      |" */
    std::string text() const;

    std::optional<int> startLevel() const { return start; } ///< 0 to 15
    std::optional<int> dimmerA() const { return levelA; }
    std::optional<int> dimmerB() const { return levelB; }
    unsigned commands() const { return taken; }
    unsigned damaged() const { return damages; }

private:
    enum class Expecting { command, parameter, text };

    Change begin(std::uint8_t byte);
    Change finishCommand(std::uint8_t parameter);
    Change damage();

    std::array<std::string, rows> lines { std::string(columns, ' '), std::string(columns, ' ') };
    std::optional<int> start, levelA, levelB;
    unsigned taken = 0, damages = 0;
    Expecting expecting = Expecting::command;
    int position = 0; ///< of the text that is being received: row * columns + column
    std::string received;
};

} // namespace Bench
