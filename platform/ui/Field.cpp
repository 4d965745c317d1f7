#include "platform/ui/Field.h"

#include <QInputMethodEvent>
#include <QPointer>
#include <QSignalBlocker>
#include <algorithm>
#include <limits>

namespace
{

// Calls the handler for changes of a field's text, after the composition of an input method where there is
// one.
class Listener : public QObject
{
public:
    Listener(QLineEdit *field, QObject *context, std::function<void(QLineEdit *)> handler)
        : QObject(context)
        , m_field(field)
        , m_handler(std::move(handler))
    {
        field->installEventFilter(this);
        connect(field, &QLineEdit::textChanged, this, &Listener::tell);
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::InputMethod) {
            m_isComposing = !static_cast<QInputMethodEvent *>(event)->preeditString().isEmpty();
            if (!m_isComposing && m_isDue) // the field takes the event first
                QMetaObject::invokeMethod(this, &Listener::tell, Qt::QueuedConnection);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    void tell()
    {
        m_isDue = m_isComposing;
        if (!m_isComposing && m_field)
            m_handler(m_field);
    }

    QPointer<QLineEdit> m_field;
    std::function<void(QLineEdit *)> m_handler;
    bool m_isComposing = false;
    bool m_isDue = false;
};

} // namespace

namespace Field
{

void putText(QLineEdit *field, const QString &text)
{
    if (!field || field->text() == text)
        return;
    const QSignalBlocker silent(field);
    const qsizetype caret = field->cursorPosition();
    field->setMaxLength(std::numeric_limits<int>::max());
    field->setText(text);
    field->setCursorPosition(int(std::min(caret, text.size())));
}

void onTextChange(QLineEdit *field, QObject *context, const std::function<void(QLineEdit *)> &handler)
{
    if (!field)
        return;
    field->setMaxLength(std::numeric_limits<int>::max());
    new Listener(field, context, handler); // goes with its context
}

} // namespace Field
