#include "ui/dropped_files.h"

#include "platform/file_listing.h"
#include "ui/job_file.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace velmora {

namespace {

qsizetype CommonPrefix(const QString& first, const QString& second)
{
    const auto end = std::mismatch(first.begin(), first.end(), second.begin(), second.end()).first;
    return end - first.begin();
}

/// A pattern for `names` in `folder` that no other file there matches; empty when there is none.
QString PatternFor(const QString& folder, const QStringList& names)
{
    QString prefix = names.front();
    for (const QString& name : names)
        prefix = prefix.left(CommonPrefix(prefix, name));
    const QString pattern = folder + '/' + prefix + "*.xml";
    const auto matches = static_cast<qsizetype>(ListFiles(pattern.toStdString()).size());
    return matches == names.size() ? pattern : QString();
}

} // namespace

DroppedFiles UnderstandDrop(const QStringList& paths)
{
    DroppedFiles dropped;
    QStringList sources;
    QString folder;
    for (const QString& path : paths) {
        const QFileInfo file(path);
        const QString ending = "." + file.suffix().toLower();
        if (file.isDir())
            dropped.xml = path + "/*.xml";
        else if (ending == ".mdb")
            dropped.mdb = path;
        else if (ending == ".tsv")
            dropped.mapping = path;
        else if (ending == kJobSuffix)
            dropped.job = path;
        else if (ending == ".xml") {
            dropped.isUnclear = dropped.isUnclear || (!sources.isEmpty() && folder != file.path());
            folder = file.path();
            sources.append(file.fileName());
        } else
            dropped.isUnclear = true;
    }
    if (sources.size() == 1)
        dropped.xml = folder + '/' + sources.front();
    else if (sources.size() > 1) {
        dropped.xml = PatternFor(folder, sources);
        dropped.isUnclear = dropped.isUnclear || dropped.xml.isEmpty();
    }
    return dropped;
}

} // namespace velmora
