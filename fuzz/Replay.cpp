#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace
{

bool replay(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
    {
        std::fprintf(stderr, "%s: cannot be read\n", path.c_str());
        return false;
    }
    std::vector<std::uint8_t> bytes;
    for (std::istreambuf_iterator<char> at(file), end; at != end; ++at)
        bytes.push_back(static_cast<std::uint8_t>(*at));
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    return true;
}

} // namespace

/** Runs the fuzz target once over every file in the folders that are named. Status 1 when there is none. */
int main(int argc, char** argv)
{
    int replayed = 0;
    for (int index = 1; index < argc; ++index)
    {
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(argv[index], error))
        {
            if (!replay(entry.path()))
                return 1;
            ++replayed;
        }
        if (error)
            std::fprintf(stderr, "%s: %s\n", argv[index], error.message().c_str());
    }
    std::printf("%d inputs replayed\n", replayed);
    return replayed > 0 ? 0 : 1;
}
