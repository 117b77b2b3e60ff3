#include "table_support.h"

#include <gtest/gtest.h>
#include <map>
#include <random>

namespace jet::testing {

namespace {

/// A table and what must be in it, changed together at random.
class Model {
public:
    Model(JetVersion version, unsigned seed) : memory_(version), random_(seed)
    {
        table_ = memory_.Create({Col("id", ColumnType::Long, true), Col("text", ColumnType::Text)});
        table_->CreateIndex({.name = "pk", .columns = {{"id", SortOrder::Ascending}}, .primary = true});
    }

    void Step()
    {
        const unsigned dice = Below(1000);
        if (dice < 500)
            Insert();
        else if (dice < 760)
            Update();
        else if (dice < 970)
            Delete();
        else if (dice < 980)
            AddColumn();
        else if (dice < 988)
            DropColumn();
        else if (dice < 994)
            ToggleIndex();
        else if (dice < 997)
            table_->Renumber(), RefindRows();
        else
            table_ = memory_.Reopen(std::move(table_));
    }

    void Check()
    {
        ASSERT_EQ(AllRows(*table_).size(), rows_.size());
        for (const auto& [id, row] : rows_)
            ASSERT_EQ(Values(*table_, row.at), row.values) << "record " << id;
        ExpectConsistent(*table_);
    }

    void CheckThatNothingIsLeftWithoutIt()
    {
        table_->Destroy();
        EXPECT_EQ(FreePages(*memory_.pager).size() + 2, memory_.pager->PageCount());
    }

private:
    struct Row {
        RowId at;
        std::vector<Value> values;
    };

    unsigned Below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

    std::string AnyText(unsigned longest)
    {
        static const char* const kPieces[] = {"a", "Zz", " ", "7", "\u00E9", "\u20AC", "word"};
        std::string text;
        for (unsigned n = Below(longest); n > 0; --n)
            text += kPieces[Below(7)];
        return text;
    }

    Value AnyValue(const Column& column)
    {
        if (column.type == ColumnType::Boolean)
            return Value(Below(2) == 0);
        if (Below(5) == 0)
            return Value(Null{});
        switch (column.type) {
        case ColumnType::Text:
            return Value(AnyText(60));
        case ColumnType::Memo:
            return Value(AnyText(Below(8) == 0 ? 3000 : 50));
        case ColumnType::Double:
            return Value(static_cast<double>(random_()) / 7);
        default:
            return Value(static_cast<std::int32_t>(Below(50)));
        }
    }

    std::vector<Value> AnyValues(std::int32_t id)
    {
        std::vector<Value> values;
        for (const Column& column : table_->Definition().columns)
            values.push_back(column.IsAutonumber() ? Value(id) : AnyValue(column));
        return values;
    }

    Row& AnyRow() { return std::next(rows_.begin(), Below(static_cast<unsigned>(rows_.size())))->second; }

    void Insert()
    {
        const std::int32_t id = table_->TakeAutonumber();
        std::vector<Value> values = AnyValues(id);
        const RowId at = table_->Insert(MakeRecord(*table_, values));
        rows_[id] = {at, std::move(values)};
    }

    void Update()
    {
        if (rows_.empty())
            return;
        Row& row = AnyRow();
        std::vector<Value> values = AnyValues(std::get<std::int32_t>(row.values[0]));
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (Below(3) == 0)
                values[i] = row.values[i];
        }
        table_->Update(row.at, MakeRecord(*table_, values));
        row.values = std::move(values);
    }

    void Delete()
    {
        if (rows_.empty())
            return;
        const auto victim = std::next(rows_.begin(), Below(static_cast<unsigned>(rows_.size())));
        table_->Delete(victim->second.at);
        rows_.erase(victim);
    }

    void AddColumn()
    {
        static constexpr ColumnType kTypes[] = {ColumnType::Text, ColumnType::Memo, ColumnType::Long,
                                                ColumnType::Double, ColumnType::Boolean};
        const ColumnType type = kTypes[Below(5)];
        if (table_->Definition().columns.size() > 8)
            return;
        table_->AddColumn(Col("c" + std::to_string(++names_), type));
        for (auto& [id, row] : rows_)
            row.values.push_back(type == ColumnType::Boolean ? Value(false) : Value(Null{}));
        RefindRows();
    }

    void DropColumn()
    {
        const std::size_t column = Below(static_cast<unsigned>(table_->Definition().columns.size()));
        const std::string name = table_->Definition().columns[column].name;
        if (ErrorOf([&] { table_->DropColumn(name); }) != 0)
            return;
        for (auto& [id, row] : rows_)
            row.values.erase(row.values.begin() + static_cast<std::ptrdiff_t>(column));
    }

    void ToggleIndex()
    {
        if (table_->Definition().IndexByName("x") != nullptr) {
            table_->DropIndex("x");
            return;
        }
        const auto& columns = table_->Definition().columns;
        const std::string first = columns[Below(static_cast<unsigned>(columns.size()))].name;
        static_cast<void>(ErrorOf([&] {
            table_->CreateIndex(
                {.name = "x", .columns = {{first, SortOrder::Descending}, {"id", SortOrder::Ascending}}});
        }));
    }

    /// Renumbering moves the rows, and so may a new column; the model finds them again by their id.
    void RefindRows()
    {
        for (const RowId at : AllRows(*table_))
            rows_.at(std::get<std::int32_t>(Values(*table_, at)[0])).at = at;
    }

    Memory memory_;
    std::mt19937 random_;
    std::unique_ptr<Table> table_;
    std::map<std::int32_t, Row> rows_;
    int names_ = 0;
};

} // namespace

TEST(TableModel, RandomChangesAgreeWithAMap)
{
    for (const JetVersion version : kBothVersions) {
        for (unsigned seed = 1; seed <= 3; ++seed) {
            SCOPED_TRACE("seed " + std::to_string(seed) + (version == JetVersion::Jet3 ? ", Jet 3" : ", Jet 4"));
            Model model(version, seed);
            for (int step = 1; step <= 1500; ++step) {
                model.Step();
                if (step % 500 == 0) {
                    model.Check();
                    if (HasFatalFailure())
                        return;
                }
            }
            model.CheckThatNothingIsLeftWithoutIt();
        }
    }
}

} // namespace jet::testing
