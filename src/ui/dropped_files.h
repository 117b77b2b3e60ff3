#pragma once

#include <QStringList>

namespace velmora {

/// What files mean that were dropped onto the window.
struct DroppedFiles {
    QString xml;            ///< a source, perhaps with wildcards
    QString mdb;            ///< a target
    QString mapping;        ///< names to load
    QString job;            ///< a job to open
    bool isUnclear = false; ///< they mean nothing, or sources that no single pattern names
};

/// By the files' endings; a folder means the XML files in it, several sources a pattern that names just these.
[[nodiscard]] DroppedFiles UnderstandDrop(const QStringList& paths);

} // namespace velmora
