#include "settings/read_settings.h"

#include "platform/paths.h"

#include <string_view>

namespace velmora {

namespace {

/// `text` with every backslash that is followed by a "t" turned into a tab together with it.
std::string WithTabs(std::string_view text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.substr(i, 2) == "\\t") {
            result += '\t';
            ++i;
        } else {
            result += text[i];
        }
    }
    return result;
}

void ReadTextExport(const Controls& controls, ConversionSettings& settings)
{
    settings.blTextExport = false;
    settings.blExportColumnNames = false;
    settings.blQuoted = false;
    // Without a folder nobody reads the delimiter and the append flag: they keep what an earlier run left.
    if (controls.txtFILE_TXT.text.empty())
        return;
    settings.blTextExport = FolderExists(controls.txtFILE_TXT.text);
    settings.strDelimiter = WithTabs(controls.txtDELIMITER.text);
    settings.blAppend = controls.chkAPPEND.Checked();
    settings.blExportColumnNames = controls.chkEXPORT_COLUMN_NAMES.Checked();
    settings.blQuoted = controls.chkQUOTED.Checked();
}

} // namespace

void ReadSettingsFromForm(const Controls& controls, ConversionSettings& settings,
                          const std::function<bool()>& rebuildTagMap)
{
    settings.blRecreateDatabase = controls.chkRecreateDatabase.Checked() && controls.chkRecreateDatabase.enabled;
    settings.blExtendMdb = controls.chkExtendMDB.Checked() && controls.chkExtendMDB.enabled;
    settings.blQuiet = controls.chkQuiet.Checked();
    settings.blCreateTableRelations = controls.chkCreateTableRelations.Checked();
    settings.blEmptyTables = controls.chkEmptyTables.Checked();
    settings.blImportAttributes = controls.chkImportAttributes.Checked();
    settings.blOneTablePerElement = controls.chkOneTablePerElement.Checked();
    // The one check box whose grey state counts as on.
    settings.blSkipEmptyWrappingTags = controls.chkSkipEmptyWrappingTags.value != CheckState::Unchecked;
    settings.strTablePrefix = controls.txtTABLE_PREFIX.text;
    settings.strTableSuffix = controls.txtTABLE_SUFFIX.text;
    settings.strKeyPrimary = controls.txtKEY_PRIMARY.text;
    settings.strKeyForeign = controls.txtKEY_FOREIGN.text;
    settings.strAttrPrefix = controls.txtATTR_PREFIX.text;
    // The map is rebuilt whether it is wanted or not: the mapping list shows it either way.
    const bool hasMappings = rebuildTagMap();
    settings.blEnableTagMapping = controls.chkEnableTagMapping.Checked() && hasMappings;
    ReadTextExport(controls, settings);
}

} // namespace velmora
