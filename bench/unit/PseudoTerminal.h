#pragma once

#include "bench/unit/Loop.h"

namespace Bench
{

/** A raw serial line on the loop: the unit opens `path`, the bench has the other end. */
class PseudoTerminal : public SerialLine
{
public:
    explicit PseudoTerminal(Loop& loopToUse)
        : loop(loopToUse)
    {
    }
    ~PseudoTerminal() override { close(); }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    /**
        A symbolic link to the line while it is open, for the group of its folder. In a folder that is nobody else's it never
        leads to another terminal, even when this process was killed. Before `open`.
    */
    void setLink(std::string path) { link = std::move(path); }
    /** The character device of the unit's end. */
    const std::string& path() const { return name; }

    /** Neither end is inherited by programs. */
    std::string open() override;
    void close() override;
    bool isOpen() const override { return master >= 0; }
    bool write(std::span<const std::uint8_t> bytes) override;
    void setReading(bool on) override;
    void flush() override;

private:
    Loop& loop;
    int master = -1; ///< the bench's end, which does not block
    int slave = -1;  ///< stays open here, so that the line does not hang up while the unit is away
    bool reading = true;
    std::string name, link;
    std::unique_ptr<Watch> watch;

    void read();
};

} // namespace Bench
