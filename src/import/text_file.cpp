#include "import/text_file.h"

#include "log/runtime_error.h"
#include "platform/file_changes.h"
#include "platform/paths.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <system_error>

namespace velmora {

namespace {

constexpr std::size_t kPieceBytes = std::size_t{64} * 1024;

} // namespace

TextFile::TextFile(const std::string& path, std::string_view lineEnd, TextWriting writing)
    : path_(path), lineEnd_(lineEnd), isTrial_(writing == TextWriting::Trial)
{
    isNew_ = !FileExists(path_);
    if (isTrial_) {
        // The folder may be one that is not made either.
        const std::error_code problem = FolderExists(FolderPart(path_)) ? WhyNotAppend(path_) : std::error_code();
        if (problem)
            Fail(problem.value());
        return;
    }
    std::FILE* file = OpenFileStream(path_, "ab");
    if (file == nullptr)
        Fail(errno);
    std::fclose(file);
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(PathFromUtf8(path_), error);
    begin_ = written_ = settled_ = error ? 0 : size; // a device has no size
}

void TextFile::WriteLine(std::string_view line)
{
    if (failed_ || isTrial_)
        return;
    buffer_.append(line).append(lineEnd_);
    if (buffer_.size() >= kPieceBytes)
        Flush();
}

void TextFile::RollBack()
{
    if (failed_)
        return;
    if (settled_ >= written_) {
        buffer_.resize(settled_ - written_);
        return;
    }
    buffer_.clear();
    std::error_code error;
    std::filesystem::resize_file(PathFromUtf8(path_), settled_, error);
    if (error)
        Fail(error.value());
    written_ = settled_;
}

void TextFile::Flush()
{
    if (failed_ || isTrial_ || buffer_.empty())
        return;
    std::FILE* file = OpenFileStream(path_, "ab");
    if (file == nullptr)
        Fail(errno);
    const bool isWritten = std::fwrite(buffer_.data(), 1, buffer_.size(), file) == buffer_.size();
    const int writeError = errno;
    const bool isClosed = std::fclose(file) == 0;
    if (!isWritten || !isClosed) {
        const int systemError = isWritten ? errno : writeError;
        // Half a line is worth nothing: the file ends with the last whole piece.
        std::error_code ignored;
        std::filesystem::resize_file(PathFromUtf8(path_), written_, ignored);
        Fail(systemError);
    }
    written_ += buffer_.size();
    buffer_.clear();
}

void TextFile::TakeBack()
{
    buffer_.clear();
    if (isTrial_)
        return;
    std::error_code error;
    const std::filesystem::path file = PathFromUtf8(path_);
    if (isNew_)
        std::filesystem::remove(file, error);
    else if (std::filesystem::is_regular_file(file, error))
        std::filesystem::resize_file(file, begin_, error);
    if (error)
        Fail(error.value());
    written_ = settled_ = begin_;
}

void TextFile::Fail(int systemError)
{
    failed_ = true;
    throw FileError("The text file", path_, "cannot be written", systemError);
}

TextFile* TextFiles::Find(const std::string& path)
{
    const auto found = files_.find(path);
    return found == files_.end() ? nullptr : &found->second;
}

TextFile& TextFiles::Open(const std::string& path, std::string_view lineEnd, TextWriting writing)
{
    return files_.try_emplace(path, path, lineEnd, writing).first->second;
}

void TextFiles::SetAside(const std::string& path)
{
    std::string aside = path + ".velmora-old";
    for (int number = 2; FileExists(aside); ++number)
        aside = path + ".velmora-old" + std::to_string(number);
    std::error_code error;
    std::filesystem::rename(PathFromUtf8(path), PathFromUtf8(aside), error);
    if (error)
        throw FileError("The text file", path, "cannot be set aside", error.value());
    setAside_.emplace(path, aside);
}

void TextFiles::TakeBack()
{
    std::optional<RuntimeError> failure;
    for (auto& [path, file] : files_) {
        try {
            file.TakeBack();
        } catch (const RuntimeError& error) {
            failure = error;
        }
    }
    for (const auto& [path, aside] : setAside_) {
        std::error_code error;
        std::filesystem::rename(PathFromUtf8(aside), PathFromUtf8(path), error);
        if (error)
            failure = FileError("The text file", aside, "cannot be put back", error.value());
    }
    setAside_.clear();
    if (failure)
        throw RuntimeError(*failure);
}

void TextFiles::Keep() noexcept
{
    std::error_code ignored;
    for (const auto& [path, aside] : setAside_)
        std::filesystem::remove(PathFromUtf8(aside), ignored);
    setAside_.clear();
}

void QuoteField(std::string& line, std::size_t begin, std::string_view delimiter, std::string_view nullText)
{
    constexpr char kQuote = '"';
    constexpr std::string_view kEndOfData = "\\.";
    const std::string_view written = std::string_view(line).substr(begin);
    const bool isMistakable = written == nullText || written == kEndOfData;
    // Of a delimiter of several characters the first is enough: a value's last one may run into the delimiter itself.
    const char first = delimiter.empty() ? kQuote : delimiter.front();
    const auto value = line.begin() + static_cast<std::ptrdiff_t>(begin);
    if (!isMistakable && std::none_of(value, line.end(),
                                      [first](char c) { return c == kQuote || c == '\r' || c == '\n' || c == first; }))
        return;

    const auto quotes = static_cast<std::size_t>(std::count(value, line.end(), kQuote));
    std::size_t from = line.size();
    line.resize(from + quotes + 2);
    std::size_t to = line.size();
    line[--to] = kQuote;
    while (from > begin) {
        const char c = line[--from];
        line[--to] = c;
        if (c == kQuote)
            line[--to] = kQuote;
    }
    line[begin] = kQuote;
}

} // namespace velmora
