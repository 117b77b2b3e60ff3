#include "source/source.h"

#include "platform/paths.h"
#include "source/form.h"
#include "source/packed_reader.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace velmora {

namespace {

class FileStream : public SourceStream {
public:
    explicit FileStream(const std::string& path) : file_(OpenFileStream(path, "rb"), &std::fclose)
    {
        if (!file_)
            Fail();
        std::setvbuf(file_.get(), nullptr, _IONBF, 0); // it is read in large pieces
    }

    std::size_t Read(char* buffer, std::size_t bytes) override
    {
        const std::size_t count = std::fread(buffer, 1, bytes, file_.get());
        if (count < bytes && std::ferror(file_.get()) != 0)
            Fail();
        taken_ += static_cast<std::int64_t>(count);
        return count;
    }
    [[nodiscard]] std::int64_t BytesTaken() const override { return taken_; }

private:
    [[noreturn]] static void Fail() { throw SourceError("cannot be read: " + std::string(std::strerror(errno))); }

    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
    std::int64_t taken_ = 0;
};

/// What stands in something packed.
class PackedStream : public SourceStream {
public:
    PackedStream(std::shared_ptr<PackedReader> reader, bool isLast) : reader_(std::move(reader)), isLast_(isLast) {}
    ~PackedStream() override
    {
        if (isLast_)
            reader_->Close();
    }

    std::size_t Read(char* buffer, std::size_t bytes) override
    {
        std::size_t count = 0;
        while (count < bytes) {
            const std::size_t more = reader_->Read(buffer + count, bytes - count);
            if (more == 0)
                break;
            count += more;
        }
        if (!std::exchange(hasBegun_, true))
            RefuseNested({buffer, count});
        return count;
    }
    [[nodiscard]] std::int64_t BytesTaken() const override { return reader_->PackedBytes(); }

private:
    void RefuseNested(std::string_view firstBytes) const
    {
        const Form form = FormOf(firstBytes);
        if (form == Form::Xml || form == Form::Other)
            return;
        throw SourceError(reader_->IsPacked() ? kNestedArchive
                                              : "an archive cannot be read from standard input, name its file");
    }

    std::shared_ptr<PackedReader> reader_;
    bool isLast_;
    bool hasBegun_ = false;
};

} // namespace

std::string Source::Name() const
{
    if (IsStandardInput())
        return "standard input";
    return member.empty() ? path : path + kPathSeparator + member;
}

Source Source::Apart() const
{
    Source apart = *this;
    if (archive)
        apart.archive = std::make_shared<PackedReader>(path, PackedReader::As::Archive, unpackLimitBytes);
    return apart;
}

std::unique_ptr<SourceStream> OpenSource(const Source& source)
{
    if (!source.problem.empty())
        throw SourceError(source.problem);
    if (source.archive) {
        source.archive->GoTo(source.entry);
        return std::make_unique<PackedStream>(source.archive, source.isLastOfFile);
    }
    const Form form = source.IsStandardInput() ? Form::Other : FormOfFile(source.path);
    if (!source.IsStandardInput() && (form == Form::Xml || form == Form::Other))
        return std::make_unique<FileStream>(source.path);
    auto reader = std::make_shared<PackedReader>(source.IsStandardInput() ? "" : source.path, PackedReader::As::Stream,
                                                 source.unpackLimitBytes);
    reader->GoTo(0);
    return std::make_unique<PackedStream>(std::move(reader), true);
}

std::int64_t BytesOf(const Source& source)
{
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(PathFromUtf8(source.path), error);
    return error || source.IsStandardInput() ? 0 : static_cast<std::int64_t>(size);
}

} // namespace velmora
