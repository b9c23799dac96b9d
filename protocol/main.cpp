// Prints what authors of source programs are given, from the engine's own tables.
#include "protocol/Document.h"
#include "protocol/Languages.h"

#include <fstream>
#include <iostream>
#include <sstream>

namespace
{

int fail(const std::string& problem)
{
    std::cerr << "headunit-protocol: " << problem << "\n";
    return EXIT_FAILURE;
}

int printDocument(const std::string& path)
{
    std::ifstream file(path);
    std::ostringstream text;
    if (!file || !(text << file.rdbuf()))
        return fail(path + ": cannot be read");
    std::string problem;
    const auto filled = Protocol::filledIn(text.str(), problem);
    if (!problem.empty())
        return fail(path + ": " + problem);
    std::cout << filled;
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string what = argc > 1 ? argv[1] : "";
    if (what == "document" && argc == 3)
        return printDocument(argv[2]);
    if (what == "header" && argc == 2)
        std::cout << Protocol::header();
    else if (what == "python" && argc == 2)
        std::cout << Protocol::pythonModule();
    else
        return fail("usage: headunit-protocol header | python | document FILE");
    return EXIT_SUCCESS;
}
