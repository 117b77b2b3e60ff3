#include "ui/problems.h"

#include "platform/file_listing.h"
#include "platform/paths.h"
#include "source/source.h"
#include "source/source_list.h"

#include <QCoreApplication>

#include <string>

namespace velmora {

namespace {

QString Tr(const char* text)
{
    return QCoreApplication::translate("Problems", text);
}

/// The folder that is to hold what `path` names; the current one needs no name.
bool IsFolderMissing(const std::string& path)
{
    const std::string native = NativePath(path);
    const std::string_view folder = FolderPart(native);
    return !path.empty() && !folder.empty() && !FolderExists(folder);
}

/// What Access takes in no name of a table or column.
bool HasForbiddenCharacter(const std::string& name)
{
    return name.find_first_of(".![]`") != name.npos;
}

} // namespace

std::vector<FieldProblem> FindProblems(const Controls& controls)
{
    std::vector<FieldProblem> problems;
    const auto add = [&](TextControl Controls::*field, const char* text) { problems.push_back({field, Tr(text)}); };
    const std::string& xml = controls.txtFILE_XML.text;
    const std::string& mdb = controls.txtFILE_MDB.text;
    const std::string& txt = controls.txtFILE_TXT.text;
    const bool hasSource = controls.FromUrl() ? !controls.txtXML_URL.text.empty() : !xml.empty();
    if (!controls.FromUrl() && !xml.empty() && ListSourceFiles(xml).problem)
        add(&Controls::txtFILE_XML, HasWildcards(xml) ? QT_TRANSLATE_NOOP("Problems", "No file matches this")
                                                      : QT_TRANSLATE_NOOP("Problems", "There is no such file"));
    if (!controls.FromUrl() && xml == kStandardInput)
        add(&Controls::txtFILE_XML,
            QT_TRANSLATE_NOOP("Problems", "Standard input is read by velmora without a window: name a file here"));
    const std::string& xmlOut = controls.txtFILE_EXPORT.text;
    if (!xmlOut.empty() && (hasSource || !txt.empty()))
        add(&Controls::txtFILE_EXPORT,
            QT_TRANSLATE_NOOP("Problems", "To write XML from the database, leave source and text folder empty"));
    else if (!xmlOut.empty() && FileExists(xmlOut) && !controls.chkOverwrite.Checked())
        add(&Controls::txtFILE_EXPORT, QT_TRANSLATE_NOOP("Problems", "The file is there, and is not to be replaced"));
    if (!xmlOut.empty() && !FileExists(mdb))
        add(&Controls::txtFILE_MDB, QT_TRANSLATE_NOOP("Problems", "Name the database that is to be written as XML"));
    else if (hasSource && mdb.empty() && txt.empty())
        add(&Controls::txtFILE_MDB,
            QT_TRANSLATE_NOOP("Problems", "Name a database here, or a folder for text files below"));
    if (IsFolderMissing(mdb))
        add(&Controls::txtFILE_MDB, QT_TRANSLATE_NOOP("Problems", "There is no such folder"));
    else if (FolderExists(mdb))
        add(&Controls::txtFILE_MDB, QT_TRANSLATE_NOOP("Problems", "This is a folder: name a file in it"));
    if (FileExists(txt))
        add(&Controls::txtFILE_TXT, QT_TRANSLATE_NOOP("Problems", "This is a file: name a folder"));
    else if (IsFolderMissing(txt))
        add(&Controls::txtFILE_TXT, QT_TRANSLATE_NOOP("Problems", "The folder above it is missing"));
    if (!txt.empty() && controls.txtDELIMITER.text.empty())
        add(&Controls::txtDELIMITER,
            QT_TRANSLATE_NOOP("Problems", "Without a delimiter all values of a line run together"));
    for (const auto field : {&Controls::txtFILE_LOG, &Controls::txtFILE_EXPORT})
        if (IsFolderMissing((controls.*field).text))
            add(field, QT_TRANSLATE_NOOP("Problems", "There is no such folder"));
    if (!controls.txtFILE_MAPPING.text.empty() && !FileExists(controls.txtFILE_MAPPING.text))
        add(&Controls::txtFILE_MAPPING, QT_TRANSLATE_NOOP("Problems", "There is no such file"));
    for (const auto field : {&Controls::txtATTR_PREFIX, &Controls::txtKEY_PRIMARY, &Controls::txtKEY_FOREIGN,
                             &Controls::txtTABLE_PREFIX, &Controls::txtTABLE_SUFFIX})
        if (HasForbiddenCharacter((controls.*field).text))
            add(field, QT_TRANSLATE_NOOP("Problems", "A name in Access holds no . ! [ ] and no backquote"));
    return problems;
}

} // namespace velmora
