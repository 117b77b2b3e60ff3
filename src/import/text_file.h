#pragma once

#include "platform/utf8.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace velmora {

enum class TextWriting {
    Real,
    Trial, ///< nothing is made or written, but what cannot be written is refused
};

/// A text file to which lines are appended.
///
/// Lines are collected and written in large pieces, and the file is open only for that: a document of thousands of
/// tables needs no thousands of open files. Lines that may yet be taken back are told from those that stay by Settle().
/// Errors are RuntimeError and name the file; after one the file takes nothing more.
class TextFile {
public:
    /// Makes the file when it is missing. Throws when it cannot be written.
    explicit TextFile(const std::string& path, std::string_view lineEnd = "\r\n",
                      TextWriting writing = TextWriting::Real);
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;

    [[nodiscard]] const std::string& Path() const noexcept { return path_; }
    /// `line` without its end.
    void WriteLine(std::string_view line);
    /// Writes the bytes by which other programs know UTF-8.
    void WriteByteOrderMark() { buffer_.append(kByteOrderMark); }
    /// Every line written until now stays.
    void Settle() noexcept { settled_ = written_ + buffer_.size(); }
    /// Takes back the lines written since Settle().
    void RollBack();
    /// Writes what is still collected.
    void Flush();
    /// Makes the file what it was when it was opened: as long, or not there.
    void TakeBack();

private:
    [[noreturn]] void Fail(int systemError);

    std::string path_;
    std::string lineEnd_;
    std::string buffer_;
    std::uint64_t written_ = 0; ///< size of the file, bytes
    std::uint64_t settled_ = 0; ///< size that stays, bytes: in the file or in the buffer
    std::uint64_t begin_ = 0;   ///< size when it was opened
    bool isTrial_;
    bool isNew_ = false; ///< was not there then
    bool failed_ = false;
};

/// The text files of one document's import, by path.
class TextFiles {
public:
    /// nullptr when the file has not been opened.
    [[nodiscard]] TextFile* Find(const std::string& path);
    /// Opens a file that is not open yet. It stays where it is.
    [[nodiscard]] TextFile& Open(const std::string& path, std::string_view lineEnd, TextWriting writing);
    /// Makes room at `path`: the file that is there goes, but can come back until Keep(). Throws RuntimeError.
    void SetAside(const std::string& path);
    /// All files become what they were before the import. Throws RuntimeError, when it has done what it can.
    void TakeBack();
    /// What was set aside is gone for good.
    void Keep() noexcept;
    [[nodiscard]] std::map<std::string, TextFile>& All() noexcept { return files_; }

private:
    std::map<std::string, TextFile> files_;
    std::map<std::string, std::string> setAside_; ///< where the files are that were at a path
};

/// Turns the value that begins at `begin` in `line`, and ends with it, into a field as RFC 4180 has it: in quotation
/// marks, its own doubled, when it holds one, a line break, or anything that could be taken for the beginning of
/// `delimiter`; also when it reads like `nullText`, which stands for no value, or is what ends the data for a reader
/// (`\.`). Other values stay as they are.
void QuoteField(std::string& line, std::size_t begin, std::string_view delimiter, std::string_view nullText);

} // namespace velmora
