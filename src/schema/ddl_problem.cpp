#include "schema/ddl_problem.h"

#include "schema/engine_errors.h"

#include <algorithm>
#include <map>
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

/// A guess that serves messages only: the engine decides.
bool LooksRefused(std::string_view name)
{
    constexpr std::size_t kNameUnits = 64;
    std::size_t units = 0;
    for (const unsigned char byte : name)
        units += (byte & 0xC0) != 0x80 ? (byte >= 0xF0 ? 2 : 1) : 0;
    return name.empty() || units > kNameUnits || name.front() == ' ' || name.find_first_of("!`[]\"") != name.npos;
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
        return "names that differ only in letter case are the same to the database: a tag mapping (t=) gives one of "
               "them "
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
    constexpr int kLastOfDdl = 3411;
    return number == engine_errors::kInvalidName || number == engine_errors::kTooManyFields ||
           number == engine_errors::kFieldDefinedTwice ||
           (number >= kFirstOfDdl && number <= kLastOfDdl && number != 3343);
}

} // namespace

DdlSubject RefusedPart(const DdlSubject& table, const std::vector<NamedColumn>& columns, const RuntimeError& error)
{
    const std::string_view reason = error.what();
    std::map<std::string, std::string_view> seen;
    for (const NamedColumn& column : columns) {
        if (error.Number() == engine_errors::kFieldDefinedTwice &&
            !seen.emplace(Folded(column.name), column.name).second)
            return {column.path, DdlObject::Column, column.name};
        if (error.Number() != engine_errors::kFieldDefinedTwice && error.Number() != engine_errors::kTooManyFields &&
            (LooksRefused(column.name) && (column.name.empty() || !LooksRefused(table.name))))
            return {column.path, DdlObject::Column, column.name};
    }
    for (const NamedColumn& column : columns)
        if (error.Number() == engine_errors::kInvalidName && column.name != table.name &&
            reason.find("'" + column.name + "'") != reason.npos)
            return {column.path, DdlObject::Column, column.name};
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
