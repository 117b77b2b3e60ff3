#include "settings/controls.h"

namespace velmora {

void Controls::UpdateEnabled()
{
    // A new database has nothing to extend or to empty.
    const bool existingDatabase = !chkRecreateDatabase.Checked();
    chkExtendMDB.enabled = existingDatabase;
    chkEmptyTables.enabled = existingDatabase;

    txtKEY_PRIMARY.enabled = chkCreateTableRelations.Checked();
    txtKEY_FOREIGN.enabled = chkCreateTableRelations.Checked();
    txtATTR_PREFIX.enabled = chkImportAttributes.Checked();

    const bool textMode = !txtFILE_TXT.text.empty();
    txtDELIMITER.enabled = textMode;
    chkEXPORT_COLUMN_NAMES.enabled = textMode;
    chkAPPEND.enabled = textMode;
    chkQUOTED.enabled = textMode;

    txtXML_PASSWORD.enabled = !txtXML_USER.text.empty();
}

} // namespace velmora
