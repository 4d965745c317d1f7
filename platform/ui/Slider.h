#pragma once

#include <QSlider>

// A slider with fractional values. The handle moves in hundredths, the value that code sets is kept exactly.
// Only what a person does (mouse, wheel, keys, assistive tools) emits moved(); setDoubleValue() does not.
class Slider : public QSlider
{
    Q_OBJECT
    Q_PROPERTY(double minimumValue READ minimumValue WRITE setMinimumValue)
    Q_PROPERTY(double maximumValue READ maximumValue WRITE setMaximumValue)
    Q_PROPERTY(double doubleValue READ doubleValue WRITE setDoubleValue USER true)

public:
    explicit Slider(QWidget *parent = nullptr);

    double minimumValue() const { return m_minimum; }
    void setMinimumValue(double minimum);
    double maximumValue() const { return m_maximum; }
    void setMaximumValue(double maximum);

    double doubleValue() const { return m_value; }
    // Limited to the range; what is not a number is the minimum.
    void setDoubleValue(double value);

Q_SIGNALS:
    void moved();

private:
    void setRangeInSteps();

    double m_minimum = 0;
    double m_maximum = 100;
    double m_value = 0;
};
