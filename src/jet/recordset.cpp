#include "jet/recordset.h"

#include "jet/recordset_impl.h"

#include <algorithm>

namespace jet {

Recordset::Recordset(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
Recordset::~Recordset() = default;
Recordset::Recordset(Recordset&&) noexcept = default;
Recordset& Recordset::operator=(Recordset&&) noexcept = default;

const std::string& Recordset::Source() const noexcept
{
    return impl_->Source();
}

Recordset::State Recordset::GetState() const noexcept
{
    return impl_ && impl_->IsOpen() ? State::Open : State::Closed;
}

void Recordset::Close()
{
    impl_->Close();
}

std::uint64_t Recordset::Generation() const noexcept
{
    return impl_->Generation();
}

std::size_t Recordset::FieldCount() const
{
    return impl_->Columns().size();
}

const std::string& Recordset::FieldName(std::size_t field) const
{
    return impl_->ColumnAt(field).name;
}

std::optional<std::size_t> Recordset::FieldIndex(std::string_view name) const
{
    const std::vector<Column>& columns = impl_->Columns();
    const auto found = std::ranges::find(columns, name, &Column::name);
    if (found == columns.end())
        return std::nullopt;
    return static_cast<std::size_t>(found - columns.begin());
}

bool Recordset::IsMemo(std::size_t field) const
{
    return impl_->ColumnAt(field).type == ColumnType::Memo;
}

bool Recordset::IsLong(std::size_t field) const
{
    return impl_->ColumnAt(field).type == ColumnType::Long;
}

bool Recordset::IsAutonumber(std::size_t field) const
{
    return impl_->ColumnAt(field).IsAutonumber();
}

std::size_t Recordset::MaxCharacters(std::size_t field) const
{
    return impl_->MaxCharacters(field);
}

std::size_t Recordset::CountCharacters(std::string_view utf8) const
{
    return impl_->CountCharacters(utf8);
}

Value Recordset::Get(std::size_t field)
{
    return impl_->Get(field);
}

void Recordset::AddNew()
{
    impl_->AddNew();
}

bool Recordset::IsPending() const noexcept
{
    return impl_->IsPending();
}

void Recordset::SetText(std::size_t field, std::string_view utf8)
{
    impl_->SetText(field, utf8);
}

void Recordset::SetLong(std::size_t field, std::int32_t value)
{
    impl_->SetLong(field, value);
}

void Recordset::Set(std::size_t field, const Value& value)
{
    impl_->Set(field, value);
}

void Recordset::Update()
{
    impl_->Update();
}

std::optional<std::vector<std::size_t>> Recordset::TextsToWiden()
{
    return impl_->TextsToWiden();
}

void Recordset::CancelUpdate()
{
    impl_->CancelUpdate();
}

void Recordset::Delete()
{
    impl_->Delete();
}

std::optional<std::int32_t> Recordset::LastAutonumber() const noexcept
{
    return impl_->LastAutonumber();
}

std::uint64_t Recordset::Bookmark() const noexcept
{
    return impl_->Bookmark();
}

void Recordset::DeleteBookmark(std::uint64_t bookmark)
{
    impl_->DeleteBookmark(bookmark);
}

std::size_t Recordset::ZonesLeftOut() const noexcept
{
    return impl_->ZonesLeftOut();
}

std::size_t Recordset::ReplacedCharacters() const noexcept
{
    return impl_->ReplacedCharacters();
}

bool Recordset::Eof()
{
    return impl_->Eof();
}

void Recordset::MoveFirst()
{
    impl_->MoveFirst();
}

void Recordset::MoveNext()
{
    impl_->MoveNext();
}

bool Recordset::WalkBy(std::size_t field)
{
    return impl_->WalkBy(field);
}

void Recordset::Seek(const Value& value)
{
    impl_->Seek(value);
}

std::uint64_t Recordset::Position()
{
    return impl_->Position();
}

void Recordset::MoveTo(std::uint64_t position)
{
    impl_->MoveTo(position);
}

bool Recordset::IsInStorageOrder()
{
    return impl_->IsInStorageOrder();
}

} // namespace jet
