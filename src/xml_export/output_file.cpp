#include "xml_export/output_file.h"

#include "log/runtime_error.h"
#include "platform/file_changes.h"
#include "platform/paths.h"

#include <cerrno>
#include <system_error>

namespace velmora {

namespace fs = std::filesystem;

namespace {

constexpr int kMostNames = 100;

fs::path Followed(const std::string& path)
{
    const fs::path target = PathFromUtf8(NativePath(path));
    std::error_code error;
    const fs::path followed = fs::is_symlink(target, error) ? fs::weakly_canonical(target, error) : target;
    return error ? target : followed;
}

} // namespace

OutputFile::OutputFile(const std::string& path, std::string_view what)
    : path_(path), what_(what), target_(Followed(path))
{
    std::error_code error;
    if (fs::exists(target_, error)) {
        // A file that must not be written must not be replaced either.
        const std::unique_ptr<std::FILE, Closer> old(OpenFileStream(Utf8FromPath(target_), "r+b"));
        if (!old || !fs::is_regular_file(target_, error))
            Fail(old ? EINVAL : errno);
    }
    for (int number = 1; number <= kMostNames && !file_; ++number) {
        temporary_ = target_;
        temporary_ += ".velmora-" + std::to_string(number);
        file_.reset(OpenFileStream(Utf8FromPath(temporary_), "wbx"));
        if (!file_ && errno != EEXIST)
            break;
    }
    if (!file_)
        Fail(errno);
}

OutputFile::~OutputFile()
{
    file_.reset();
    std::error_code ignored;
    if (!temporary_.empty())
        fs::remove(temporary_, ignored);
}

void OutputFile::Write(std::string_view bytes)
{
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size())
        Fail(errno);
}

void OutputFile::Close()
{
    if (const std::error_code error = SyncFile(file_.get()))
        Fail(error.value());
    if (std::fclose(file_.release()) != 0)
        Fail(errno);
}

void OutputFile::MoveIntoPlace(bool mayReplace)
{
    std::error_code error;
    if (mayReplace && fs::exists(target_, error)) {
        fs::permissions(temporary_, fs::status(target_).permissions(), error);
        if (!error)
            fs::rename(temporary_, target_, error);
    } else
        error = MoveWithoutReplacing(Utf8FromPath(temporary_), Utf8FromPath(target_));
    if (error)
        Fail(error.value());
    temporary_.clear();
}

void OutputFile::Fail(int systemError) const
{
    throw FileError(what_, path_, "cannot be written", systemError);
}

} // namespace velmora
