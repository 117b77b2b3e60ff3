#pragma once

#include "import/files_of_run.h"
#include "import/table_sinks.h"

namespace velmora {

inline constexpr std::string_view kTextFileExtension = ".txt";

/// The name of `table`'s text file, without its folder: the table's name and ".txt". What cannot stand in file names
/// everywhere (`\ / : * ? " < > |`, control characters) is written as "%" and two hexadecimal digits, and so is "%"
/// itself: every table has a name of its own.
[[nodiscard]] std::string TextFileName(std::string_view table);

/// Opens the text files of one document's sinks, all in the folder that the settings name.
class TextFileOpener {
public:
    TextFileOpener(Job& job, TextFiles& files, FilesOfRun& filesOfRun);

    /// Opens the files of all sinks whose tables are open: behind what is in them, or made anew, with the column names
    /// as the first line of those that are new when they are wanted. Sinks of one table share one file. A sink whose
    /// plan has none gets none. Throws, with nothing changed, when one cannot be written, is another file of the run,
    /// or is another table's.
    void OpenAll(TableSinks& sinks, Step& step);

private:
    void Check(const std::vector<TableSink*>& sinks, Step& step) const;
    void Open(TableSink& sink, Step& step);
    void RemoveOld(const std::string& path);
    void WarnOfKeys();
    [[nodiscard]] std::string PathOf(const TableSink& sink) const;
    void CompareColumns(const TableSink& sink, const std::string& header) const;

    Job& job_;
    TextFiles& files_;
    FilesOfRun& filesOfRun_;
    std::string folder_; ///< with the separator at its end
    TextWriting writing_;
};

/// Writes one line into the sink's text file: its column names (`header`), or the record just saved. Values are joined
/// by the delimiter, in the order that the columns had when the file was opened: a column that is widened on the way
/// moves in the table, but not in the file. Nothing without a text file.
void velWriteRecordToFile(Job& job, TableSink& sink, bool header);

} // namespace velmora
