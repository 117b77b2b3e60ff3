// A build without the library for packed forms.

#include "source/form.h"
#include "source/packed_reader.h"
#include "source/source.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace velmora {

namespace {

[[noreturn]] void Refuse()
{
    throw SourceError("it is packed, and this velmora was built without libarchive, which unpacks it");
}

} // namespace

struct PackedReader::Handle {
    std::int64_t bytesTaken = 0;
};

PackedReader::PackedReader(std::string path, As as, std::int64_t unpackLimitBytes)
    : path_(std::move(path)), as_(as), guard_(unpackLimitBytes)
{
}

PackedReader::~PackedReader() = default;

void PackedReader::Open()
{
    if (as_ == As::Archive || !path_.empty())
        Refuse();
    handle_ = std::make_unique<Handle>();
}

std::vector<ArchiveEntry> PackedReader::List()
{
    Refuse();
}

void PackedReader::GoTo(std::size_t)
{
    Open();
}

std::size_t PackedReader::Read(char* buffer, std::size_t bytes)
{
    const std::size_t count = std::fread(buffer, 1, bytes, stdin);
    if (count < bytes && std::ferror(stdin) != 0)
        throw SourceError("cannot be read: " + std::string(std::strerror(errno)));
    const Form form = handle_->bytesTaken == 0 ? FormOf({buffer, count}) : Form::Other;
    if (form != Form::Xml && form != Form::Other)
        Refuse();
    handle_->bytesTaken += static_cast<std::int64_t>(count);
    return count;
}

std::int64_t PackedReader::PackedBytes() const
{
    return handle_ ? handle_->bytesTaken : 0;
}

bool PackedReader::IsPacked() const
{
    return false;
}

void PackedReader::Close()
{
    handle_.reset();
}

} // namespace velmora
