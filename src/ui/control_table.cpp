#include "ui/control_table.h"

#include <QCoreApplication>

#include <algorithm>
#include <iterator>

namespace velmora {

namespace {

struct Look {
    Option::Control control;
    const char* name;
    const char* label; ///< in the context "Option" of the translations
    const char* hint = nullptr;
    bool isAddition = false;
    bool isThreeState = false;
};

// Letters for Alt differ among what is seen at one time; C, X, L and O belong to the buttons below the pages.
const Look kLooks[] = {
    {&Controls::txtFILE_XML, "txtFILE_XML", QT_TRANSLATE_NOOP("Option", "XML &file"),
     QT_TRANSLATE_NOOP("Option", "Wildcards possible: prod_*.xml")},
    {&Controls::txtFILE_XML_RENAMED, "txtFILE_XML_RENAMED", QT_TRANSLATE_NOOP("Option", "Re&name to")},
    {&Controls::txtXML_URL, "txtXML_URL", QT_TRANSLATE_NOOP("Option", "&URL"), "https://"},
    {&Controls::txtXML_USER, "txtXML_USER", QT_TRANSLATE_NOOP("Option", "User")},
    {&Controls::txtXML_PASSWORD, "txtXML_PASSWORD", QT_TRANSLATE_NOOP("Option", "Password")},
    {&Controls::txtTIMEOUT, "txtTIMEOUT", QT_TRANSLATE_NOOP("Option", "Time limit of a download, in seconds"), nullptr,
     true},
    {&Controls::txtONLY, "txtONLY", QT_TRANSLATE_NOOP("Option", "Only the elements at these paths"),
     QT_TRANSLATE_NOOP("Option", "//orders/order/item"), true},
    {&Controls::txtENCODING, "txtENCODING", QT_TRANSLATE_NOOP("Option", "Encoding of the sources"), nullptr, true},
    {&Controls::txtUNPACK_LIMIT, "txtUNPACK_LIMIT",
     QT_TRANSLATE_NOOP("Option", "Largest size of a packed file when it is unpacked, in MB"), nullptr, true},
    {&Controls::txtFILE_MDB, "txtFILE_MDB", QT_TRANSLATE_NOOP("Option", "&MDB file")},
    {&Controls::txtFILE_EXPORT, "txtFILE_EXPORT", QT_TRANSLATE_NOOP("Option", "XML file to write from the database"),
     nullptr, true},
    {&Controls::chkOverwrite, "chkOverwrite", QT_TRANSLATE_NOOP("Option", "Replace that file when it is there"),
     nullptr, true},
    {&Controls::cboDatabase, "cboDatabase", QT_TRANSLATE_NOOP("Option", "Format")},
    {&Controls::txtFILE_TXT, "txtFILE_TXT",
     QT_TRANSLATE_NOOP("Option", "&Directory for export of delimited text files")},
    {&Controls::txtDELIMITER, "txtDELIMITER", QT_TRANSLATE_NOOP("Option", "Column delimi&ter (\\t = tab)")},
    {&Controls::chkEXPORT_COLUMN_NAMES, "chkEXPORT_COLUMN_NAMES",
     QT_TRANSLATE_NOOP("Option", "F&irst line contains column names")},
    {&Controls::chkAPPEND, "chkAPPEND",
     QT_TRANSLATE_NOOP("Option", "&Append to existing files (uncheck to delete previous export)")},
    {&Controls::chkQUOTED, "chkQUOTED", QT_TRANSLATE_NOOP("Option", "Quotation marks around values that need them"),
     nullptr, true},
    {&Controls::chkBOM, "chkBOM", QT_TRANSLATE_NOOP("Option", "Mark of UTF-8 at the beginning of new text files"),
     nullptr, true},
    {&Controls::cboEOL, "cboEOL", QT_TRANSLATE_NOOP("Option", "Lines of text files end in"), nullptr, true},
    {&Controls::txtNULL, "txtNULL", QT_TRANSLATE_NOOP("Option", "In text files, for a value that is not there"),
     nullptr, true},
    {&Controls::cboDATE, "cboDATE", QT_TRANSLATE_NOOP("Option", "Dates in text files"), nullptr, true},
    {&Controls::chkContinue, "chkContinue", QT_TRANSLATE_NOOP("Option", "Go on with the next file after an error"),
     nullptr, true},
    {&Controls::chkOnce, "chkOnce", QT_TRANSLATE_NOOP("Option", "Skip files that were loaded before"), nullptr, true},
    {&Controls::chkPreview, "chkPreview", QT_TRANSLATE_NOOP("Option", "Preview only, write nothing"), nullptr, true},
    {&Controls::txtSUMMARY, "txtSUMMARY", QT_TRANSLATE_NOOP("Option", "File for a summary in JSON"), nullptr, true},
    {&Controls::txtTHREADS, "txtTHREADS", QT_TRANSLATE_NOOP("Option", "Threads at most"),
     QT_TRANSLATE_NOOP("Option", "As many as there are processors, up to 4"), true},
    {&Controls::txtFILE_LOG, "txtFILE_LOG", QT_TRANSLATE_NOOP("Option", "Lo&g file")},
    {&Controls::chkRecreateDatabase, "chkRecreateDatabase", QT_TRANSLATE_NOOP("Option", "&Re-create database")},
    {&Controls::chkExtendMDB, "chkExtendMDB", QT_TRANSLATE_NOOP("Option", "&Extend database structure")},
    {&Controls::chkEmptyTables, "chkEmptyTables",
     QT_TRANSLATE_NOOP("Option", "Empt&y all tables of the database before import")},
    {&Controls::chkOneTablePerElement, "chkOneTablePerElement", QT_TRANSLATE_NOOP("Option", "One table per element")},
    {&Controls::chkSkipEmptyWrappingTags, "chkSkipEmptyWrappingTags",
     QT_TRANSLATE_NOOP("Option", "Do not import &wrapping tags"), nullptr, false, true},
    {&Controls::chkQuiet, "chkQuiet", QT_TRANSLATE_NOOP("Option", "&Quiet")},
    {&Controls::chkDebug, "chkDebug", QT_TRANSLATE_NOOP("Option", "Debug")},
    {&Controls::chkStrict, "chkStrict", QT_TRANSLATE_NOOP("Option", "Let nothing pass (strict)"), nullptr, true},
    {&Controls::chkComplete, "chkComplete", QT_TRANSLATE_NOOP("Option", "Import every value"), nullptr, true},
    {&Controls::chkTypes, "chkTypes", QT_TRANSLATE_NOOP("Option", "Typed columns"), nullptr, true},
    {&Controls::chkCreateTableRelations, "chkCreateTableRelations",
     QT_TRANSLATE_NOOP("Option", "Create ta&ble relations")},
    {&Controls::txtKEY_PRIMARY, "txtKEY_PRIMARY", QT_TRANSLATE_NOOP("Option", "&Primary keys")},
    {&Controls::txtKEY_FOREIGN, "txtKEY_FOREIGN", QT_TRANSLATE_NOOP("Option", "Foreign &keys")},
    {&Controls::chkImportAttributes, "chkImportAttributes", QT_TRANSLATE_NOOP("Option", "Import Attribute&s")},
    {&Controls::txtATTR_PREFIX, "txtATTR_PREFIX", QT_TRANSLATE_NOOP("Option", "Column prefix")},
    {&Controls::txtTABLE_PREFIX, "txtTABLE_PREFIX", QT_TRANSLATE_NOOP("Option", "Table name prefix")},
    {&Controls::txtTABLE_SUFFIX, "txtTABLE_SUFFIX", QT_TRANSLATE_NOOP("Option", "Table name suffix")},
    {&Controls::txtFILE_MAPPING, "txtFILE_MAPPING", QT_TRANSLATE_NOOP("Option", "Mapping &file")},
};

constexpr const char* kXmlFilter = QT_TRANSLATE_NOOP("Option", "XML (*.xml)|*.xml|All Files (*.*)|*.*");

constexpr FilePicker kPickers[] = {
    {&Controls::txtFILE_XML, "btnFindXML", QT_TRANSLATE_NOOP("Option", "Select XML File to be loaded"), kXmlFilter,
     ".xml"},
    {&Controls::txtFILE_MDB, "btnFindMDB", QT_TRANSLATE_NOOP("Option", "Select MDB for export"),
     QT_TRANSLATE_NOOP("Option", "MS Access Database (*.mdb)|*.mdb|All Files (*.*)|*.*"), ".mdb"},
    {&Controls::txtFILE_EXPORT, "btnFindEXPORT", QT_TRANSLATE_NOOP("Option", "XML file to write from the database"),
     kXmlFilter, ".xml"},
    {&Controls::txtFILE_LOG, "btnFindLOG", QT_TRANSLATE_NOOP("Option", "Select file for logging"),
     QT_TRANSLATE_NOOP("Option", "*.log|*.log|*.txt|*.txt|All Files (*.*)|*.*"), ".log"},
    {&Controls::txtSUMMARY, "btnFindSUMMARY", QT_TRANSLATE_NOOP("Option", "File for a summary in JSON"),
     QT_TRANSLATE_NOOP("Option", "JSON (*.json)|*.json|All Files (*.*)|*.*"), ".json"},
    {&Controls::txtFILE_TXT, "btnFindTXT", QT_TRANSLATE_NOOP("Option", "Folder for export of text files (tarnwick)"),
     nullptr, nullptr},
    {&Controls::txtFILE_MAPPING, "btnMappingOpen", QT_TRANSLATE_NOOP("Option", "Open mapping"),
     QT_TRANSLATE_NOOP("Option", "Tab Separated Values (*.tsv)|*.tsv|All Files (*.*)|*.*"), ".tsv"},
};

QString Translated(const char* text)
{
    return text == nullptr ? QString() : QCoreApplication::translate("Option", text);
}

std::string FirstWord(const Option& option)
{
    return std::string(Listed(option.words).front());
}

QString Text(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace

std::vector<ControlRow> ControlRows()
{
    std::vector<ControlRow> rows;
    for (const Option& option : Options()) {
        const FilePicker* picker = PickerOf(option.control);
        const auto look = std::find_if(std::begin(kLooks), std::end(kLooks),
                                       [&](const Look& l) { return l.control == option.control; });
        if (look != std::end(kLooks))
            rows.push_back({&option, look->name, Translated(look->label), Translated(look->hint), look->isAddition,
                            look->isThreeState, picker});
        else
            rows.push_back({&option, FirstWord(option), Text(FirstWord(option)), {}, true, false, picker});
    }
    return rows;
}

const FilePicker* PickerOf(const Option::Control& control)
{
    const auto* field = std::get_if<TextControl Controls::*>(&control);
    const auto picker = std::find_if(std::begin(kPickers), std::end(kPickers), [&](const FilePicker& candidate) {
        return field != nullptr && candidate.field == *field;
    });
    return picker == std::end(kPickers) ? nullptr : picker;
}

FileQuestion QuestionOf(const FilePicker& picker, const Controls& controls)
{
    return {Translated(picker.title), Translated(picker.filter), QString::fromLatin1(picker.suffix),
            QString::fromStdString((controls.*picker.field).text)};
}

QString GroupTitle(OptionGroup group)
{
    const auto headings = OptionHeadings();
    const auto heading =
        std::find_if(headings.begin(), headings.end(), [&](const OptionHeading& h) { return h.group == group; });
    return heading == headings.end() ? QString() : Translated(std::string(heading->text).c_str());
}

QString ToolTip(const Option& option)
{
    const auto sentence = [](std::string_view text) {
        QString translated = Translated(std::string(text).c_str());
        if (!translated.isEmpty())
            translated[0] = translated[0].toUpper();
        return translated.toHtmlEscaped();
    };
    QString tip = "<p>" + sentence(option.help) + "</p>";
    if (!option.offHelp.empty())
        tip += "<p>" + QCoreApplication::translate("Option", "Otherwise:") + ' ' + sentence(option.offHelp) + "</p>";
    QString words = Text(FirstWord(option));
    if (!option.offWords.empty())
        words += ", " + Text(Listed(option.offWords).front());
    return tip + "<p><i>" + words.toHtmlEscaped() + "</i></p>";
}

bool IsAtStart(const Option& option, const Controls& controls)
{
    const Controls start;
    struct Same {
        const Controls &a, &b;
        bool operator()(CheckControl Controls::*check) const { return (a.*check).value == (b.*check).value; }
        bool operator()(TextControl Controls::*text) const { return (a.*text).text == (b.*text).text; }
        bool operator()(ComboControl Controls::*list) const { return (a.*list).selected == (b.*list).selected; }
    };
    return std::visit(Same{start, controls}, option.control);
}

QString PlainLabel(const QString& label)
{
    QString plain = label;
    return plain.remove('&');
}

} // namespace velmora
