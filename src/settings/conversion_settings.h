#pragma once

#include "log/run_flags.h"

#include <string>

namespace velmora {

/// The options of a run: a snapshot of the controls, taken at its start by ReadSettingsFromForm.
struct ConversionSettings : RunFlags {
    bool blRecreateDatabase = false;
    bool blExtendMdb = false;
    bool blCreateTableRelations = false;
    bool blEmptyTables = false;
    bool blImportAttributes = false;
    bool blOneTablePerElement = false;
    bool blSkipEmptyWrappingTags = false;
    std::string strTablePrefix;
    std::string strTableSuffix;
    std::string strKeyPrimary;
    std::string strKeyForeign;
    std::string strAttrPrefix;
    bool blEnableTagMapping = false;
    bool blTextExport = false;
    std::string strDelimiter;
    bool blAppend = false;
    bool blExportColumnNames = false;
    bool blQuoted = false;
    bool blStrict = false;
};

} // namespace velmora
