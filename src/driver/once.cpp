#include "driver/once.h"

#include "log/runtime_error.h"
#include "platform/sha256.h"
#include "schema/engine_errors.h"

#include <memory>

namespace velmora {

std::optional<std::string> UnfitOnce(const ConversionSettings& settings)
{
    if (!settings.blOnce)
        return std::nullopt;
    if (settings.sourceFile == kStandardInput && !settings.fromUrl)
        return "+once reads a source twice, which standard input cannot be; nothing was written";
    if (settings.targetFile.empty())
        return "+once needs a database that stays, mdb=FILE; nothing was written";
    if (settings.blRecreateDatabase)
        return "+once looks into the database for what was loaded before: it needs -recreate_database; nothing was "
               "written";
    return std::nullopt;
}

std::string HashOfSource(Job& job, const Source& source)
{
    constexpr std::size_t kPieceBytes = std::size_t{1} << 20;
    try {
        const std::unique_ptr<SourceStream> stream = OpenSource(source.Apart());
        Sha256 hash;
        std::string piece(kPieceBytes, '\0');
        for (std::size_t size = 1; size > 0;) {
            job.ProcessEvents();
            size = stream->Read(piece.data(), piece.size());
            hash.Add(std::string_view(piece).substr(0, size));
        }
        return hash.Finish();
    } catch (const SourceError&) {
        return {};
    }
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
