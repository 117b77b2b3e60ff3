#include "jet/table/column_design.h"

#include "jet/base/error.h"
#include "jet/base/value.h"

#include <algorithm>

namespace jet {

namespace {

constexpr std::uint8_t kMaxPrecision = 28;
constexpr std::size_t kMaxBinarySize = 510;

std::uint16_t SizeOf(const ColumnSpec& spec, const Format& format)
{
    switch (spec.type) {
    case ColumnType::Boolean:
        return 1;
    case ColumnType::Text:
        if (spec.characters == 0 || spec.characters > kMaxTextUnits)
            throw Error(ErrorNumber::SizeTooLong, {spec.name});
        return static_cast<std::uint16_t>(spec.characters * format.textUnitSize);
    case ColumnType::Binary:
        if (spec.characters == 0 || spec.characters > std::min(kMaxBinarySize, format.textUnitSize * kMaxTextUnits))
            throw Error(ErrorNumber::SizeTooLong, {spec.name});
        return static_cast<std::uint16_t>(spec.characters);
    default:
        return static_cast<std::uint16_t>(FactsOf(spec.type).size);
    }
}

/// Each column says how its texts sort. New ones sort as the file does, so that their keys compare with those of
/// others.
void SetCollation(Column& column, const Format& format, const DatabaseHeader& header)
{
    column.collation = {.locale = header.sortOrder, .version = header.sortVersion};
    if (format.column.country != Format::kAbsent)
        StoreU16(column.raw, format.column.country, header.country);
    if (format.column.codePage != Format::kAbsent)
        StoreU16(column.raw, format.column.codePage, header.codePage);
}

std::uint16_t NextPosition(const TableDef& def)
{
    std::uint16_t next = 0;
    for (const Column& column : def.columns)
        next = std::max(next, static_cast<std::uint16_t>(column.position + 1));
    return next;
}

/// Rows look otherwise when the text lay in the fixed area.
bool Lengthen(Column& column, std::uint16_t size)
{
    const bool moves = column.IsFixed() && size > column.size;
    if (moves) {
        column.flags &= static_cast<Byte>(~column_flags::kFixed);
        column.fixedOffset = 0;
    }
    column.size = size;
    return moves;
}

void MakeMemo(TableDef& def, std::size_t at)
{
    Column column = def.columns[at];
    column.position = NextPosition(def);
    column.type = ColumnType::Memo;
    column.size = 0;
    column.fixedOffset = 0;
    column.flags &= static_cast<Byte>(~column_flags::kFixed);
    if (def.format->version == JetVersion::Jet4)
        column.moreFlags |= kMoreFlagsCompressed;
    def.longValueOrder.push_back(column.number);
    def.columns.erase(def.columns.begin() + static_cast<std::ptrdiff_t>(at));
    def.columns.push_back(std::move(column));
}

/// Has each of its values a text that says all of it?
bool CanBecomeText(const Column& column)
{
    switch (column.type) {
    case ColumnType::Boolean:
    case ColumnType::Byte:
    case ColumnType::Integer:
    case ColumnType::Currency:
    case ColumnType::Single:
    case ColumnType::Double:
    case ColumnType::DateTime:
    case ColumnType::Numeric:
        return true;
    case ColumnType::Long:
        return !column.IsAutonumber();
    default:
        return false;
    }
}

void MakeText(Column& column, std::uint16_t size, const Format& format, const DatabaseHeader& header)
{
    column.type = ColumnType::Text;
    column.size = size;
    column.fixedOffset = 0;
    column.precision = column.scale = 0;
    column.flags &= static_cast<Byte>(~column_flags::kFixed);
    if (format.version == JetVersion::Jet4)
        column.moreFlags |= kMoreFlagsCompressed;
    SetCollation(column, format, header);
}

} // namespace

/// Columns that were dropped leave gaps, which rows keep; a new one goes behind the last that is there.
std::uint16_t FixedAreaEnd(const TableDef& def) noexcept
{
    std::size_t end = 0;
    for (const Column& column : def.columns) {
        if (column.IsFixed() && column.type != ColumnType::Boolean)
            end = std::max(end, column.fixedOffset + column.FixedSize());
    }
    return static_cast<std::uint16_t>(end);
}

Column& DesignColumn(TableDef& def, const ColumnSpec& spec, const DatabaseHeader& header)
{
    const Format& format = *def.format;
    const auto isAutonumber = [](const Column& column) { return column.IsAutonumber(); };
    if (spec.autonumber && std::any_of(def.columns.begin(), def.columns.end(), isAutonumber))
        throw Error(ErrorNumber::TwoAutoNumbers);

    // The type came with Jet 4.
    if (spec.type == ColumnType::Numeric && format.version == JetVersion::Jet3)
        throw Error(ErrorNumber::SyntaxErrorInFieldDefinition, {}, "Access 97 has no decimal numbers.");

    Column column;
    column.name = spec.name;
    column.type = spec.type;
    column.size = SizeOf(spec, format);
    column.rules.required = spec.required;
    column.flags = column_flags::kUpdatable;
    column.number = def.columnsEver;
    // A fixed column has this number too, and does not use it up: so the engine of Access writes it.
    column.variableIndex = def.variableColumnsEver;
    SetCollation(column, format, header);
    if (spec.autonumber)
        column.flags |= column_flags::kAutonumber;
    if (!FactsOf(spec.type).isVariable) {
        column.flags |= column_flags::kFixed;
        if (spec.type != ColumnType::Boolean)
            column.fixedOffset = FixedAreaEnd(def);
    } else {
        ++def.variableColumnsEver;
    }
    if (spec.type == ColumnType::Numeric) {
        if (spec.precision == 0 || spec.precision > kMaxPrecision || spec.scale > spec.precision)
            throw Error(ErrorNumber::SizeTooLong, {spec.name});
        column.precision = spec.precision;
        column.scale = spec.scale;
    } else if (format.version == JetVersion::Jet4 && IsText(spec.type)) {
        // As columns have it that are made in Access: most texts take half the room then, and Access reads both forms.
        column.moreFlags = kMoreFlagsCompressed;
    }
    column.position = NextPosition(def);
    ++def.columnsEver;
    if (IsLongValue(spec.type))
        def.longValueOrder.push_back(column.number);
    return def.columns.emplace_back(std::move(column));
}

/// By other changes of a type some values would not convert: they are refused as a whole.
bool WidenColumn(TableDef& def, const ColumnSpec& spec, const DatabaseHeader& header)
{
    const std::size_t at = def.ColumnIndex(spec.name).value();
    Column& column = def.columns[at];
    if (!spec.required && spec.type == ColumnType::Text && column.type == ColumnType::Text) {
        if (const std::uint16_t size = SizeOf(spec, *def.format); size >= column.size)
            return Lengthen(column, size);
    } else if (!spec.required && spec.type == ColumnType::Memo && column.type == ColumnType::Text) {
        MakeMemo(def, at);
        return true;
    } else if (!spec.required && spec.type == ColumnType::Memo && column.type == ColumnType::Memo) {
        return false;
    } else if (!spec.required && spec.type == ColumnType::Text && CanBecomeText(column)) {
        MakeText(column, SizeOf(spec, *def.format), *def.format, header);
        return true;
    }
    throw Error(ErrorNumber::SyntaxErrorInFieldDefinition, {},
                "(Field '" + column.name +
                    "': a text can be made longer or a memo, a number, date or boolean a text, and nothing else be "
                    "changed.)");
}

} // namespace jet
