#pragma once

#include <string>
#include <vector>

namespace velmora {

enum class CheckState { Unchecked = 0, Checked = 1, Grey = 2 };

struct CheckControl {
    CheckState value = CheckState::Unchecked;
    bool enabled = true;
    bool visible = true;
    [[nodiscard]] bool Checked() const noexcept { return value == CheckState::Checked; }
};

struct TextControl {
    std::string text; ///< UTF-8
    bool enabled = true;
};

struct ComboControl {
    std::vector<std::string> items;
    std::size_t selected = 0;
    bool enabled = true;
    [[nodiscard]] const std::string& Text() const { return items[selected]; }
};

/// The state of the main window's controls: the single place where a user or the command line sets an option. A window
/// binds its widgets to this data both ways; without a window the data is all there is. Members bear the controls' own
/// names.
struct Controls {
    /// The state at start-up, before the command line.
    Controls();

    TextControl txtFILE_XML, txtFILE_XML_RENAMED, txtXML_URL, txtXML_USER, txtXML_PASSWORD, txtTIMEOUT;
    TextControl txtENCODING, txtUNPACK_LIMIT, txtONLY;
    TextControl txtFILE_MDB, txtFILE_EXPORT, txtFILE_TXT, txtFILE_LOG, txtFILE_MAPPING, txtDELIMITER, txtNULL,
        txtSUMMARY, txtTHREADS;
    ComboControl cboDatabase{{"Access 2000", "Access 97"}};
    ComboControl cboEOL{{"CR LF", "LF"}};
    ComboControl cboDATE{{"2024-03-05 14:07:09", "2024-03-05T14:07:09"}};
    int tabSourceType = 0; ///< 0 local file, 1 URL
    [[nodiscard]] bool FromUrl() const noexcept { return tabSourceType == 1; }
    int tabMain = 0; ///< selected page of the main window, 0 = "Converter"

    CheckControl chkRecreateDatabase, chkExtendMDB, chkEmptyTables;
    CheckControl chkImportAttributes, chkOneTablePerElement, chkSkipEmptyWrappingTags, chkCreateTableRelations;
    CheckControl chkOverwrite; ///< for txtFILE_EXPORT
    CheckControl chkComplete;  ///< "Import every value"
    CheckControl chkTypes;     ///< "Typed columns"
    CheckControl chkAPPEND, chkEXPORT_COLUMN_NAMES, chkQUOTED, chkBOM;
    CheckControl chkContinue, chkOnce, chkPreview;
    CheckControl chkStrict, chkQuiet, chkDebug{.visible = false};
    CheckControl chkEnableTagMapping; ///< follows from whether a mapping file is named
    TextControl txtATTR_PREFIX, txtKEY_PRIMARY, txtKEY_FOREIGN, txtTABLE_PREFIX, txtTABLE_SUFFIX;

    std::string btnConvertCaption = "Convert"; ///< "Working..." while a run is going on
    bool btnConvertEnabled = true;
    std::string btnQuitCaption = "Exit"; ///< "Cancel" while a run is going on
    bool optionsEnabled = true;
    std::string txtXML;                      ///< structure description of the document loaded last
    std::vector<std::string> documentTags{}; ///< its names that can be mapped, where somebody is there to map them
    std::string lblVersion;

    /// What depends on what: with "Re-create database" checked, extending and emptying are disabled, and so on.
    void UpdateEnabled();
};

} // namespace velmora
