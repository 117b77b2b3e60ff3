#pragma once

#include "jet/base/format.h"
#include "jet/store/file_system.h"

#include <string_view>

namespace jet {

/// What page 0 says about the database. Source: files of Access 97, 2000 and 2003; most of the page is masked with a
/// fixed key stream, which these functions put on and take off.
struct DatabaseHeader {
    JetVersion version = JetVersion::Jet4;
    RowId freePages;              ///< the global map of free pages
    double creationDate = 0;      ///< days since 1899-12-30; Jet 3 has none
    std::uint32_t build = 0;      ///< of the engine that made the file
    std::uint16_t country = 0;    ///< Jet 3: repeated in every column definition
    std::uint16_t sortOrder = 0;  ///< locale id of the default sort order; we can order by kGeneralSortOrder only
    std::uint8_t sortVersion = 0; ///< 0; 1 = the order that came with Access 2010
    std::uint16_t codePage = 0;
};

inline constexpr std::uint16_t kGeneralSortOrder = 0x0409;
inline constexpr std::uint16_t kWesternCodePage = 1252;

/// The bytes of page 0 that hold the masked area, and then some: enough for ReadHeader.
inline constexpr std::size_t kHeaderSize = 0x98;

/// Whether page 0 begins as in a file of Access 97 to 2003, whatever may be wrong with the rest.
[[nodiscard]] bool BearsSignature(ByteSpan page) noexcept;

/// Page 0 from its start (at least kHeaderSize bytes); `name` is the file's, for messages. Throws Error: NotADatabase,
/// UnrecognizedFormat (made by a later engine, or encoded), NotAValidPassword.
[[nodiscard]] DatabaseHeader ReadHeader(ByteSpan page, std::string_view name);
/// The same for an open file, of which `start` gets the first kHeaderSize bytes.
[[nodiscard]] DatabaseHeader ReadHeader(File& file, MutableBytes start);

/// Fills `page`, one whole zeroed page, for a new database; of `header` the version, the creation date and the build
/// count.
void MakeHeader(MutableBytes page, const DatabaseHeader& header);

/// The first kHeaderSize bytes of page 0 with the mask taken off. The password's bytes of Jet 4 keep the mask of their
/// own.
[[nodiscard]] Bytes UnmaskedHeader(ByteSpan page);

/// What the counter of commits (the first u16 of the page's last 512 bytes) says while pages are being overwritten.
inline constexpr std::uint16_t kWriteUnderWay = 0;
/// The counter in the file itself.
[[nodiscard]] std::uint16_t LoadCommitCounter(File& database, const Format& format);
/// From here on, and until a whole page 0 is back, the file says of itself that it is in the midst of a write. That is
/// on the disk when this returns.
void MarkWriteUnderWay(File& database, const Format& format);
/// The counter that follows on `counter`.
[[nodiscard]] std::uint16_t NextCommitCounter(std::uint16_t counter) noexcept;
/// Counts one more commit of a process that has the file to itself.
void CountCommit(MutableBytes page, const Format& format);

} // namespace jet
