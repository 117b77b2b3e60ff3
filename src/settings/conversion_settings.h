#pragma once

#include "log/runtime_error.h"
#include "settings/controls.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Names standard output where a file could be named.
inline constexpr std::string_view kStandardOutput = "-";

/// The options of a run: a snapshot of the controls, taken at its start by ReadSettingsFromForm. It is complete:
/// nothing that comes after asks the controls, which may change meanwhile.
struct ConversionSettings : RunFlags {
    bool fromUrl = false;   ///< the source is the one at `url`
    std::string sourceFile; ///< may have wildcards; the download's, once that is there
    std::string renamePattern;
    std::string encoding;    ///< of the sources, whatever they declare
    std::string unpackLimit; ///< in MB
    std::string only;        ///< paths of the elements to take, by ";"; empty: all
    std::string url, urlUser, urlPassword, urlTimeout;
    std::string mappingFile;
    std::string targetFile;
    std::string databaseFormat; ///< "Access 2000" or "Access 97"
    std::string xmlFile;        ///< for the way back: the database becomes XML
    bool blOverwrite = false;   ///< it may be there already
    std::string textFolder;
    std::string protocolFile;
    std::string summaryFile; ///< or "-" for standard output
    std::string threads;     ///< a number; see ThreadsOf()
    /// A document that is shorter has no further thread, which would cost more than it saves.
    std::int64_t threadsFromBytes = 1'000'000;
    /// What a thread parses at a time, where several do.
    std::size_t segmentBytes = std::size_t{256} * 1024;
    bool blRecreateDatabase = false;
    bool blExtendMdb = false;
    bool blCreateTableRelations = false;
    bool blEmptyTables = false;
    bool blImportAttributes = false;
    bool blOneTablePerElement = false;
    bool blSkipEmptyWrappingTags = false;
    bool blComplete = false;
    bool blTypes = false;
    std::string strTablePrefix;
    std::string strTableSuffix;
    std::string strKeyPrimary;
    std::string strKeyForeign;
    std::string strAttrPrefix;
    bool blEnableTagMapping = false;
    bool blTextExport = false;
    std::string strDelimiter;
    bool blAppend = false;
    bool blExportColumnNames = false;
    bool blQuoted = false;
    bool blBom = false;
    std::string lineEnd;  ///< "CR LF" or "LF"
    std::string nullText; ///< stands for Null
    std::string dateForm; ///< of a date with a time; see HasIsoDates()
    bool blStrict = false;
    bool blContinue = false;
    bool blOnce = false;
    bool blPreview = false; ///< nothing is written

    /// Does a source leave nothing behind unless it is converted completely?
    [[nodiscard]] bool IsWholeOrNothing() const noexcept { return blContinue || blOnce; }
    [[nodiscard]] std::string_view LineEnd() const noexcept { return lineEnd == "LF" ? "\n" : "\r\n"; }
    /// The file that the summary goes to; empty without one.
    [[nodiscard]] std::string SummaryPath() const { return summaryFile == kStandardOutput ? "" : summaryFile; }
    [[nodiscard]] bool HasIsoDates() const noexcept { return dateForm.find('T') != dateForm.npos; }
};

/// Takes the snapshot that a run works with: fills `settings` from `controls`. The run-state flags blAbort and blDebug
/// are left alone; the delimiter and the append flag keep their values from an earlier run when no text folder is
/// named. `rebuildTagMap` brings the tag map up to date with the mapping list and tells whether it has entries.
void ReadSettingsFromForm(const Controls& controls, ConversionSettings& settings,
                          const std::function<bool()>& rebuildTagMap);

/// What about the text files of a run may surprise: protocol lines for its beginning. `sourceCount` is the number of
/// XML files. Empty without text export.
[[nodiscard]] std::vector<std::string> TextExportWarnings(const ConversionSettings& settings, std::size_t sourceCount);

} // namespace velmora
