#include "schema/recordset.h"

#include "jet/base/date_text.h"
#include "jet/base/value_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

namespace velmora {

bool Recordset::Eof()
{
    return Translated([&] { return records_->Eof(); });
}

bool Recordset::AppendText(std::size_t field, std::string& out, DateForm dates)
{
    const jet::Value value = Translated([&] { return records_->Get(field); });
    if (const auto* text = std::get_if<std::string>(&value)) {
        out += *text;
    } else if (const auto* number = std::get_if<std::int32_t>(&value)) {
        std::array<char, std::numeric_limits<std::int32_t>::digits10 + 2> digits{};
        out.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), *number).ptr);
    } else if (!jet::IsNull(value)) {
        const auto* const date = dates == DateForm::Iso ? std::get_if<jet::DateTime>(&value) : nullptr;
        out += date != nullptr ? jet::IsoDateText(*date, date->days != 0) : jet::ToText(value);
    }
    return !jet::IsNull(value);
}

bool Recordset::AppendIsoText(std::size_t field, bool isTimeOfDay, std::string& out)
{
    const jet::Value value = Translated([&] { return records_->Get(field); });
    if (const auto* text = std::get_if<std::string>(&value))
        out += *text;
    else if (!jet::IsNull(value))
        out += jet::ToIsoText(value, isTimeOfDay);
    return !jet::IsNull(value);
}

void Recordset::MoveFirst()
{
    Translated([&] { records_->MoveFirst(); });
}

void Recordset::MoveNext()
{
    Translated([&] { records_->MoveNext(); });
}

bool Recordset::WalkBy(std::size_t field)
{
    return Translated([&] { return records_->WalkBy(field); });
}

void Recordset::Seek(std::int32_t key)
{
    Translated([&] { records_->Seek(key); });
}

std::uint64_t Recordset::Position()
{
    return Translated([&] { return records_->Position(); });
}

void Recordset::MoveTo(std::uint64_t position)
{
    Translated([&] { records_->MoveTo(position); });
}

bool Recordset::IsInStorageOrder()
{
    return Translated([&] { return records_->IsInStorageOrder(); });
}

/// Something of the text that was set last has been lost.
void Recordset::NoteLoss(std::size_t field)
{
    const std::string& column = records_->FieldName(field);
    if (records_->ZonesLeftOut() != zonesNoted_ &&
        std::ranges::find(columnsWithoutZone_, column) == columnsWithoutZone_.end())
        columnsWithoutZone_.push_back(column);
    if (firstReplacedColumn_.empty() && records_->ReplacedCharacters() > 0)
        firstReplacedColumn_ = column;
    zonesNoted_ = records_->ZonesLeftOut();
    replacedNoted_ = records_->ReplacedCharacters();
}

void Recordset::SetNull(std::size_t field)
{
    Translated([&] { records_->Set(field, jet::Null{}); });
}

void Recordset::CancelUpdate()
{
    Translated([&] { records_->CancelUpdate(); });
}

std::int32_t Recordset::ReadLong(std::size_t field)
{
    const jet::Value value = Translated([&] { return records_->Get(field); });
    if (const auto* number = std::get_if<std::int32_t>(&value))
        return *number;
    std::int32_t parsed = 0;
    if (const auto* text = std::get_if<std::string>(&value))
        std::from_chars(text->data(), text->data() + text->size(), parsed);
    return parsed;
}

std::optional<std::vector<std::size_t>> Recordset::TextsToWiden()
{
    return Translated([&] { return records_->TextsToWiden(); });
}

void Recordset::DeleteBookmark(std::uint64_t bookmark)
{
    Translated([&] { records_->DeleteBookmark(bookmark); });
}

void Recordset::DeleteRows(std::size_t field, std::int32_t key)
{
    Translated([&] {
        for (records_->MoveFirst(); !records_->Eof(); records_->MoveNext())
            if (records_->Get(field) == jet::Value(key))
                records_->Delete();
    });
}

} // namespace velmora
