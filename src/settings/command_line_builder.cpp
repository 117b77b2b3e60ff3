#include "settings/command_line_builder.h"

#include "platform/paths.h"
#include "platform/program.h"

#include <string_view>

namespace velmora {

namespace {

#ifdef _WIN32
constexpr std::string_view kExecutableSuffix = ".exe";
#else
constexpr std::string_view kExecutableSuffix = "";
#endif

/// A command line in the making.
class Line {
public:
    explicit Line(std::string beginning) : text_(std::move(beginning)) {}

    void Word(std::string_view word) { text_.append(1, ' ').append(word); }
    void WordIf(bool condition, std::string_view word)
    {
        if (condition)
            Word(word);
    }
    void Value(std::string_view key, const TextControl& control)
    {
        if (!control.text.empty())
            text_.append(1, ' ').append(key).append("=\"").append(control.text).append(1, '"');
    }
    [[nodiscard]] std::string Text() && { return std::move(text_); }

private:
    std::string text_;
};

void AddFiles(Line& line, const Controls& controls)
{
    line.Value("xml", controls.txtFILE_XML);
    line.Value("rename", controls.txtFILE_XML_RENAMED);
    line.Value("mdb", controls.txtFILE_MDB);
    line.Value("txt", controls.txtFILE_TXT);
    line.WordIf(!controls.chkAPPEND.Checked(), "-append");
    line.WordIf(!controls.chkEXPORT_COLUMN_NAMES.Checked(), "-columns");
    line.Value("delimiter", controls.txtDELIMITER);
    line.WordIf(controls.chkQUOTED.Checked(), "+quoted");
    line.Value("log", controls.txtFILE_LOG);
    line.Value("tags", controls.txtFILE_MAPPING);
    if (!controls.txtXML_URL.text.empty()) {
        line.Value("url", controls.txtXML_URL);
        line.Value("auth", controls.txtXML_USER);
        line.Value("pwd", controls.txtXML_PASSWORD);
    }
}

void AddDatabase(Line& line, const Controls& controls)
{
    if (controls.chkRecreateDatabase.Checked()) {
        line.WordIf(controls.cboDatabase.selected != 0, "ver=97");
        return;
    }
    line.Word("-recreate_database");
    line.Word(controls.chkExtendMDB.Checked() ? "+extend_mdb" : "-extend_mdb");
    line.WordIf(controls.chkEmptyTables.Checked(), "+empty_tables");
}

void AddStructure(Line& line, const Controls& controls)
{
    const bool buildsStructure = controls.chkRecreateDatabase.Checked() || controls.chkExtendMDB.Checked();
    line.WordIf(buildsStructure && controls.chkOneTablePerElement.Checked(), "+one_table_per_element");
    line.WordIf(controls.chkSkipEmptyWrappingTags.Checked(), "+skip_empty");
    if (!buildsStructure)
        return;
    if (controls.chkCreateTableRelations.Checked()) {
        line.Word("+relations");
        line.Value("pkey", controls.txtKEY_PRIMARY);
        line.Value("fkey", controls.txtKEY_FOREIGN);
    } else {
        line.Word("-relations");
    }
    line.Value("table_prefix", controls.txtTABLE_PREFIX);
    line.Value("table_suffix", controls.txtTABLE_SUFFIX);
}

} // namespace

std::string BuildCommandLine(const Controls& controls, bool debug)
{
    Line line(ProgramFolder() + kPathSeparator + ProgramName() + std::string(kExecutableSuffix));
    AddFiles(line, controls);
    AddDatabase(line, controls);
    if (controls.chkImportAttributes.Checked()) {
        line.Word("+attributes");
        line.Value("attr", controls.txtATTR_PREFIX);
    } else {
        line.Word("-attributes");
    }
    AddStructure(line, controls);
    line.WordIf(controls.chkQuiet.Checked(), "+quiet");
    line.WordIf(debug, "debug");
    return std::move(line).Text();
}

} // namespace velmora
