#pragma once

#include <string>

namespace Bench
{

/** A raw serial line: the unit opens `path`, the bench has the other end. Its user locks. */
class PseudoTerminal
{
public:
    PseudoTerminal() = default;
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    /** Opens it anew; neither end is inherited by programs. Empty on success, else what failed. */
    std::string open();
    /** A unit that has it open sees the line hang up. */
    void close();
    bool isOpen() const { return master >= 0; }

    /** The bench's end, which does not block; -1 when closed. */
    int descriptor() const { return master; }
    /** The character device of the unit's end. */
    const std::string& path() const { return name; }
    /** Throws away what neither end has read yet. */
    void flush() const;

private:
    int master = -1;
    int slave = -1; ///< stays open here, so that the line does not hang up while the unit is away
    std::string name;
};

} // namespace Bench
