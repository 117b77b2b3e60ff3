#include "settings/read_settings.h"
#include "settings/text_export_warnings.h"

#include "support/shared.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

ConversionSettings Read(const Controls& controls, bool hasMappings = false)
{
    ConversionSettings settings;
    ReadSettingsFromForm(controls, settings, [hasMappings] { return hasMappings; });
    return settings;
}

TEST(ReadSettings, EachCheckBoxSetsItsFlag)
{
    struct Case {
        const char* name;
        CheckControl Controls::*control;
        bool ConversionSettings::*flag;
        bool greyIsOn;
        bool disabledIsOff;
    };
    const Case cases[] = {
        {"re-create", &Controls::chkRecreateDatabase, &ConversionSettings::blRecreateDatabase, false, true},
        {"extend", &Controls::chkExtendMDB, &ConversionSettings::blExtendMdb, false, true},
        {"relations", &Controls::chkCreateTableRelations, &ConversionSettings::blCreateTableRelations, false, false},
        {"empty", &Controls::chkEmptyTables, &ConversionSettings::blEmptyTables, false, false},
        {"attributes", &Controls::chkImportAttributes, &ConversionSettings::blImportAttributes, false, false},
        {"one table", &Controls::chkOneTablePerElement, &ConversionSettings::blOneTablePerElement, false, false},
        {"skip", &Controls::chkSkipEmptyWrappingTags, &ConversionSettings::blSkipEmptyWrappingTags, true, false},
        {"mapping", &Controls::chkEnableTagMapping, &ConversionSettings::blEnableTagMapping, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Controls controls;
        CheckControl& control = controls.*c.control;
        control.value = CheckState::Checked;
        EXPECT_TRUE(Read(controls, true).*c.flag);
        control.enabled = false;
        EXPECT_EQ(Read(controls, true).*c.flag, !c.disabledIsOff);
        control = {CheckState::Grey};
        EXPECT_EQ(Read(controls, true).*c.flag, c.greyIsOn);
        control.value = CheckState::Unchecked;
        EXPECT_FALSE(Read(controls, true).*c.flag);
    }
    Controls mapping;
    mapping.chkEnableTagMapping.value = CheckState::Checked;
    EXPECT_FALSE(Read(mapping, false).blEnableTagMapping) << "an empty mapping list";
}

TEST(ReadSettings, ANewDatabaseIsNeitherExtendedNorEmptied)
{
    Controls controls;
    controls.chkEmptyTables.value = CheckState::Checked;
    controls.UpdateEnabled();
    EXPECT_FALSE(controls.chkExtendMDB.enabled);
    EXPECT_FALSE(controls.chkEmptyTables.enabled);
    EXPECT_FALSE(Read(controls).blExtendMdb);
    controls.chkRecreateDatabase.value = CheckState::Unchecked;
    controls.UpdateEnabled();
    EXPECT_TRUE(controls.chkEmptyTables.enabled);
    EXPECT_TRUE(Read(controls).blExtendMdb);
}

TEST(ReadSettings, TextExportNeedsAFolderAndOtherwiseKeepsTheDelimiter)
{
    const testing::TempFolder folder;
    Controls controls;
    ConversionSettings settings;
    const auto read = [&] { ReadSettingsFromForm(controls, settings, [] { return false; }); };

    controls.txtFILE_TXT.text = folder.Path().string();
    controls.txtDELIMITER.text = "\\t;\\t\\";
    controls.chkEXPORT_COLUMN_NAMES.value = controls.chkQUOTED.value = CheckState::Checked;
    read();
    EXPECT_TRUE(settings.blTextExport && settings.blAppend && settings.blExportColumnNames && settings.blQuoted);
    EXPECT_EQ(settings.strDelimiter, "\t;\t\\");

    controls.txtFILE_TXT.text = "";
    controls.txtDELIMITER.text = "|";
    controls.chkAPPEND.value = CheckState::Unchecked;
    read();
    EXPECT_FALSE(settings.blTextExport || settings.blExportColumnNames || settings.blQuoted);
    EXPECT_EQ(settings.strDelimiter, "\t;\t\\");
    EXPECT_TRUE(settings.blAppend);

    controls.txtFILE_TXT.text = (folder / "none").string();
    read();
    EXPECT_FALSE(settings.blTextExport);
    EXPECT_EQ(settings.strDelimiter, "|");
}

TEST(TextExportWarnings, TellWhatMaySurprise)
{
    struct Case {
        const char* name;
        ConversionSettings settings;
        std::size_t sources;
        std::vector<const char*> told;
    };
    ConversionSettings plain;
    plain.blTextExport = plain.blAppend = true;
    plain.strDelimiter = ";";
    ConversionSettings surprising = plain;
    surprising.blAppend = false;
    surprising.strDelimiter.clear();
    ConversionSettings noText = surprising;
    noText.blTextExport = false;
    const Case cases[] = {
        {"nothing", plain, 9, {}},
        {"no text files", noText, 9, {}},
        {"one source", surprising, 1, {"delimiter="}},
        {"many sources", surprising, 2, {"delimiter=", "+append"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::vector<std::string> lines = TextExportWarnings(c.settings, c.sources);
        ASSERT_EQ(lines.size(), c.told.size());
        for (std::size_t i = 0; i < lines.size(); ++i)
            EXPECT_NE(lines[i].find(c.told[i]), std::string::npos) << lines[i];
    }
}

} // namespace
} // namespace velmora
