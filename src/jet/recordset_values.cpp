#include "jet/base/date_text.h"
#include "jet/base/error.h"
#include "jet/base/text_codec.h"
#include "jet/base/value_codec.h"
#include "jet/base/value_text.h"
#include "jet/catalog/catalog.h"
#include "jet/recordset.h"

#include <algorithm>
#include <bit>
#include <cmath>

// What becomes of a value that a field of the pending record is given: a text, a number, a default value.
namespace jet {

Recordset::FieldForm Recordset::FormOf(const Column& column, const Format& format)
{
    FieldForm form{.type = column.type, .isText = IsText(column.type), .refusesEmpty = column.rules.refusesEmpty};
    if (column.type == ColumnType::Text) {
        const ValueType type = column.GetValueType();
        form.isFilled = type.filled;
        form.maxUnits = column.size / format.textUnitSize;
        if (!type.compressed)
            form.maxCompressed = 0;
    } else {
        // As a short memo stands in the row, so that it is copied there as it is; a long one is never compressed.
        form.maxCompressed = static_cast<std::uint32_t>(format.maxInlineLong / 2);
    }
    if (form.isFilled)
        return form;
    if (format.version == JetVersion::Jet4) {
        form.minCopied = kMinCompressed;
        form.maxCopied = static_cast<std::uint32_t>(std::min<std::size_t>(form.maxUnits, form.maxCompressed));
        form.markSize = static_cast<std::uint8_t>(kCompressedMark.size());
    } else {
        form.maxCopied = static_cast<std::uint32_t>(form.maxUnits);
    }
    return form;
}

/// Nearly every text is of ASCII characters, and goes straight into the record. False, and nothing is set, when it is
/// another one or has to be looked at more closely.
inline bool Recordset::SetAscii(const FieldForm& form, std::size_t field, std::string_view utf8)
{
    if (utf8.size() >= form.minCopied && utf8.size() <= form.maxCopied) {
        const std::size_t size = form.markSize + utf8.size();
        const MutableBytes room = record_->Room(size);
        if (form.markSize != 0)
            StoreU16(room, 0, LoadU16(kCompressedMark, 0));
        if (!CopyPlainAscii(room.data() + form.markSize, utf8))
            return false;
        record_->Take(field, size);
        return true;
    }
    if (utf8.empty() || utf8.size() > form.maxUnits || form.isFilled)
        return false;
    if (!ExpandAscii(record_->Room(2 * utf8.size()).data(), utf8))
        return false;
    record_->Take(field, 2 * utf8.size());
    return true;
}

void Recordset::AppendEncoded(Bytes& out, std::size_t field, std::string_view utf8)
{
    const Format& format = *table_->Definition().format;
    const FieldForm& form = forms_[field];
    if (utf8.empty() && form.refusesEmpty)
        throw Error(ErrorNumber::EmptyTextRefused, {columns_[field].name});
    // A character takes at least one byte of UTF-8, so most texts need not be counted.
    const bool mayBeLong = utf8.size() > form.maxUnits;
    if (mayBeLong && format.version == JetVersion::Jet4 && Utf16Length(utf8) > form.maxUnits)
        throw Error(ErrorNumber::FieldTooSmall);
    const std::size_t begin = out.size();
    const std::size_t replaced = AppendText(out, format, utf8, utf8.size() <= form.maxCompressed);
    if (mayBeLong && format.version == JetVersion::Jet3 && out.size() - begin > form.maxUnits)
        throw Error(ErrorNumber::FieldTooSmall);
    if (form.isFilled)
        FillUp(out, begin, format, columns_[field].GetValueType());
    replaced_ += replaced;
}

void Recordset::SetText(std::size_t field, std::string_view utf8)
{
    const Column& column = ColumnToSet(field);
    if (const FieldForm& form = forms_[field]; form.isText) {
        if (!SetAscii(form, field, utf8))
            record_->Encode(field, [&](Bytes& out) { AppendEncoded(out, field, utf8); });
        return;
    }
    if (column.type == ColumnType::DateTime)
        return SetDateText(field, utf8);
    return Set(field, ParseText(column.GetValueType(), utf8));
}

void Recordset::SetDateText(std::size_t field, std::string_view utf8)
{
    const std::optional<ParsedDate> parsed = ParseDate(utf8);
    if (!parsed)
        throw Error(ErrorNumber::WrongType);
    Set(field, parsed->date);
    zonesLeftOut_ += parsed->hasZone ? 1 : 0;
}

void Recordset::SetLong(std::size_t field, std::int32_t value)
{
    [[maybe_unused]] const Column& exists = ColumnToSet(field);
    if (forms_[field].type != ColumnType::Long)
        return Set(field, value);
    NoteOwnNumber(field, value);
    StoreI32(record_->SetSized(field, sizeof value), 0, value);
}

void Recordset::SetReference(std::size_t field, std::int32_t number, const Recordset& parent)
{
    SetLong(field, number);
    told_ = {static_cast<std::uint32_t>(field), number, parent.table_.get()};
}

void Recordset::Set(std::size_t field, const Value& value)
{
    const Column& column = ColumnToSet(field);
    if (IsNull(value)) {
        if (!IsPending() || field != autonumber_)
            record_->SetNull(field);
        return;
    }
    if (IsText(column.type))
        return SetText(field, ToText(value));
    if (const auto* text = std::get_if<std::string>(&value))
        return Set(field, ParseText(column.GetValueType(), *text));
    if (column.type == ColumnType::Boolean) {
        const bool isSet = ToBoolean(value);
        record_->SetSized(field, 1)[0] = isSet ? 1 : 0;
        return;
    }
    if (const auto* number = std::get_if<std::int32_t>(&value))
        NoteOwnNumber(field, *number);
    record_->Encode(field,
                    [&](Bytes& out) { EncodeValue(out, *table_->Definition().format, column.GetValueType(), value); });
}

/// A number that the caller sets counts as given when it is the next one, so that no other record gets it before this
/// one is saved: a record that is taken back and begun anew keeps its key.
void Recordset::NoteOwnNumber(std::size_t field, std::int32_t value)
{
    if (!IsPending() || field != autonumber_ || takenNumber_ == value)
        return;
    if (takenNumber_)
        table_->ReturnAutonumber(*takenNumber_);
    takenNumber_.reset();
    if (static_cast<std::uint32_t>(value) == table_->Definition().lastAutonumber + 1)
        takenNumber_ = table_->TakeAutonumber();
}

void Recordset::SetDefault(std::size_t field)
{
    const DefaultValue& value = *columns_[field].rules.defaultValue;
    const auto setDate = [&](double days) {
        StoreU64(record_->SetSized(field, sizeof days), 0, std::bit_cast<std::uint64_t>(days));
    };
    const auto now = [&] { return catalog_.GetPager().System().LocalTime().days; };
    switch (value.kind) {
    case DefaultValue::Kind::Stored:
        return record_->SetStored(field, value.stored);
    case DefaultValue::Kind::Now:
        return setDate(now());
    case DefaultValue::Kind::Today:
        return setDate(std::floor(now()));
    case DefaultValue::Kind::TimeOfDay: {
        const double days = now();
        return setDate(days - std::floor(days));
    }
    case DefaultValue::Kind::NewGuid:
        return SetRandom(record_->SetSized(field, sizeof(Guid::bytes)));
    case DefaultValue::Kind::RandomNumber:
        return SetRandom(record_->SetSized(field, sizeof(std::int32_t)));
    }
}

void Recordset::SetRandom(MutableBytes bytes)
{
    catalog_.GetPager().System().FillRandom(bytes);
    if (bytes.size() != sizeof(Guid::bytes))
        return;
    // The marks of a random GUID: version 4 in the third group, variant 1 in the fourth. The third is little-endian.
    bytes[7] = static_cast<Byte>((bytes[7] & 0x0F) | 0x40);
    bytes[8] = static_cast<Byte>((bytes[8] & 0x3F) | 0x80);
}

} // namespace jet
