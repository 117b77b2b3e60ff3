// handbook: writes the manual pages, the completions of three shells and Debian's changelog into a folder, from the
// table of options, the manual and the list of changes. usage: handbook VERSION SECONDS MAINTAINER MANUAL CHANGES
// FOLDER (SECONDS since 1970: when the release was made)

#include "handbook/completion.h"
#include "handbook/debian_changelog.h"
#include "handbook/manual_page.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

using namespace velmora::handbook;

std::string ReadFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + path.string());
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush())
        throw std::runtime_error("cannot write " + path.string());
}

std::string Date(std::time_t seconds, const char* form)
{
    std::ostringstream text;
    text << std::put_time(std::gmtime(&seconds), form);
    return text.str();
}

int Run(int argc, char* argv[])
{
    if (argc != 7)
        throw std::runtime_error("usage: handbook VERSION SECONDS MAINTAINER MANUAL CHANGES FOLDER");
    const std::string version = argv[1];
    const std::time_t made = std::stoll(argv[2]);
    const std::filesystem::path folder = argv[6];
    const std::vector<Block> manual = ParseMarkdown(ReadFile(argv[4]));
    std::string day = Date(made, "%B ");
    day.append(std::to_string(std::stoi(Date(made, "%d")))).append(Date(made, ", %Y"));

    std::filesystem::create_directories(folder);
    WriteFile(folder / "velmora.1", ConsolePage(manual, day));
    WriteFile(folder / "velmora-gui.1", WindowPage(manual, day));
    WriteFile(folder / "velmora.bash", BashCompletion());
    WriteFile(folder / "_velmora", ZshCompletion());
    WriteFile(folder / "velmora.fish", FishCompletion());
    const Signature signature{argv[3], Date(made, "%a, %d %b %Y %H:%M:%S +0000")};
    WriteFile(folder / "changelog", DebianChangelog(ParseMarkdown(ReadFile(argv[5])), version, signature));
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char* argv[])
{
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "handbook: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
