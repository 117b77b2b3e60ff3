#include "jet/catalog/property_blob.h"

#include "jet/base/error.h"
#include "jet/base/text_codec.h"

#include <algorithm>
#include <string>
#include <utility>

///   signature      "KKD\0" in Jet 3, "MR2\0" in Jet 4
///   blocks         u32 length with this head · u16 kind · content
///
///   kind 0x80      the names that properties have, each once: u16 length · text; entries refer to them by number
///   kind 0, 1      u32 length of what names the owner, itself included · u16 length · name (empty: the table itself);
///                  then entries: u16 length · u8 flag · u8 type · u16 name · u16 length · value
///
/// Blocks of kinds that we do not know, and properties whose meaning we do not know, are written back as they were
/// read: forms, lookups and captions hang on them. Source: properties written by Access 97, 2000 and 2003.
namespace jet {

namespace {

constexpr std::string_view kJet3Signature{"KKD\0", 4};
constexpr std::string_view kJet4Signature{"MR2\0", 4};
constexpr std::uint16_t kNamesKind = 0x80;
constexpr std::uint16_t kObjectKind = 0;
constexpr std::uint16_t kColumnKind = 1;
constexpr std::size_t kBlockHead = 6;
constexpr std::size_t kOwnerHead = 6;
constexpr std::size_t kEntryHead = 8;
constexpr std::size_t kMaxEntry = 0xFFFF;
constexpr Byte kDefinitionFlag = 1; ///< changing it needs the right to change the definition

[[noreturn]] void ThrowDamaged()
{
    throw CorruptValue("The properties of an object overrun their bytes");
}

/// Reads a part of a blob from front to end; throws when it ends too early.
class Reader {
public:
    explicit Reader(ByteSpan bytes) : rest_(bytes) {}

