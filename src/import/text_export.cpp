#include "import/text_export.h"

#include "log/runtime_error.h"
#include "platform/paths.h"
#include "platform/utf8.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <unordered_map>

namespace velmora {

namespace {

void DeleteFile(const std::string& path)
{
    std::error_code error;
    std::filesystem::remove(PathFromUtf8(path), error);
    if (error)
        throw FileError("The text file", path, "cannot be deleted", error.value());
}

/// Files that are made for a moment only.
class NewFiles {
public:
    NewFiles() = default;
    ~NewFiles()
    {
        std::error_code ignored;
        for (const std::string& path : paths_)
            std::filesystem::remove(PathFromUtf8(path), ignored);
    }
    NewFiles(const NewFiles&) = delete;
    NewFiles& operator=(const NewFiles&) = delete;

    /// `path` is about to be made, unless something stands there.
    void NoteWhenMissing(const std::string& path)
    {
        std::error_code error;
        if (!std::filesystem::exists(std::filesystem::symlink_status(PathFromUtf8(path), error)))
            paths_.push_back(path);
    }

private:
    std::vector<std::string> paths_;
};

/// Whether the file at `path` begins with `line`, perhaps behind a byte order mark.
bool BeginsWithLine(const std::string& path, std::string_view line)
{
    std::FILE* file = OpenFileStream(path, "rb");
    if (file == nullptr)
        return false;
    std::string text(kByteOrderMark.size() + line.size() + 2, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), file));
    std::fclose(file);
    std::string_view begin = WithoutByteOrderMark(text);
    if (!begin.starts_with(line))
        return false;
    begin.remove_prefix(line.size());
    return begin.starts_with("\r\n") || begin.starts_with('\n');
}

/// Finds the columns' positions anew when the table's layout has changed.
void FollowLayout(TableSink& sink)
{
    TextOutput& text = sink.text;
    const std::uint64_t layout = sink.records->Layout();
    if (text.layout == layout)
        return;
    text.layout = layout;
    text.fields.clear();
    for (const std::string& column : text.columns)
        text.fields.push_back(sink.records->FieldIndex(column));
}

/// Puts the parts of a line together in `line`: `append(i, line)` appends the text of part i; false when there is none.
template <class Append>
void JoinLine(std::string& line, std::size_t count, const ConversionSettings& settings, Append&& append)
{
    line.clear();
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0)
            line += settings.strDelimiter;
        const std::size_t begin = line.size();
        if (!append(i, line))
            line += settings.nullText;
        else if (settings.blQuoted)
            QuoteField(line, begin, settings.strDelimiter, settings.nullText);
    }
    // Many readers take an empty line for none.
    if (settings.blQuoted && line.empty())
        line = "\"\"";
}

void JoinNames(std::string& line, const TextOutput& text, const ConversionSettings& settings)
{
    JoinLine(line, text.columns.size(), settings, [&](std::size_t i, std::string& out) {
        out += text.columns[i];
        return true;
    });
}

/// As the document writes it, where the program has chosen the column's type.
bool AppendValue(TableSink& sink, std::size_t field, DateForm dates, std::string& out)
{
    const ColumnType type = sink.TypeOf(field);
    return IsTyped(type) ? sink.records->AppendIsoText(field, type == ColumnType::Time, out)
                         : sink.records->AppendText(field, out, dates);
}

void JoinValues(std::string& line, TableSink& sink, const ConversionSettings& settings)
{
    FollowLayout(sink);
    const DateForm dates = settings.HasIsoDates() ? DateForm::Iso : DateForm::Blank;
    JoinLine(line, sink.text.fields.size(), settings, [&](std::size_t i, std::string& out) {
        const std::optional<std::size_t> field = sink.text.fields[i];
        return field && AppendValue(sink, *field, dates, out);
    });
}

} // namespace

std::string TextFileName(std::string_view table)
{
    constexpr std::string_view kHexDigits = "0123456789ABCDEF";
    std::string name;
    for (const char c : table) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || std::string_view("\\/:*?\"<>|%").find(c) != std::string_view::npos) {
            name += '%';
            name += kHexDigits[byte >> 4];
            name += kHexDigits[byte & 0xF];
        } else {
            name += c;
        }
    }
    return name.append(kTextFileExtension);
}

TextFileOpener::TextFileOpener(Job& job, TextFiles& files, FilesOfRun& filesOfRun)
    : job_(job), files_(files), filesOfRun_(filesOfRun), folder_(NativePath(job.settings.textFolder)),
      writing_(job.settings.blPreview ? TextWriting::Trial : TextWriting::Real)
{
    if (!folder_.empty() && folder_.back() != kPathSeparator)
        folder_ += kPathSeparator;
}

void TextFileOpener::OpenAll(TableSinks& sinks, Step& step)
{
    std::vector<TableSink*> wanted;
    for (TableNumber number = 1; number <= sinks.Last(); ++number)
        if (sinks[number].HasTable() && sinks[number].plan->hasTextFile)
            wanted.push_back(&sinks[number]);
    Check(wanted, step);
    for (TableSink* const sink : wanted)
        Open(*sink, step);
}

