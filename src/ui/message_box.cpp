#include "ui/message_box.h"

#include <QMessageBox>

#include <memory>

namespace velmora {

namespace {

struct ButtonOfAnswer {
    Answer answer;
    QMessageBox::StandardButton button;
};
constexpr ButtonOfAnswer kButtons[] = {
    {Answer::Ok, QMessageBox::Ok},   {Answer::Cancel, QMessageBox::Cancel}, {Answer::Retry, QMessageBox::Retry},
    {Answer::Yes, QMessageBox::Yes}, {Answer::No, QMessageBox::No},
};

QMessageBox::StandardButton ButtonOf(Answer answer)
{
    for (const ButtonOfAnswer& entry : kButtons)
        if (entry.answer == answer)
            return entry.button;
    return QMessageBox::NoButton;
}

Answer AnswerOf(int button)
{
    for (const ButtonOfAnswer& entry : kButtons)
        if (entry.button == button)
            return entry.answer;
    return Answer::Cancel;
}

QMessageBox::StandardButtons ButtonsOf(Buttons buttons)
{
    switch (buttons) {
    case Buttons::Ok:
        return QMessageBox::Ok;
    case Buttons::OkCancel:
        return QMessageBox::Ok | QMessageBox::Cancel;
    case Buttons::RetryCancel:
        return QMessageBox::Retry | QMessageBox::Cancel;
    case Buttons::YesNoCancel:
        return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    }
    return QMessageBox::Ok;
}

QMessageBox::Icon IconOf(Icon icon)
{
    switch (icon) {
    case Icon::Exclamation:
        return QMessageBox::Warning;
    case Icon::Critical:
        return QMessageBox::Critical;
    case Icon::Question:
        return QMessageBox::Question;
    }
    return QMessageBox::NoIcon;
}

} // namespace

QString Caption()
{
    return QString::fromUtf8(kCaption.data(), static_cast<qsizetype>(kCaption.size()));
}

QMessageBox* MakeMessageBox(QWidget& window, const QString& text, Buttons buttons, Icon icon, Answer defaultAnswer)
{
    auto* box = new QMessageBox(IconOf(icon), Caption(), text, ButtonsOf(buttons), &window);
    box->setTextFormat(Qt::PlainText);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse);
    box->setDefaultButton(ButtonOf(defaultAnswer));
    return box;
}

Answer AskInBox(QWidget& window, const QString& text, Buttons buttons, Icon icon, Answer defaultAnswer,
                const QString& caption)
{
    const std::unique_ptr<QMessageBox> box(MakeMessageBox(window, text, buttons, icon, defaultAnswer));
    box->setWindowTitle(caption);
    return AnswerOf(box->exec());
}

void TellInBox(QWidget& window, const QString& text)
{
    static_cast<void>(AskInBox(window, text, Buttons::Ok, Icon::Exclamation, Answer::Ok));
}

} // namespace velmora
