#include "ui/about_page.h"

#include "settings/controls.h"

#include <QGuiApplication>
#include <QIcon>
#include <QLabel>
#include <QVBoxLayout>

namespace velmora {

AboutPage::AboutPage(QWidget* parent) : QWidget(parent)
{
    auto* column = new QVBoxLayout(this);
    column->addStretch(1);
    auto* icon = new QLabel;
    const int side = fontMetrics().height() * 5;
    icon->setPixmap(QGuiApplication::windowIcon().pixmap(QSize(side, side), devicePixelRatioF()));
    icon->setAlignment(Qt::AlignHCenter);
    column->addWidget(icon);

    auto* title = new QLabel(QStringLiteral("velmora"));
    QFont large = title->font();
    large.setPointSizeF(large.pointSizeF() * 1.8);
    large.setBold(true);
    title->setFont(large);
    title->setAlignment(Qt::AlignHCenter);
    column->addWidget(title);

    version_ = new QLabel;
    version_->setObjectName("lblVersion");
    version_->setAlignment(Qt::AlignHCenter);
    column->addWidget(version_);

    auto* text = new QLabel(
        tr("<p>Reads XML files and writes what is in them into Access databases or delimited text files, with the "
           "tables, keys and relations that it finds in them.</p>"
           "<p>Free software under the MIT licence: use, copy, change and pass it on.</p>"
           "<p>With Qt %1, under the GNU Lesser General Public License 3, and expat, under the MIT licence.</p>"
           "<p>F1 opens the manual.</p>")
            .arg(QString::fromLatin1(qVersion())));
    text->setWordWrap(true);
    text->setAlignment(Qt::AlignHCenter);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    const int width = fontMetrics().averageCharWidth() * 70;
    text->setFixedWidth(width);
    text->setMinimumHeight(text->heightForWidth(width)); // which a layout that centres it does not ask for
    column->addWidget(text, 0, Qt::AlignHCenter);
    column->addStretch(2);
}

void AboutPage::Refresh(const Controls& controls)
{
    version_->setText(tr("Version %1").arg(QString::fromStdString(controls.lblVersion)));
}

} // namespace velmora