    [[nodiscard]] bool AtEnd() const noexcept { return rest_.empty(); }
    ByteSpan Take(std::size_t size)
    {
        if (size > rest_.size())
            ThrowDamaged();
        const ByteSpan taken = rest_.first(size);
        rest_ = rest_.subspan(size);
        return taken;
    }
    std::uint16_t U16() { return LoadU16(Take(2), 0); }
    std::uint32_t U32() { return LoadU32(Take(4), 0); }
    /// The content of a part whose length, `counted` bytes of it already read, stands before it.
    ByteSpan Sized(std::size_t length, std::size_t counted)
    {
        if (length < counted)
            ThrowDamaged();
        return Take(length - counted);
    }

private:
    ByteSpan rest_;
};

void AppendU16(Bytes& out, std::size_t value)
{
    out.resize(out.size() + 2);
    StoreU16(out, out.size() - 2, static_cast<std::uint16_t>(value));
}

void AppendU32(Bytes& out, std::size_t value)
{
    out.resize(out.size() + 4);
    StoreU32(out, out.size() - 4, static_cast<std::uint32_t>(value));
}

Bytes EncodeName(const Format& format, std::string_view name)
{
    Bytes bytes;
    AppendText(bytes, format, name, false);
    return bytes;
}

void AppendBlock(Bytes& out, std::uint16_t kind, ByteSpan content)
{
    AppendU32(out, kBlockHead + content.size());
    AppendU16(out, kind);
    AppendBytes(out, content);
}

std::string_view SignatureOf(const Format& format)
{
    return format.version == JetVersion::Jet3 ? kJet3Signature : kJet4Signature;
}

} // namespace

PropertyBlob::PropertyBlob(const Format& format, ByteSpan blob) : format_(&format)
{
    Reader reader(blob);
    if (!std::ranges::equal(reader.Take(4), SignatureOf(format), {}, {}, [](char c) { return static_cast<Byte>(c); }))
        ThrowDamaged();
    while (!reader.AtEnd()) {
        const std::uint32_t length = reader.U32();
        const std::uint16_t kind = reader.U16();
        const ByteSpan content = reader.Sized(length, kBlockHead);
        if (kind == kNamesKind)
            ReadNames(content);
        else
            blocks_.push_back(ReadBlock(kind, content));
    }
}

void PropertyBlob::ReadNames(ByteSpan content)
{
    for (Reader reader(content); !reader.AtEnd();)
        names_.push_back(DecodeText(reader.Take(reader.U16()), *format_));
}

/// Of a kind that is not known the content stays in one piece.
PropertyBlob::Block PropertyBlob::ReadBlock(std::uint16_t kind, ByteSpan content) const
{
    Block block;
    block.kind = kind;
    if (kind != kObjectKind && kind != kColumnKind) {
        block.content.assign(content.begin(), content.end());
        return block;
    }
    Reader reader(content);
    Reader owner(reader.Sized(reader.U32(), 4));
    block.owner = DecodeText(owner.Take(owner.U16()), *format_);
    while (!reader.AtEnd()) {
        Reader parts(reader.Sized(reader.U16(), 2));
        Entry entry;
        entry.flag = parts.Take(1)[0];
        entry.type = static_cast<ColumnType>(parts.Take(1)[0]);
        entry.name = parts.U16();
        const ByteSpan value = parts.Take(parts.U16());
        entry.value.assign(value.begin(), value.end());
        block.entries.push_back(std::move(entry));
    }
    return block;
}

/// Names are compared byte by byte: the owner's is the column's own, and those of properties are fixed words.
std::optional<std::size_t> PropertyBlob::FindBlock(std::string_view column) const
{
    const std::uint16_t kind = column.empty() ? kObjectKind : kColumnKind;
    for (std::size_t i = 0; i < blocks_.size(); ++i)
        if (blocks_[i].kind == kind && blocks_[i].owner == column)
            return i;
    return std::nullopt;
}

std::optional<std::uint16_t> PropertyBlob::NameNumber(std::string_view name) const
{
    const auto found = std::ranges::find(names_, name);
    if (found == names_.end())
        return std::nullopt;
    return static_cast<std::uint16_t>(found - names_.begin());
}

std::optional<ByteSpan> PropertyBlob::Find(std::string_view column, std::string_view name) const
{
    const std::optional<std::size_t> at = FindBlock(column);
    const std::optional<std::uint16_t> number = NameNumber(name);
    if (!at || !number)
        return std::nullopt;
    const std::vector<Entry>& entries = blocks_[*at].entries;
    const auto entry = std::ranges::find(entries, *number, &Entry::name);
    if (entry == entries.end())
        return std::nullopt;
    return entry->value;
}

bool PropertyBlob::FindBoolean(std::string_view column, std::string_view name) const
{
    const std::optional<ByteSpan> value = Find(column, name);
    return value && !value->empty() && (*value)[0] != 0;
}

/// The entry of that owner and name; made like `unlessThere` where there is none.
PropertyBlob::Entry& PropertyBlob::EntryFor(std::string_view column, std::string_view name, const Entry& unlessThere)
{
    std::optional<std::uint16_t> number = NameNumber(name);
    if (!number) {
        // At the end: entries name the others by their place.
        number = static_cast<std::uint16_t>(names_.size());
        names_.emplace_back(name);
    }
    std::optional<std::size_t> at = FindBlock(column);
    if (!at) {
        at = blocks_.size();
        blocks_.push_back({column.empty() ? kObjectKind : kColumnKind, std::string(column), {}, {}});
    }
    std::vector<Entry>& entries = blocks_[*at].entries;
    auto entry = std::ranges::find(entries, *number, &Entry::name);
    if (entry == entries.end()) {
        entry = entries.insert(entry, unlessThere);
        entry->name = *number;
    }
    return *entry;
}

void PropertyBlob::SetBoolean(std::string_view column, std::string_view name, bool value)
{
    EntryFor(column, name, {kDefinitionFlag, ColumnType::Boolean, 0, {}}).value.assign(1, value ? Byte{1} : Byte{0});
}

void PropertyBlob::SetText(const Property& property)
{
    Bytes value;
    AppendText(value, *format_, property.value, false);
    if (value.size() > kMaxEntry - kEntryHead)
        throw Error(ErrorNumber::SizeTooLong, {property.name},
                    "A property holds at most " + std::to_string(kMaxEntry - kEntryHead) + " bytes.");
    Entry& entry = EntryFor(property.column, property.name, {0, property.type, 0, {}});
    entry.type = property.type;
    entry.value = std::move(value);
}

std::vector<Property> PropertyBlob::Texts() const
{
    std::vector<Property> texts;
    for (const Block& block : blocks_)
        for (const Entry& entry : block.entries)
            if (IsText(entry.type) && entry.name < names_.size())
                texts.push_back({block.owner, names_[entry.name], DecodeText(entry.value, *format_), entry.type});
    return texts;
}

bool PropertyBlob::RemoveColumn(std::string_view column)
{
    return std::erase_if(blocks_, [&](const Block& b) { return b.kind == kColumnKind && b.owner == column; }) != 0;
}

Bytes PropertyBlob::Serialize() const
{
    Bytes out;
    for (const char c : SignatureOf(*format_))
        out.push_back(static_cast<Byte>(c));

    Bytes content;
    for (const std::string& name : names_) {
        const Bytes encoded = EncodeName(*format_, name);
        AppendU16(content, encoded.size());
        AppendBytes(content, encoded);
    }
    AppendBlock(out, kNamesKind, content);

    for (const Block& block : blocks_) {
        content = block.content;
        if (block.kind == kObjectKind || block.kind == kColumnKind) {
            const Bytes owner = EncodeName(*format_, block.owner);
            AppendU32(content, kOwnerHead + owner.size());
            AppendU16(content, owner.size());
            AppendBytes(content, owner);
            for (const Entry& entry : block.entries) {
                AppendU16(content, kEntryHead + entry.value.size());
                content.push_back(entry.flag);
                content.push_back(static_cast<Byte>(entry.type));
                AppendU16(content, entry.name);
                AppendU16(content, entry.value.size());
                AppendBytes(content, entry.value);
            }
        }
        AppendBlock(out, block.kind, content);
    }
    return out;
}

} // namespace jet
