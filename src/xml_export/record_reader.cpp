#include "xml_export/record_reader.h"

#include <algorithm>

namespace velmora {

void KeyWalk::NoteCurrent()
{
    current_ = records_.Eof() ? std::nullopt : std::optional(records_.GetLong(field_));
}

bool KeyWalk::Find(std::int32_t key)
{
    const bool isBehind = wanted_ && *wanted_ < key && (!current_ || *current_ >= key);
    if (!isBehind && !(wanted_ == key && current_ == key)) {
        records_.Seek(key);
        NoteCurrent();
    }
    wanted_ = key;
    return current_ == key;
}

bool KeyWalk::Next()
{
    records_.MoveNext();
    NoteCurrent();
    return current_ == wanted_;
}

void KeyWalk::Return(std::int32_t key, std::uint64_t position)
{
    records_.MoveTo(position);
    wanted_ = current_ = key;
}

namespace {

KeyWalk WalkOf(DatabaseSession& session, const std::string& table, std::size_t field)
{
    Recordset rows = session.OpenTable(table);
    static_cast<void>(rows.WalkBy(field)); // the plan has asked for the index
    return {std::move(rows), field};
}

} // namespace

RecordReader::RecordReader(DatabaseSession& session, const ExportPlan& plan, const ExportEdge& edge)
    : table_(edge.child), keyField_(plan.tables[edge.child].parts.front().keyField),
      masterField_(plan.tables[edge.child].masterField), master_(plan.tables[edge.parent].Name()),
      walk_(WalkOf(session, plan.tables[edge.child].Name(), *plan.tables[edge.child].parentField))
{
    // Records with the same key around lie in the order of the file.
    KeyWalk byKey = WalkOf(session, plan.tables[table_].Name(), keyField_);
    if (!byKey.Rows().IsInStorageOrder())
        byKey_.emplace(std::move(byKey));
}

RecordReader::RecordReader(DatabaseSession& session, const ExportPlan& plan, std::size_t table)
    : table_(table), keyField_(plan.tables[table].parts.front().keyField),
      walk_(WalkOf(session, plan.tables[table].Name(), keyField_))
{
}

/// In a table that several elements share, keys of the records around are those of several tables.
bool RecordReader::IsOurs(Recordset& rows)
{
    if (!masterField_)
        return true;
    text_.clear();
    rows.AppendText(*masterField_, text_);
    return text_ == master_;
}

bool RecordReader::First(std::int32_t around, ReaderPlace& place)
{
    place.around = around;
    bool found = walk_.Find(around);
    if (!byKey_)
        return TakeOrdered(found, place);
    place.keys.clear();
    place.next = 0;
    for (; found; found = walk_.Next())
        if (IsOurs(walk_.Rows()))
            place.keys.push_back(walk_.Rows().GetLong(keyField_));
    std::ranges::sort(place.keys);
    return TakeListed(place);
}

bool RecordReader::Next(ReaderPlace& place)
{
    return byKey_ ? TakeListed(place) : TakeOrdered(walk_.Next(), place);
}

bool RecordReader::TakeOrdered(bool found, ReaderPlace& place)
{
    while (found && !IsOurs(walk_.Rows()))
        found = walk_.Next();
    if (!found)
        return false;
    place.key = walk_.Rows().GetLong(keyField_);
    place.position = walk_.Rows().Position();
    return true;
}

bool RecordReader::TakeListed(ReaderPlace& place)
{
    while (place.next < place.keys.size()) {
        place.key = place.keys[place.next++];
        if (byKey_->Find(place.key))
            return true;
    }
    return false;
}

void RecordReader::Return(const ReaderPlace& place)
{
    if (byKey_)
        static_cast<void>(byKey_->Find(place.key));
    else
        walk_.Return(place.around, place.position);
}

} // namespace velmora
