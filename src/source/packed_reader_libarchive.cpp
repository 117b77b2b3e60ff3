// The packed forms, read by libarchive.

#include "source/packed_reader.h"

#include "platform/paths.h"
#include "source/source.h"

#include <algorithm>
#include <utility>

#include <archive.h>
#include <archive_entry.h>

namespace velmora {

namespace {

/// Small, since the way to each entry of an archive reads one.
constexpr std::size_t kBlockBytes = std::size_t{32} << 10;

std::string EntryName(archive_entry* entry)
{
    const char* name = archive_entry_pathname_utf8(entry);
    if (name == nullptr)
        name = archive_entry_pathname(entry); // bytes of an encoding that the archive does not name
    return name == nullptr ? std::string() : name;
}

} // namespace

struct PackedReader::Handle {
    struct Free {
        void operator()(archive* handle) const noexcept { archive_read_free(handle); }
    };
    std::unique_ptr<archive, Free> reader;
    std::size_t next = 0;        ///< number of the entry that the next step leads to
    std::int64_t entryBegin = 0; ///< bytes taken before the entry at hand

    [[noreturn]] void Fail() const
    {
        const char* const reason = archive_error_string(reader.get());
        throw SourceError("cannot be unpacked: " + std::string(reason == nullptr ? "no reason is known" : reason));
    }
    /// nullptr behind the last entry.
    archive_entry* Step()
    {
        archive_entry* entry = nullptr;
        const int result = archive_read_next_header(reader.get(), &entry);
        if (result == ARCHIVE_EOF)
            return nullptr;
        if (result < ARCHIVE_WARN) // a name that this locale cannot express is worth a warning only
            Fail();
        ++next;
        return entry;
    }
    /// How many times the file was packed, one of the counted filters being the file itself.
    [[nodiscard]] int Filters() const { return archive_filter_count(reader.get()) - 1; }
    [[nodiscard]] std::int64_t BytesTaken() const { return archive_filter_bytes(reader.get(), -1); }
};

PackedReader::PackedReader(std::string path, As as, std::int64_t unpackLimitBytes)
    : path_(std::move(path)), as_(as), guard_(unpackLimitBytes)
{
}

PackedReader::~PackedReader() = default;

void PackedReader::Open()
{
    auto handle = std::make_unique<Handle>();
    handle->reader.reset(archive_read_new());
    archive* const reader = handle->reader.get();
    if (as_ == As::Archive) {
        archive_read_support_format_zip(reader);
    } else {
        archive_read_support_filter_gzip(reader);
        archive_read_support_filter_bzip2(reader);
        archive_read_support_filter_xz(reader);
        archive_read_support_filter_zstd(reader);
        archive_read_support_format_raw(reader);
        archive_read_support_format_empty(reader);
    }
#ifdef _WIN32
    const int opened = path_.empty() ? archive_read_open_filename(reader, nullptr, kBlockBytes)
                                     : archive_read_open_filename_w(reader, PathFromUtf8(path_).c_str(), kBlockBytes);
#else
    const int opened = archive_read_open_filename(reader, path_.empty() ? nullptr : path_.c_str(), kBlockBytes);
#endif
    if (opened != ARCHIVE_OK)
        handle->Fail();
    handle_ = std::move(handle);
}

std::vector<ArchiveEntry> PackedReader::List()
{
    Open();
    std::vector<ArchiveEntry> entries;
    while (archive_entry* const entry = handle_->Step())
        entries.push_back({EntryName(entry), archive_entry_is_encrypted(entry) != 0});
    Close();
    return entries;
}

void PackedReader::GoTo(std::size_t entry)
{
    if (!handle_ || handle_->next > entry)
        Open();
    while (handle_->next <= entry)
        if (handle_->Step() == nullptr)
            break; // nothing is in it: the next Read is the end
    if (handle_->Filters() > 1)
        throw SourceError(kNestedArchive);
    guard_.BeginEntry();
    handle_->entryBegin = as_ == As::Archive ? handle_->BytesTaken() : 0;
}

std::size_t PackedReader::Read(char* buffer, std::size_t bytes)
{
    if (handle_->next == 0)
        return 0;
    const la_ssize_t count = archive_read_data(handle_->reader.get(), buffer, bytes);
    if (count < 0)
        handle_->Fail();
    if (IsPacked())
        guard_.Add(count, handle_->BytesTaken() - handle_->entryBegin);
    return static_cast<std::size_t>(count);
}

std::int64_t PackedReader::PackedBytes() const
{
    return handle_ ? handle_->BytesTaken() : 0;
}

bool PackedReader::IsPacked() const
{
    return as_ == As::Archive || (handle_ && handle_->Filters() > 0);
}

void PackedReader::Close()
{
    handle_.reset();
}

} // namespace velmora
