#include "platform/ui/Slider.h"

#include <QSignalBlocker>
#include <cmath>

namespace
{
constexpr double stepsPerUnit = 100;
}

Slider::Slider(QWidget *parent)
    : QSlider(Qt::Horizontal, parent)
{
    setSingleStep(int(stepsPerUnit));
    setPageStep(int(stepsPerUnit * 10));
    setRangeInSteps();
    connect(this, &QSlider::valueChanged, this, [this](int steps) {
        m_value = m_minimum + steps / stepsPerUnit;
        Q_EMIT moved();
    });
}

void Slider::setMinimumValue(double minimum)
{
    m_minimum = minimum;
    setRangeInSteps();
}

void Slider::setMaximumValue(double maximum)
{
    m_maximum = maximum;
    setRangeInSteps();
}

void Slider::setDoubleValue(double value)
{
    m_value = std::isnan(value) ? m_minimum : std::max(m_minimum, std::min(value, m_maximum));
    const QSignalBlocker silent(this);
    setValue(int(std::lround((m_value - m_minimum) * stepsPerUnit)));
}

// Steps count from the minimum, so that every range starts at step 0.
void Slider::setRangeInSteps()
{
    const double value = m_value;
    {
        const QSignalBlocker silent(this);
        setRange(0, std::max(0, int(std::lround((m_maximum - m_minimum) * stepsPerUnit))));
    }
    setDoubleValue(value);
}
