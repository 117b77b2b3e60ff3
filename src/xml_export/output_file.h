#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace velmora {

/// A file that is written under another name beside its place, and stands there when it is complete. Until then, and
/// whatever fails, an old file stays as it is and nothing of the new one is left behind. Errors are RuntimeError and
/// name the file.
class OutputFile {
public:
    /// `path` as typed; `what` the file is, for messages. Throws when no file can be made beside it, or what stands
    /// there must not be written.
    explicit OutputFile(const std::string& path, std::string_view what = "The XML file");
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    [[nodiscard]] const std::string& Path() const noexcept { return path_; }
    void Write(std::string_view bytes);
    /// Everything is written, and on the disk.
    void Close();
    /// Into its place, after Close(). Throws when something stands there, unless it may be replaced.
    void MoveIntoPlace(bool mayReplace);

private:
    struct Closer {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    [[noreturn]] void Fail(int systemError) const;

    std::string path_;
    std::string_view what_;
    std::filesystem::path target_;    ///< where a link leads
    std::filesystem::path temporary_; ///< empty once it is gone
    std::unique_ptr<std::FILE, Closer> file_;
};

} // namespace velmora
