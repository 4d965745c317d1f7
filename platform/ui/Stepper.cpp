#include "platform/ui/Stepper.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QStyle>
#include <QStyleOptionSpinBox>
#include <algorithm>

Stepper::Stepper(QWidget *parent)
    : QAbstractSpinBox(parent)
{
    // The edit stays, hidden: assistive tools read the value from its text.
    lineEdit()->setReadOnly(true);
    lineEdit()->hide();
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setIntegerValue(m_value);
}

void Stepper::setMinValue(int minimum)
{
    m_minimum = minimum;
    setIntegerValue(m_value);
}

void Stepper::setMaxValue(int maximum)
{
    m_maximum = maximum;
    setIntegerValue(m_value);
}

void Stepper::setIncrement(int increment)
{
    m_increment = std::max(0, increment);
}

void Stepper::setIntegerValue(qint64 value)
{
    const qint64 limited = std::max(qint64(m_minimum), std::min(value, qint64(m_maximum)));
    const bool changed = limited != m_value;
    m_value = limited;
    lineEdit()->setText(QString::number(m_value));
    // An arrow that leads nowhere any more is grey.
    update();
    if (changed) {
        QAccessibleValueChangeEvent event(this, m_value);
        QAccessible::updateAccessibility(&event);
    }
}

QSize Stepper::sizeHint() const
{
    QStyleOptionSpinBox option;
    initStyleOption(&option);
    const int height = QAbstractSpinBox::sizeHint().height();
    option.rect = QRect(0, 0, 10 * height, height);
    const auto part = [&](QStyle::SubControl control) {
        return style()->subControlRect(QStyle::CC_SpinBox, &option, control, this);
    };
    const QRect arrows = part(QStyle::SC_SpinBoxUp) | part(QStyle::SC_SpinBoxDown);
    const int frame = style()->pixelMetric(QStyle::PM_SpinBoxFrameWidth, &option, this);
    return {arrows.width() + 2 * frame, height};
}

QSize Stepper::minimumSizeHint() const
{
    return sizeHint();
}

void Stepper::stepBy(int steps)
{
    const qint64 before = m_value;
    setIntegerValue(m_value + qint64(steps) * m_increment);
    if (m_value != before)
        Q_EMIT stepped();
}

QAbstractSpinBox::StepEnabled Stepper::stepEnabled() const
{
    StepEnabled enabled = StepNone;
    enabled.setFlag(StepUpEnabled, m_value < m_maximum);
    enabled.setFlag(StepDownEnabled, m_value > m_minimum);
    return enabled;
}

// The base class would offer to cut and paste in the hidden edit.
void Stepper::contextMenuEvent(QContextMenuEvent *event)
{
    event->ignore();
}
