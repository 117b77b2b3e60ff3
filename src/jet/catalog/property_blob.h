#pragma once

#include "jet/base/format.h"
#include "jet/base/value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace jet {

/// The properties of an object and of its columns, as MSysObjects.LvProp holds them.
///
///   "MR2" NUL (Jet 4) or "KKD" NUL (Jet 3), then blocks to the end: u32 length of the block, u16 kind, content
///   kind 0x80       names of properties: (u16 bytes, name) repeated, numbered from 0
///   kind 0, 1       properties of the object, of one column: u32 length of the owner's record, u16 bytes, its name;
///                   entries: u16 length, u8 flag, u8 type, u16 number of the name, u16 bytes, value
///
/// Blocks and entries that are not touched are written back as they were. Source: files of Access 97 to 2003.
class PropertyBlob {
public:
    /// Without properties.
    explicit PropertyBlob(const Format& format) : format_(&format) {}
    /// Throws CorruptValue when a block or an entry overruns the blob.
    PropertyBlob(const Format& format, ByteSpan blob);

    /// Value bytes of the property `name` of a column; of the object itself when `column` is empty.
    [[nodiscard]] std::optional<ByteSpan> Find(std::string_view column, std::string_view name) const;
    [[nodiscard]] bool FindBoolean(std::string_view column, std::string_view name) const;
    /// Adds the property to the column, or changes it there.
    void SetBoolean(std::string_view column, std::string_view name, bool value);
    /// The same for one of type Text or Memo. Throws SizeTooLong when the value has more than about 65,500 bytes: an
    /// entry's length has two. Nothing has changed then.
    void SetText(const Property& property);
    /// All those of type Text and Memo, in their order in the blob.
    [[nodiscard]] std::vector<Property> Texts() const;
    /// False when the column had no properties.
    bool RemoveColumn(std::string_view column);

    [[nodiscard]] bool IsEmpty() const noexcept { return blocks_.empty(); }
    [[nodiscard]] Bytes Serialize() const;

private:
    struct Entry {
        Byte flag = 0;
        ColumnType type = ColumnType::Boolean;
        std::uint16_t name = 0;
        Bytes value;
    };
    struct Block {
        std::uint16_t kind = 0;
        std::string owner;          ///< UTF-8; empty for the object itself
        std::vector<Entry> entries; ///< of kinds 0 and 1
        Bytes content;              ///< of any other kind
    };

    Entry& EntryFor(std::string_view column, std::string_view name, const Entry& unlessThere);
    [[nodiscard]] std::optional<std::size_t> FindBlock(std::string_view column) const;
    [[nodiscard]] std::optional<std::uint16_t> NameNumber(std::string_view name) const;
    void ReadNames(ByteSpan content);
    [[nodiscard]] Block ReadBlock(std::uint16_t kind, ByteSpan content) const;

    const Format* format_;
    std::vector<std::string> names_;
    std::vector<Block> blocks_;
};

/// NOT NULL: the column refuses Null.
inline constexpr std::string_view kRequiredProperty = "Required";
/// Does the text column take the text of no characters?
inline constexpr std::string_view kAllowZeroLengthProperty = "AllowZeroLength";
/// How Access shows the values: the name of one of its formats, or one of the user's own.
inline constexpr std::string_view kFormatProperty = "Format";
/// An expression, see ParseDefaultValue().
inline constexpr std::string_view kDefaultValueProperty = "DefaultValue";

} // namespace jet
