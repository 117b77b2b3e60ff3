// Runs arbitrary text, one statement a line, on a small database in memory. What is refused must be refused with the
// engine's own error, and what came out must be a database that can be read.
#include "jet/base/error.h"
#include "jet/connection.h"
#include "jet/damage/exercise.h"
#include "jet/store/crash_file_system.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

using jet::testing::CrashFileSystem;

constexpr const char* kFile = "test.mdb";

/// False when a statement was stopped half way: such a database can only be thrown away.
bool RunStatements(CrashFileSystem& disk, std::string_view text)
{
    const auto connection = jet::Connection::Open(kFile, disk);
    while (!text.empty()) {
        const std::string_view statement = text.substr(0, text.find('\n'));
        text.remove_prefix(statement.size() < text.size() ? statement.size() + 1 : text.size());
        try {
            connection->Execute(statement);
        } catch (const jet::Error&) {
            continue; // most inputs are no statements
        }
    }
    try {
        connection->Commit();
    } catch (const jet::Error&) {
        return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const jet::Bytes start[] = {jet::testing::TinyDatabase(jet::JetVersion::Jet3),
                                       jet::testing::TinyDatabase(jet::JetVersion::Jet4)};
    CrashFileSystem disk;
    disk.Put(kFile, start[size % std::size(start)]);
    if (!RunStatements(disk, {reinterpret_cast<const char*>(data), size}))
        return 0;
    const std::string fault = jet::testing::Exercise(disk.Content(kFile), 0, 0);
    if (!fault.empty()) {
        std::fprintf(stderr, "the statements have damaged the database: %s\n", fault.c_str());
        std::abort();
    }
    return 0;
}