/// Before the first old file is deleted, every one can be written, and each is another one.
void TextFileOpener::Check(const std::vector<TableSink*>& sinks, Step& step) const
{
    if (std::ranges::all_of(sinks, [&](const TableSink* sink) { return filesOfRun_.IsKnown(PathOf(*sink)); }))
        return;
    NewFiles made;
    std::unordered_map<std::string, std::string> paths; // by the file's identity
    for (const TableSink* const sink : sinks) {
        const std::string path = PathOf(*sink);
        step("Check file [" + path + "]");
        filesOfRun_.Refuse(path);
        if (writing_ == TextWriting::Real)
            made.NoteWhenMissing(path);
        (void)TextFile(path, job_.settings.LineEnd(), writing_);
        const std::string& other = paths.emplace(FileIdentity(path), path).first->second;
        if (other == path)
            continue;
        std::string problem = "The text files [";
        problem.append(other).append("] and [").append(path).append("] are one file, and two tables need one each; ");
        throw RuntimeError(runtime_errors::kFileAlreadyOpen, problem.append("nothing was written into it"));
    }
}

std::string TextFileOpener::PathOf(const TableSink& sink) const
{
    return folder_ + TextFileName(sink.records->Source());
}

void TextFileOpener::Open(TableSink& sink, Step& step)
{
    const std::string path = PathOf(sink);
    TextOutput& text = sink.text;
    for (std::size_t field = 0; field < sink.records->FieldCount(); ++field)
        text.columns.push_back(sink.records->FieldName(field));

    text.file = files_.Find(path);
    if (text.file != nullptr)
        return;
    const bool keepsText = job_.settings.blAppend || (sink.plan->keepsTextOfRun && filesOfRun_.HasOpened(path));
    const bool isTrial = writing_ == TextWriting::Trial;
    const bool wasThere = FileExists(path) || (isTrial && filesOfRun_.HasOpened(path));
    if (!keepsText && wasThere) {
        step("Delete old file [" + path + "]");
        if (!isTrial)
            RemoveOld(path);
        filesOfRun_.NoteChange();
    }
    step("Open file [" + path + "]");
    const bool isNew = !keepsText || !wasThere;
    text.file = &files_.Open(path, job_.settings.LineEnd(), writing_);
    if (isNew)
        filesOfRun_.NoteChange();
    if (isNew && job_.settings.blBom) {
        text.file->WriteByteOrderMark();
        text.file->Settle();
    }
    const bool isOfEarlierRun = filesOfRun_.NoteOpened(path) && !isNew;
    if (isOfEarlierRun)
        WarnOfKeys();
    if (!job_.settings.blExportColumnNames)
        return;
    if (isNew) {
        step("Write column names [" + path + "]");
        velWriteRecordToFile(job_, sink, true);
        text.file->Settle();
        return;
    }
    if (isTrial && !isOfEarlierRun)
        return; // its first line was not written
    std::string header;
    JoinNames(header, text, job_.settings);
    CompareColumns(sink, header);
}

void TextFileOpener::RemoveOld(const std::string& path)
{
    if (job_.settings.IsWholeOrNothing())
        files_.SetAside(path);
    else
        DeleteFile(path);
}

/// Behind lines of an earlier run, those of a database that is made anew have keys that are there already.
void TextFileOpener::WarnOfKeys()
{
    const ConversionSettings& settings = job_.settings;
    if (settings.blRecreateDatabase && settings.blCreateTableRelations && filesOfRun_.TellOfKeys())
        job_.log.Warn("keys-begin-again",
                      "Lines are added to text files of an earlier run, and the keys begin at 1 again: a "
                      "database of their own, named with mdb= and kept with -recreate_database, goes on "
                      "with them");
}

/// Lines behind a first line that names other columns, or the same in another order, would not fit it.
void TextFileOpener::CompareColumns(const TableSink& sink, const std::string& header) const
{
    if (!BeginsWithLine(sink.text.file->Path(), header))
        job_.log.Warn("other-column-names", "The first line of [" + sink.text.file->Path() +
                                                "] does not name the columns that table [" + sink.records->Source() +
                                                "] has now");
}

void velWriteRecordToFile(Job& job, TableSink& sink, bool header)
{
    if (!job.settings.blTextExport || sink.text.file == nullptr)
        return;
    const auto argument = [&] { return sink.records->Source() + ": Headers: " + (header ? "True" : "False"); };
    Procedure(job, "velWriteRecordToFile", argument, [&](Step&) {
        TextOutput& text = sink.text;
        if (header)
            JoinNames(text.line, text, job.settings);
        else
            JoinValues(text.line, sink, job.settings);
        text.file->WriteLine(text.line);
    });
}

} // namespace velmora
