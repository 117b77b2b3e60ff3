#include "ui/resources.h"

#include <QApplication>
#include <QIcon>
#include <QLibraryInfo>
#include <QLocale>
#include <QResource>
#include <QTranslator>

/// A static library's resources are taken along only when they are named. Outside of namespaces, as Qt wants it.
static void NameResources()
{
    Q_INIT_RESOURCE(icon);
    Q_INIT_RESOURCE(translations);
}

namespace velmora {

namespace {

/// The buttons of boxes: Qt's own translations may not be installed, ours are.
[[maybe_unused]] constexpr const char* kButtons[] = {
    QT_TRANSLATE_NOOP("QPlatformTheme", "OK"), QT_TRANSLATE_NOOP("QPlatformTheme", "Cancel"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "Retry"), QT_TRANSLATE_NOOP("QPlatformTheme", "&Yes"),
    QT_TRANSLATE_NOOP("QPlatformTheme", "&No")};

} // namespace

void InstallResources(QCoreApplication& application)
{
    NameResources();
    QApplication::setWindowIcon(QIcon::fromTheme(kDesktopId, QIcon(":/io.github.velmora.velmora.svg")));
    const auto install = [&](const QString& name, const QString& folder) {
        auto* translator = new QTranslator(&application);
        if (translator->load(QLocale(), name, "_", folder))
            QCoreApplication::installTranslator(translator);
    };
    install("qtbase", QLibraryInfo::path(QLibraryInfo::TranslationsPath)); // file dialogs
    install("velmora", ":/translations");
}

} // namespace velmora
