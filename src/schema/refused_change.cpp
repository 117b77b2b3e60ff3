#include "schema/refused_change.h"

#include <algorithm>
#include <string_view>

namespace velmora {

namespace {

std::string_view Kind(DdlObject object)
{
    switch (object) {
    case DdlObject::Table:
        return "table";
    case DdlObject::Column:
        return "column";
    case DdlObject::Index:
        return "index";
    case DdlObject::Relation:
        return "relation";
    }
    return {};
}

/// With the rules that import every value no name is refused and no table has too many columns.
constexpr std::string_view kCompleteHelps = " (+complete imports them)";

std::string WhatElseHelps(const EngineError& error, const DdlSubject& subject)
{
    using namespace engine_errors;
    const jet::ErrorSubject& about = error.Subject();
    switch (error.Number()) {
    case kTableExists:
        return "a query, a linked table or the like has this name: a tag mapping (t=), table_prefix= and table_suffix= "
               "give the table another name";
    case kTooManyFields:
        return "a tag mapping (t=) brings several tags into one column, -attributes leaves attributes out";
    case kFieldDefinedTwice:
    case kFieldExists:
        return "names that differ only in letter case, or as ss and \xC3\x9F do, are the same to the database: a tag "
               "mapping (t=) gives one another name; key columns take theirs from pkey= and fkey=, attributes from "
               "attr=";
    case kFieldInIndex:
    case kFieldInRelation:
        if (!about.index.empty())
            return "the index [" + about.index + "] of [" + about.table + "] needs it: delete that in Access";
        if (!about.relation.empty())
            return "the relation [" + about.relation + "] of [" + about.table + "] needs it: delete that in Access";
        return "the table has no other column";
    default:
        break;
    }
    if (subject.path.empty())
        return "pkey= and fkey= name the key columns";
    switch (subject.object) {
    case DdlObject::Relation:
        return "-relations goes without";
    case DdlObject::Column:
        return "a tag mapping (t=) gives the column another name, attr= another prefix to attributes";
    case DdlObject::Index:
        return "its name is made of the table's and the key column's: a tag mapping (t=), table_prefix=, "
               "table_suffix=, "
               "pkey= and fkey= make it another one, -relations goes without";
    case DdlObject::Table:
        break;
    }
    return "a tag mapping (t=), table_prefix= and table_suffix= give the table another name";
}

std::string WhatHelps(const EngineError& error, const DdlSubject& subject)
{
    using namespace engine_errors;
    std::string help = WhatElseHelps(error, subject);
    const int number = error.Number();
    if (number == kTableExists || number == kTooManyFields || number == kFieldDefinedTwice || number == kFieldExists ||
        number == kInvalidName)
        help += kCompleteHelps;
    return help;
}

/// Failures of the disk or the file have nothing to do with names.
bool ConcernsTheStatement(int number)
{
    using namespace engine_errors;
    constexpr int kFirstOfDdl = 3265;
    constexpr int kLastOfDdl = 3411; // no failure of the file has a number between them that a statement can meet
    return number == kTableExists || number == kInvalidName || number == kTooManyFields ||
           number == kFieldDefinedTwice || (number >= kFirstOfDdl && number <= kLastOfDdl);
}

std::string Described(const NamedColumn& column)
{
    return column.path.empty() ? "the key column [" + column.name + "]" : "[" + column.name + "] for " + column.path;
}

/// The engine tells which two names are the same to it.
DdlSubject SecondOfTwo(const DdlSubject& table, const std::vector<NamedColumn>& columns, const EngineError& error)
{
    if (error.Subject().columns.size() != 2)
        return table;
    const auto named = [&](std::size_t which, auto from) {
        return std::find_if(from, columns.end(),
                            [&](const NamedColumn& c) { return c.name == error.Subject().columns[which]; });
    };
    const auto first = named(0, columns.begin());
    const auto second = first == columns.end() ? first : named(1, first + 1);
    if (second == columns.end())
        return table;
    return {second->path, DdlObject::Column, second->name, Described(*first)};
}

std::string_view WhatHelpsToWiden(int number)
{
    switch (number) {
    case engine_errors::kFieldInIndex:
        return "; without that index it could be widened, or a tag mapping (t=) sends the values to another column";
    case engine_errors::kFieldInRelation:
        return "; without that relation it could be widened, or a tag mapping (t=) sends the values to another column";
    case engine_errors::kRecordTooLarge:
        return "; a record that the table holds already would not fit its page any more";
    default:
        return "";
    }
}

} // namespace

DdlSubject RefusedPart(const DdlSubject& table, const std::vector<NamedColumn>& columns, const EngineError& error)
{
    if (error.Number() == engine_errors::kFieldDefinedTwice)
        return SecondOfTwo(table, columns, error);
    const std::vector<std::string>& names = error.Names();
    for (const NamedColumn& column : columns) {
        // A bracket ends the name in the statement, whose rest makes no sense then.
        const bool breaksStatement = column.name.empty() || column.name.find(']') != std::string::npos;
        const bool isNamed =
            column.name != table.name && std::find(names.begin(), names.end(), column.name) != names.end();
        if (breaksStatement || isNamed)
            return {column.path, DdlObject::Column, column.name};
    }
    return table;
}

RuntimeError Explain(const EngineError& error, const DdlSubject& subject)
{
    std::string text = error.what();
    text += " (";
    text += Kind(subject.object);
    text += " [" + subject.name + "]";
    if (!subject.path.empty())
        text += " for " + subject.path;
    if (!subject.rival.empty())
        text += ", and " + subject.rival;
    else if (error.Number() == engine_errors::kFieldExists && !error.Subject().columns.empty())
        text += ", and [" + error.Subject().columns.front() + "], which the table has";
    if (ConcernsTheStatement(error.Number())) {
        text += "; ";
        text += WhatHelps(error, subject);
    }
    return {error.Number(), text + ")"};
}

RuntimeError ExplainWidening(const RuntimeError& error, const LongValueOfColumn& value)
{
    std::string text = error.what();
    text += " (column [" + value.table + "].[" + value.column + "] is too small for the " +
            std::to_string(value.characters) + " characters at " + value.path;
    text += WhatHelpsToWiden(error.Number());
    return {error.Number(), text + ")"};
}

RuntimeError ExplainTooLarge(const RuntimeError& error, const LargeRecord& record)
{
    std::string text = error.what();
    text += " (the record of " + record.path + " for table [" + record.table + "], which has " +
            std::to_string(record.columns) +
            " columns, does not fit a page even with its memos outside; fewer columns help: -attributes leaves "
            "attributes out, a tag mapping (t=) brings several tags into one column";
    if (record.isAccess97)
        text += "; in a new Access 2000 database (ver=2000) a record may be twice as large";
    text += " (+complete imports them)"; // in several tables
    return {error.Number(), text + ")"};
}

} // namespace velmora
