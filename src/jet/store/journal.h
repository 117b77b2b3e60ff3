#pragma once

#include "jet/base/format.h"
#include "jet/store/file_system.h"

#include <filesystem>
#include <memory>
#include <span>

namespace jet {

/// The rollback journal: a file beside the database with what its pages held at the last commit, from the moment when
/// the first of them is overwritten to the next commit. What is in it and in which order things happen is described in
/// docs/file-format/journal.md.
///
/// A small one stays for the next transaction, as one that counts for nothing: a new file, with a name that outlives a
/// power failure, costs as much as all else that a small commit waits for.
class Journal {
public:
    /// Of the database at `database`. No file is made yet.
    Journal(FileSystem& system, std::filesystem::path database);
    /// Removes the file, unless it is needed to put the database back.
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    /// Has it begun since the last commit?
    [[nodiscard]] bool IsActive() const noexcept { return isActive_; }
    /// Begins the journal of `database`, which has `pageCount` pages as of its last commit. Before anything in it is
    /// overwritten, Keep must return. When it throws, nothing has begun.
    void Begin(File& database, const Format& format, PageNumber pageCount);
    /// What `page` held at the last commit is on the disk, or it was not there. Begin() came before.
    [[nodiscard]] bool Holds(PageNumber page) const noexcept;
    /// Brings what `pages`, ascending, none of which it holds yet, have in the file to the disk: they may be
    /// overwritten when this returns. When it throws, it holds none of them, and may be asked again.
    void Keep(std::span<const PageNumber> pages);

    /// Everything of a commit is on the disk, and it counts.
    void Finish();
    /// Puts the database back to its last commit. When it throws, the next one who opens the database does that.
    void RollBack();

    [[nodiscard]] FileSystem& System() const noexcept { return system_; }

private:
    void MakeFile();
    void RemoveFile();
    void Append(PageNumber page);
    void Flush();

    FileSystem& system_;
    std::filesystem::path databasePath_;
    std::unique_ptr<File> file_; ///< kept from one transaction to the next
    bool hasSafeName_ = false;   ///< a power failure does not take the file's name
    bool isActive_ = false;
    File* database_ = nullptr;
    const Format* format_ = nullptr;
    PageNumber pageCount_ = 0;
    std::uint64_t salt_ = 0;
    Bytes header_;
    std::uint32_t safeRecords_ = 0; ///< known to be on the disk
    std::uint64_t safeEnd_ = 0;     ///< the end of them in the file; 0 = not even the header is
    bool mayBeOverwritten_ = false; ///< the database may no longer be what it was
    bool isMarked_ = false;         ///< and says so itself
    std::uint64_t end_ = 0;         ///< bytes written, those of a batch under way included
    Bytes buffer_;                  ///< to be written at end_
    Bytes held_;                    ///< bit p = page p is held
};

} // namespace jet
