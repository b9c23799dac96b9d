#include "bench/unit/PseudoTerminal.h"

#include "support/Terminal.h"

#include <fcntl.h>
#include <filesystem>
#include <sys/wait.h>

namespace
{

using namespace Bench;

/** A bench was killed, and its link is still there; the number of its line is another terminal's by now. */
TEST(PseudoTerminal, leavesNoWayToAnotherTerminal)
{
    auto pattern = (std::filesystem::temp_directory_path() / "line-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    const auto link = pattern + "/mcu";
    const auto child = fork();
    if (child == 0)
    {
        Loop loop;
        PseudoTerminal line(loop);
        line.setLink(link);
        const bool opens = line.open().empty() && ::open(link.c_str(), O_RDWR | O_NOCTTY) >= 0;
        _exit(opens ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "the unit cannot open the line";

    const Terminal one, two, three;
    EXPECT_LT(::open(link.c_str(), O_RDWR | O_NOCTTY), 0);
    std::filesystem::remove_all(pattern);
}

} // namespace
