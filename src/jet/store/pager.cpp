#include "jet/store/pager.h"

#include "jet/base/error.h"
#include "jet/store/data_page.h"

#include <array>
#include <string>

namespace jet {

Pager::Pager(std::unique_ptr<File> file, const DatabaseHeader& header, PageNumber pageCount, std::size_t cacheBytes,
             std::unique_ptr<Journal> journal)
    : file_(std::move(file)), journal_(std::move(journal)), header_(header), format_(&FormatOf(header.version)),
      cache_(*file_, journal_.get(), *format_, pageCount, cacheBytes), freeMap_(cache_, *format_, header.freePages)
{
}

Pager::~Pager()
{
    file_->Forget(0); // what goes back needs no room
    try {
        if (journal_)
            journal_->RollBack();
    } catch (const Error&) {
        return; // the next one who opens the file does it
    }
}

std::unique_ptr<Pager> Pager::Create(std::unique_ptr<File> file, const NewFile& what, std::size_t cacheBytes,
                                     std::unique_ptr<Journal> journal)
{
    DatabaseHeader wanted;
    wanted.version = what.version;
    wanted.creationDate = what.creationDate;
    wanted.build = FormatOf(what.version).engineBuild;
    Bytes header(FormatOf(what.version).pageSize);
    MakeHeader(header, wanted);

    std::unique_ptr<Pager> pager(
        new Pager(std::move(file), ReadHeader(header, "new database"), 0, cacheBytes, std::move(journal)));
    const MutablePageRef page = pager->cache_.Fresh(kHeaderPage);
    std::ranges::copy(header, page.Data().begin());
    pager->headerPin_ = page;
    FreeMap::MakePage(pager->cache_.Fresh(kGlobalMapPage), *pager->format_);
    return pager;
}

std::unique_ptr<Pager> Pager::Open(std::unique_ptr<File> file, std::size_t cacheBytes, std::unique_ptr<Journal> journal)
{
    const std::string name = file->Name();
    std::array<Byte, kHeaderSize> start{};
    const DatabaseHeader header = ReadHeader(*file, start);
    const std::uint64_t size = file->Size();

    const Format& format = FormatOf(header.version);
    // Half a page at the end: the file was cut off, and what it has lost would be missed much later.
    if (size % format.pageSize != 0)
        throw Error(ErrorNumber::NotADatabase, {name},
                    "Its " + std::to_string(size) + " bytes are not whole pages of " + std::to_string(format.pageSize) +
                        ".");
    if (size / format.pageSize > format.maxPages)
        throw Error(ErrorNumber::NotADatabase, {name}, "It is larger than a database can be.");
    const auto pageCount = static_cast<PageNumber>(size / format.pageSize);
    std::unique_ptr<Pager> pager(new Pager(std::move(file), header, pageCount, cacheBytes, std::move(journal)));
    pager->headerPin_ = pager->Read(kHeaderPage);
    return pager;
}

MutablePageRef Pager::Allocate()
{
    return cache_.Fresh(freeMap_.Take());
}

void Pager::Free(PageNumber page)
{
    freeMap_.Give(page);
}

bool Pager::RollBack() noexcept
{
    const bool hasChanged = cache_.RollBack();
    if (hasChanged)
        freeMap_.Forget();
    return hasChanged;
}

void Pager::Commit()
{
    ThrowIfFailed();
    if (!cache_.HasChanges())
        return;
    cache_.WriteBack();
    // The header comes last: its commit counter vouches for all before it.
    CountCommit(cache_.Write(kHeaderPage).Data(), *format_);
    cache_.WriteBackHeader();
    cache_.EndCommit();
}

void Pager::ThrowWrongType(const PageRef& page, PageType wanted)
{
    throw CorruptPage(page.Number(), "a page of type " + std::to_string(static_cast<int>(wanted)) +
                                         " is expected here, but its type is " +
                                         std::to_string(static_cast<int>(page.Type())));
}

} // namespace jet
