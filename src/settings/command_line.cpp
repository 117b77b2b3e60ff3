#include "settings/command_line.h"

#include <algorithm>
#include <string>

namespace velmora {

namespace {

constexpr char kDelimiter = ' ';

constexpr CheckState kOn = CheckState::Checked;
constexpr CheckState kOff = CheckState::Unchecked;

const SwitchRow kSwitches[] = {
    {{"+quiet", "quiet", "q", "+q"}, &Controls::chkQuiet, kOn},
    {{"-quiet", "-q"}, &Controls::chkQuiet, kOff},
    {{"+relations", "relations", "+r", "r"}, &Controls::chkCreateTableRelations, kOn},
    {{"-relations", "-r"}, &Controls::chkCreateTableRelations, kOff},
    {{"+recreate_database", "recreate_database", "+d", "d"}, &Controls::chkRecreateDatabase, kOn},
    {{"debug"}, &Controls::chkDebug, kOn},
    {{"-recreate_database", "-d"}, &Controls::chkRecreateDatabase, kOff},
    {{"+one_table_per_element", "+o"}, &Controls::chkOneTablePerElement, kOn},
    {{"-one_table_per_element", "-o"}, &Controls::chkOneTablePerElement, kOff},
    {{"+extend_mdb", "extend_mdb"}, &Controls::chkExtendMDB, kOn},
    {{"-extend_mdb"}, &Controls::chkExtendMDB, kOff},
    {{"+empty_tables", "empty_tables", "e", "+e"}, &Controls::chkEmptyTables, kOn},
    {{"-empty_tables", "-e"}, &Controls::chkEmptyTables, kOff},
    {{"append", "+append"}, &Controls::chkAPPEND, kOn},
    {{"columns", "+columns"}, &Controls::chkEXPORT_COLUMN_NAMES, kOn},
    {{"-columns"}, &Controls::chkEXPORT_COLUMN_NAMES, kOff},
    {{"-append"}, &Controls::chkAPPEND, kOff},
    {{"+quoted"}, &Controls::chkQUOTED, kOn},
    {{"-quoted"}, &Controls::chkQUOTED, kOff},
    {{"attributes", "+attributes", "a", "+a"}, &Controls::chkImportAttributes, kOn},
    {{"skip_empty", "+skip_empty"}, &Controls::chkSkipEmptyWrappingTags, kOn},
    {{"-skip_empty"}, &Controls::chkSkipEmptyWrappingTags, kOff},
    {{"-attributes", "-a"}, &Controls::chkImportAttributes, kOff},
};

const KeyRow kKeys[] = {
    {{"primary", "pkey", "p"}, &Controls::txtKEY_PRIMARY},
    {{"foreign", "fkey", "f"}, &Controls::txtKEY_FOREIGN},
    {{"attr", "at"}, &Controls::txtATTR_PREFIX},
    {{"table_prefix", "tp"}, &Controls::txtTABLE_PREFIX},
    {{"table_suffix", "ts"}, &Controls::txtTABLE_SUFFIX},
    {{"xml", "x"}, &Controls::txtFILE_XML},
    {{"txt"}, &Controls::txtFILE_TXT},
    {{"delimiter"}, &Controls::txtDELIMITER},
    {{"rename", "n"}, &Controls::txtFILE_XML_RENAMED},
    {{"t", "tags"}, &Controls::txtFILE_MAPPING},
    {{"mdb", "m"}, &Controls::txtFILE_MDB},
    {{"log", "logfile", "l"}, &Controls::txtFILE_LOG},
    {{"url"}, &Controls::txtXML_URL},
    {{"pwd"}, &Controls::txtXML_PASSWORD},
    {{"auth"}, &Controls::txtXML_USER},
    {{"ver", "v"}, nullptr},
};

std::string_view Trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(kDelimiter);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kDelimiter) - first + 1);
}

std::string LowerCase(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

/// The first row that knows `word`; nullptr when none does.
template <class Row>
const Row* FindWord(std::span<const Row> table, std::string_view word)
{
    const auto row = std::find_if(table.begin(), table.end(), [word](const Row& candidate) {
        return std::find(candidate.words.begin(), candidate.words.end(), word) != candidate.words.end();
    });
    return row == table.end() ? nullptr : &*row;
}

std::string_view WithoutQuotes(std::string_view value)
{
    const bool isQuoted = value.size() >= 2 && value.front() == '"' && value.back() == '"';
    return isQuoted ? value.substr(1, value.size() - 2) : value;
}

bool ApplySwitch(std::string_view token, Controls& controls, bool& debug)
{
    const SwitchRow* row = FindWord(SwitchTable(), LowerCase(Trimmed(token)));
    if (row == nullptr)
        return false;
    CheckControl& control = controls.*row->control;
    control.value = row->value;
    if (&control == &controls.chkDebug) {
        control.visible = true;
        debug = true;
    }
    return true;
}

bool ApplyKey(std::string_view token, Controls& controls)
{
    const std::size_t equals = token.find('=');
    if (equals == std::string_view::npos)
        return false;
    const KeyRow* row = FindWord(KeyTable(), LowerCase(token.substr(0, equals)));
    if (row == nullptr)
        return false;
    const std::string_view value = WithoutQuotes(token.substr(equals + 1));
    if (row->control != nullptr)
        (controls.*row->control).text = value;
    else
        controls.cboDatabase.selected = value == "2000" ? 0 : 1;
    return true;
}

} // namespace

std::span<const SwitchRow> SwitchTable() noexcept
{
    return kSwitches;
}

std::span<const KeyRow> KeyTable() noexcept
{
    return kKeys;
}

void ApplyCommandLine(std::string_view line, Controls& controls, bool& debug,
                      const std::function<void(std::string_view token)>& reportUnknown)
{
    const std::string_view trimmed = Trimmed(line);
    if (trimmed.empty())
        return;
    for (const std::string_view token : SplitCommandLine(trimmed, kDelimiter))
        if (!ApplySwitch(token, controls, debug) && !ApplyKey(token, controls))
            reportUnknown(token);
}

} // namespace velmora
