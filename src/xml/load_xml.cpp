#include "xml/load_xml.h"

#include "settings/threads.h"
#include "xml/document_loader.h"
#include "xml/input_encoding.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

/// What is no file may let its reader wait, who is then to be the thread that a cancel reaches.
bool IsWorthAThread(const ConversionSettings& settings, const Source& source)
{
    const std::int64_t bytes = BytesOf(source);
    return bytes > 0 && bytes >= settings.threadsFromBytes;
}

/// `threads` are left for it.
Parsing ParsingOf(const ConversionSettings& settings, const Source& source, int threads)
{
    return {.threads = IsWorthAThread(settings, source) ? threads : 1, .segmentBytes = settings.segmentBytes};
}

/// Text beside children is imported only where every value is.
Blanks BlanksOf(const ConversionSettings& settings)
{
    return settings.blComplete ? Blanks::KeptBesideText : Blanks::BesideChildrenDropped;
}

/// The lines about what the load left out.
void ReportLoad(Job& job, const Source& source, const LoadResult& loaded)
{
    if (!loaded.problem.empty())
        job.log.Warn("not-loaded", "Not loaded: " + source.Name() + ": " + loaded.problem);
    for (const std::string& path : loaded.unmatched)
        job.log.Warn("path-not-found", "No element at " + path);
    if (loaded.skippedEntities != 0) {
        job.log.Warn("entities-left-out",
                     "Entities without a text of their own, left out: " + std::to_string(loaded.skippedEntities) +
                         ", the first is &" + loaded.firstSkipped + ";",
                     static_cast<std::int64_t>(loaded.skippedEntities));
    }
    if (loaded.controlBytes != 0) {
        job.log.Warn("control-bytes",
                     "Bytes 80 to 9F, control characters in ISO-8859-1: " + std::to_string(loaded.controlBytes) +
                         "; where they are letters, encoding=windows-1252 says so",
                     static_cast<std::int64_t>(loaded.controlBytes));
    }
}

} // namespace

std::optional<std::string> UnfitEncoding(const ConversionSettings& settings)
{
    if (settings.encoding.empty() || EncodingNamed(settings.encoding))
        return std::nullopt;
    return "encoding= names \"" + settings.encoding + "\", which is not known; nothing was converted";
}

void LoadNextAhead(const Job& job, const Source& next, const Document& document, LoadAhead& ahead)
{
    const ConversionSettings& settings = job.settings;
    const int threads = ThreadsOf(settings) - 1;
    // What is to be left out by its content is not known yet, and members of an archive share their reader.
    if (threads < 1 || settings.blOnce || next.archive || !next.problem.empty() || !IsWorthAThread(settings, next))
        return;
    const std::size_t taken = std::min(document.MemoryBytes(), kDocumentMemoryBudgetBytes);
    ahead.Begin(next, MemoryBudget(kDocumentMemoryBudgetBytes - taken), BlanksOf(settings),
                ParsingOf(settings, next, threads));
}

LoadedXml velLoadXML(Job& job, const Source& source, LoadAhead* ahead)
{
    LoadedXml result;
    Procedure(job.log, "velLoadXML", source.Name(), [&](Step& step) {
        const auto fail = [&](int number, const char* message) {
            step(message);
            throw RuntimeError(number, message);
        };
        if (source.path.empty())
            fail(runtime_errors::kApplicationDefined, "Source XML file not specified");
        std::error_code ignored;
        if (!source.IsStandardInput() && !std::filesystem::exists(std::filesystem::u8path(source.path), ignored))
            fail(runtime_errors::kFileNotFound, "Source XML file not found");
        job.log.ProtocolAppend("Open XML");
        // The words of the trace are fixed, whatever the parser is: those who read traces look for them.
        step("Initialize ActiveX");
        step("Load file into ActiveX");
        const auto onPiece = [&](std::int64_t bytes) {
            job.host.SetProgress(ProgressBarId::Bytes, bytes);
            job.ProcessEvents();
        };
        job.host.SetProgressRange(ProgressBarId::Bytes, BytesOf(source));
        std::optional<LoadResult> loaded;
        if (ahead != nullptr)
            loaded = ahead->Take(source, onPiece);
        if (!loaded)
            loaded = LoadDocument(source, onPiece, MemoryBudget(kDocumentMemoryBudgetBytes), BlanksOf(job.settings),
                                  ParsingOf(job.settings, source, ThreadsOf(job.settings)));
        ReportLoad(job, source, *loaded);
        result.readable = loaded->problem.empty();
        result.problem = std::move(loaded->problem);
        result.document = std::move(loaded->document);
    });
    return result;
}

} // namespace velmora
