#include "xml/load_xml.h"

#include "xml/document_loader.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

/// The lines about what the load left out.
void ReportLoad(Job& job, const std::string& path, const LoadResult& loaded)
{
    if (!loaded.problem.empty())
        job.log.Warn("not-loaded", "Not loaded: " + path + ": " + loaded.problem);
    if (loaded.skippedEntities != 0) {
        job.log.Warn("entities-left-out",
                     "Entities without a text of their own, left out: " + std::to_string(loaded.skippedEntities) +
                         ", the first is &" + loaded.firstSkipped + ";",
                     static_cast<std::int64_t>(loaded.skippedEntities));
    }
    if (loaded.controlBytes != 0) {
        job.log.Warn("control-bytes",
                     "Bytes 80 to 9F, control characters in ISO-8859-1: " + std::to_string(loaded.controlBytes) +
                         "; where they are letters the file must say windows-1252",
                     static_cast<std::int64_t>(loaded.controlBytes));
    }
}

} // namespace

LoadedXml velLoadXML(Job& job, const std::string& path)
{
    LoadedXml result;
    Procedure(job.log, "velLoadXML", path, [&](Step& step) {
        const auto fail = [&](int number, const char* message) {
            step(message);
            throw RuntimeError(number, message);
        };
        if (path.empty())
            fail(runtime_errors::kApplicationDefined, "Source XML file not specified");
        std::error_code ignored;
        if (!std::filesystem::exists(std::filesystem::u8path(path), ignored))
            fail(runtime_errors::kFileNotFound, "Source XML file not found");
        job.log.ProtocolAppend("Open XML");
        // The words of the trace are fixed, whatever the parser is: those who read traces look for them.
        step("Initialize ActiveX");
        step("Load file into ActiveX");
        // Text beside children is imported only where every value is.
        const Blanks blanks = job.settings.blComplete ? Blanks::KeptBesideText : Blanks::BesideChildrenDropped;
        LoadResult loaded = LoadDocument(
            path, [&] { job.ProcessEvents(); }, MemoryBudget(kDocumentMemoryBudgetBytes), blanks);
        ReportLoad(job, path, loaded);
        result.readable = loaded.problem.empty();
        result.problem = std::move(loaded.problem);
        result.document = std::move(loaded.document);
    });
    return result;
}

} // namespace velmora
