#pragma once

#include <QAbstractSpinBox>

// The two arrows beside a number's field; the field is another widget. Values are whole numbers in the range
// from minValue to maxValue and never wrap around. Only a person's step (mouse, held button, keys, wheel)
// emits stepped(); setIntegerValue() is silent. The limits come before the value in an interface file.
class Stepper : public QAbstractSpinBox
{
    Q_OBJECT
    Q_PROPERTY(int minValue READ minValue WRITE setMinValue)
    Q_PROPERTY(int maxValue READ maxValue WRITE setMaxValue)
    Q_PROPERTY(int increment READ increment WRITE setIncrement)
    Q_PROPERTY(qint64 value READ integerValue WRITE setIntegerValue USER true)
    // The names under which assistive tools ask for a spin box's range.
    Q_PROPERTY(int minimum READ minValue DESIGNABLE false STORED false)
    Q_PROPERTY(int maximum READ maxValue DESIGNABLE false STORED false)
    Q_PROPERTY(int singleStep READ increment DESIGNABLE false STORED false)

public:
    explicit Stepper(QWidget *parent = nullptr);

    int minValue() const { return m_minimum; }
    void setMinValue(int minimum);
    int maxValue() const { return m_maximum; }
    void setMaxValue(int maximum);
    int increment() const { return m_increment; }
    // Negative ones count as 0, which is no step at all.
    void setIncrement(int increment);

    qint64 integerValue() const { return m_value; }
    // Limited to the range.
    void setIntegerValue(qint64 value);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    void stepBy(int steps) override;

Q_SIGNALS:
    void stepped();

protected:
    StepEnabled stepEnabled() const override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    int m_minimum = 0;
    int m_maximum = 100;
    int m_increment = 1;
    qint64 m_value = 0;
};
