#include "schema/record_problem.h"

#include "schema/engine_errors.h"

#include <string_view>

namespace velmora {

namespace {

std::string_view WhatHelps(int number)
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

RuntimeError ExplainWidening(const RuntimeError& error, const LongValueOfColumn& value)
{
    std::string text = error.what();
    text += " (column [" + value.table + "].[" + value.column + "] is too small for the " +
            std::to_string(value.characters) + " characters at " + value.path;
    text += WhatHelps(error.Number());
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
