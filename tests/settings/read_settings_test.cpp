#include "settings/conversion_settings.h"

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

TEST(ReadSettings, GreyAndDisabledBoxesCountAsTheBoxWantsIt)
{
    Controls controls;
    controls.chkSkipEmptyWrappingTags.value = CheckState::Grey;
    controls.chkImportAttributes.value = CheckState::Grey;
    EXPECT_TRUE(Read(controls).blSkipEmptyWrappingTags);
    EXPECT_FALSE(Read(controls).blImportAttributes);
    controls.chkRecreateDatabase = controls.chkEmptyTables = {CheckState::Checked};
    controls.chkRecreateDatabase.enabled = controls.chkEmptyTables.enabled = false;
    EXPECT_FALSE(Read(controls).blRecreateDatabase);
    EXPECT_TRUE(Read(controls).blEmptyTables);
    controls.chkEnableTagMapping.value = CheckState::Checked;
    EXPECT_TRUE(Read(controls, true).blEnableTagMapping);
    EXPECT_FALSE(Read(controls, false).blEnableTagMapping) << "an empty mapping list";
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

} // namespace
} // namespace velmora
