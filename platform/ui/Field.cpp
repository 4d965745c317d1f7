#include "platform/ui/Field.h"

#include <QSignalBlocker>
#include <algorithm>
#include <limits>

namespace Field
{

void putText(QLineEdit *field, const QString &text)
{
    if (!field || field->text() == text)
        return;
    const QSignalBlocker silent(field);
    const qsizetype caret = field->cursorPosition();
    field->setText(text);
    field->setCursorPosition(int(std::min(caret, text.size())));
}

void onTextChange(QLineEdit *field, QObject *context, const std::function<void(QLineEdit *)> &handler)
{
    if (!field)
        return;
    field->setMaxLength(std::numeric_limits<int>::max());
    QObject::connect(field, &QLineEdit::textChanged, context, [field, handler] { handler(field); });
}

} // namespace Field
