#include "Classes/Mode/Log/LogAlert.h"

#include "platform/ui/ModalLoop.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

namespace
{
QWidget *windowInUse()
{
    if (QWidget *modal = QApplication::activeModalWidget())
        return modal;
    QWidget *modal = ModalLoop::modalWindow();
    return modal && modal->isVisible() ? modal : QApplication::activeWindow();
}

// One role for all buttons: those of different roles would stand in the desktop's order.
QPushButton *addButton(QMessageBox *box, const QString &title, const char *name)
{
    QPushButton *button = box->addButton(title, QMessageBox::ActionRole);
    button->setObjectName(QString::fromLatin1(name));
    return button;
}

void showAsPlainText(QMessageBox *box)
{
    const QList<QLabel *> labels = box->findChildren<QLabel *>();
    for (QLabel *label : labels)
        label->setTextFormat(Qt::PlainText);
}

// What Return does while the second button has the focus: presses it, or the first all the same.
enum class Return { IsFocused, IsFirst };

bool ask(QWidget *above, const QString &message, const QString &informative, const QString &first,
         const QString &second, Return key = Return::IsFocused)
{
    // Its parent may be deleted while the question is open, and the box with it.
    const QPointer<QMessageBox> box(new QMessageBox(above ? above : windowInUse()));
    if (const QWidget *parent = box->parentWidget())
        box->setWindowTitle(parent->window()->windowTitle());
    box->setTextFormat(Qt::PlainText);
    box->setText(message);
    box->setInformativeText(informative);
    box->setIcon(second.isNull() ? QMessageBox::Information : QMessageBox::Question);
    showAsPlainText(box);
    box->setDefaultButton(addButton(box, first, "btnAlertFirst"));
    QPushButton *refusal = second.isNull() ? nullptr : addButton(box, second, "btnAlertSecond");
    if (refusal) {
        box->setEscapeButton(refusal);
        refusal->setAutoDefault(key == Return::IsFocused);
    }
    QObject::connect(box, &QDialog::finished, box, [] { ModalLoop::stopModalWithCode(0); });
    ModalLoop::runModalForWindow(box);
    const bool isRefused = box && refusal && box->clickedButton() == refusal;
    delete box;
    return !isRefused;
}
} // namespace

void LogAlert::AlertOKWithMessage(const QString &message, const QString &Text, QWidget *above)
{
    ask(above, message, Text, QStringLiteral("OK"), QString());
}

bool LogAlert::AlertYesNoWithMessage(const QString &message, const QString &Text, QWidget *above)
{
    return ask(above, message, Text, QStringLiteral("YES"), QStringLiteral("NO"), Return::IsFirst);
}

bool LogAlert::AlertOKCancelWithMessage(const QString &message, const QString &Text, QWidget *above)
{
    return ask(above, message, Text, QStringLiteral("OK"), QStringLiteral("Cancel"));
}
