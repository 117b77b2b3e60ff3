#include "schema/ddl_problem.h"

#include "schema/engine_errors.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace velmora {

namespace {

std::string Folded(std::string_view name)
{
    std::string folded(name);
    std::transform(folded.begin(), folded.end(), folded.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return folded;
}

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

std::string_view WhatHelps(int number, const DdlSubject& subject)
{
    using namespace engine_errors;
    const bool isColumn = subject.object == DdlObject::Column;
    switch (number) {
    case kTooManyFields:
        return "a tag mapping (t=) brings several tags into one column, -attributes leaves attributes out";
    case kFieldDefinedTwice:
    case kFieldExists:
        return "names that differ only in letter case are the same to the database: a tag mapping (t=) gives one "
               "another name; key columns take theirs from pkey= and fkey=, attributes from attr=";
    default:
        if (subject.path.empty())
            return "pkey= and fkey= name the key columns";
        if (subject.object == DdlObject::Relation)
            return "-relations goes without";
        return isColumn ? "a tag mapping (t=) gives the column another name, attr= another prefix to attributes"
                        : "a tag mapping (t=), table_prefix= and table_suffix= give the table another name";
    }
}

/// Failures of the disk or the file have nothing to do with names.
bool ConcernsTheStatement(int number)
{
    constexpr int kFirstOfDdl = 3265;
    constexpr int kLastOfDdl = 3411; // no failure of the file has a number between them that a statement can meet
    return number == engine_errors::kInvalidName || number == engine_errors::kTooManyFields ||
           number == engine_errors::kFieldDefinedTwice || (number >= kFirstOfDdl && number <= kLastOfDdl);
}

} // namespace

DdlSubject RefusedPart(const DdlSubject& table, const std::vector<NamedColumn>& columns, const RuntimeError& error)
{
    const std::string_view reason = error.what();
    const auto isNamed = [&](const std::string& name) {
        return name != table.name && reason.find("'" + name + "'") != reason.npos;
    };
    std::set<std::string> seen;
    for (const NamedColumn& column : columns) {
        const bool isSecond = !seen.insert(Folded(column.name)).second;
        // A bracket ends the name in the statement, whose rest makes no sense then.
        const bool breaksStatement = column.name.empty() || column.name.find(']') != std::string::npos;
        if (error.Number() == engine_errors::kFieldDefinedTwice ? isSecond : breaksStatement || isNamed(column.name))
            return {column.path, DdlObject::Column, column.name};
    }
    return table;
}

RuntimeError Explain(const RuntimeError& error, const DdlSubject& subject)
{
    std::string text = error.what();
    text += " (";
    text += Kind(subject.object);
    text += " [" + subject.name + "]";
    if (!subject.path.empty())
        text += " for " + subject.path;
    if (ConcernsTheStatement(error.Number())) {
        text += "; ";
        text += WhatHelps(error.Number(), subject);
    }
    return {error.Number(), text + ")"};
}

} // namespace velmora
