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

void InstallResources(QCoreApplication& application)
{
    NameResources();
    QApplication::setWindowIcon(QIcon::fromTheme("velmora", QIcon(":/velmora.svg")));
    const auto install = [&](const QString& name, const QString& folder) {
        auto* translator = new QTranslator(&application);
        if (translator->load(QLocale(), name, "_", folder))
            QCoreApplication::installTranslator(translator);
    };
    install("qtbase", QLibraryInfo::path(QLibraryInfo::TranslationsPath)); // the buttons of boxes
    install("velmora", ":/translations");
}

} // namespace velmora
