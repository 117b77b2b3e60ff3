#include "driver/once.h"

#include "log/runtime_error.h"
#include "platform/paths.h"
#include "platform/sha256.h"
#include "schema/engine_errors.h"

#include <cstdio>
#include <memory>

namespace velmora {

std::optional<std::string> UnfitOnce(const ConversionSettings& settings)
{
    if (!settings.blOnce)
        return std::nullopt;
    if (settings.targetFile.empty())
        return "+once needs a database that stays, mdb=FILE; nothing was written";
    if (settings.blRecreateDatabase)
        return "+once looks into the database for what was loaded before: it needs -recreate_database; nothing was "
               "written";
    return std::nullopt;
}

std::string HashOfFile(Job& job, const std::string& path)
{
    constexpr std::size_t kPieceBytes = std::size_t{1} << 20;
    struct Closer {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    const std::unique_ptr<std::FILE, Closer> file(OpenFileStream(path, "rb"));
    if (!file)
        return {};
    Sha256 hash;
    std::string piece(kPieceBytes, '\0');
    for (std::size_t size = 1; size > 0;) {
        job.ProcessEvents();
        size = std::fread(piece.data(), 1, piece.size(), file.get());
        hash.Add(std::string_view(piece).substr(0, size));
    }
    return std::ferror(file.get()) == 0 ? hash.Finish() : std::string();
}

void KeepListApart(Job& job, DatabaseSession& session, const MappingPlan& plan)
{
    Procedure(job, "KeepListApart", [&](Step& step) {
        step("Look for [" + std::string(kLoadedTable) + "]");
        for (TableNumber number = 1; number <= plan.LastTable(); ++number) {
            const std::string& table = plan.tables[number].name;
            if (table.size() == kLoadedTable.size() && IsLoadedTable(session, table) &&
                (job.settings.blOnce || HasLoadedTable(session)))
                throw RuntimeError(
                    engine_errors::kTableExists,
                    "Table '" + table +
                        "' would be the list that +once keeps of what was loaded; tags=, tp= or ts= give "
                        "the element's table another name");
        }
    });
}

} // namespace velmora
