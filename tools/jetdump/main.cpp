#include "dump.h"

#include <charconv>
#include <cstring>
#include <exception>
#include <iostream>
#include <optional>
#include <string_view>
#include <vector>

namespace {

int Usage()
{
    std::cerr << "usage: jetdump [--schema] [--system] FILE\n"
                 "       jetdump --pages FILE\n"
                 "       jetdump --page N [--hex] FILE\n"
                 "  --schema  tables without their rows\n"
                 "  --system  the engine's own tables too\n"
                 "  --pages   the type of every page, and what it belongs to\n"
                 "  --page N  page N with all that is on it\n"
                 "  --hex     and its bytes\n"
                 "Pages are shown of damaged files too. The exit status is 1 when something was wrong.\n";
    return 2;
}

std::optional<jet::PageNumber> PageArgument(const char* text)
{
    jet::PageNumber page = 0;
    const char* const end = text + std::strlen(text);
    const auto [stop, error] = std::from_chars(text, end, page);
    return error == std::errc{} && stop == end && stop != text ? std::optional(page) : std::nullopt;
}

} // namespace

int main(int argc, char** argv)
{
    bool withRows = true, withSystemTables = false, listPages = false, withHex = false;
    std::optional<jet::PageNumber> page;
    std::vector<const char*> files;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--schema")
            withRows = false;
        else if (argument == "--system")
            withSystemTables = true;
        else if (argument == "--pages")
            listPages = true;
        else if (argument == "--hex")
            withHex = true;
        else if (argument != "--page")
            files.push_back(argv[i]);
        else if (i + 1 == argc || !(page = PageArgument(argv[++i])))
            return Usage();
    }
    if (files.size() != 1)
        return Usage();
    try {
        if (page)
            return DumpPage(files[0], *page, withHex) ? 0 : 1;
        if (listPages)
            ListPages(files[0]);
        else
            DumpTables(files[0], withRows, withSystemTables);
    } catch (const std::exception& error) {
        std::cerr << "jetdump: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
