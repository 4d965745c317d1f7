#include "Classes/Delegate/TransitionBGView.h"

#include "Classes/Delegate/RoundView.h"

#include <QApplication>
#include <QEvent>
#include <QLinearGradient>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace
{

constexpr float alpha = 0.5F;
constexpr float startGray = 1;
constexpr float endGray = 0.8F;
constexpr double readableContrast = 4.5; // of small text, by the web's accessibility guidelines

// How bright a colour looks, 0 to 1.
double luminance(const QColor &color)
{
    const auto linear
        = [](double part) { return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(double(color.redF())) + 0.7152 * linear(double(color.greenF()))
        + 0.0722 * linear(double(color.blueF()));
}

double contrast(const QColor &a, const QColor &b)
{
    const double first = luminance(a) + 0.05;
    const double second = luminance(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

// The window's colour under the gradient where that is this grey.
QColor covered(const QColor &window, float gray)
{
    const auto mixed = [gray](float part) { return gray * alpha + part * (1 - alpha); };
    return QColor::fromRgbF(mixed(window.redF()), mixed(window.greenF()), mixed(window.blueF()));
}

} // namespace

TransitionBGView::TransitionBGView(QWidget *parent)
    : QWidget(parent)
{
    chooseTextColor();
}

void TransitionBGView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QLinearGradient gradient(0, 0, 0, height());
    gradient.setColorAt(0, QColor::fromRgbF(startGray, startGray, startGray, alpha));
    gradient.setColorAt(1, QColor::fromRgbF(endGray, endGray, endGray, alpha));
    painter.fillRect(rect(), gradient);
    RoundView::drawOutline(painter, rect());
}

void TransitionBGView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange)
        chooseTextColor();
    QWidget::changeEvent(event);
}

bool TransitionBGView::event(QEvent *event)
{
    if (event->type() == QEvent::ParentChange)
        chooseTextColor();
    return QWidget::event(event);
}

void TransitionBGView::chooseTextColor()
{
    if (m_isChoosing)
        return;
    const QPalette window = parentWidget() ? parentWidget()->palette() : QApplication::palette(this);
    const QColor top = covered(window.color(QPalette::Window), startGray);
    const QColor bottom = covered(window.color(QPalette::Window), endGray);
    const auto worst
        = [&](const QColor &text) { return std::min(contrast(text, top), contrast(text, bottom)); };
    QColor text = window.color(QPalette::WindowText);
    if (worst(text) < readableContrast)
        text = worst(Qt::black) > worst(Qt::white) ? Qt::black : Qt::white;
    m_isChoosing = true;
    QPalette own;
    if (text != window.color(QPalette::WindowText))
        own.setColor(QPalette::WindowText, text);
    setPalette(own);
    m_isChoosing = false;
}
