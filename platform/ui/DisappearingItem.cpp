#include "platform/ui/DisappearingItem.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPointer>
#include <QVariantAnimation>
#include <QWidget>
#include <array>

namespace
{

constexpr int duration = 400; // milliseconds

// A cloud of round balls in a frame of that size. From 0 to 1 it drifts apart while its balls shrink to
// nothing.
QList<QRectF> cloud(const QSizeF &size, qreal progress)
{
    struct Ball {
        qreal x, y, radius;
    };
    static constexpr std::array<Ball, 9> balls = {{{.50, .24, .15},
                                                   {.74, .34, .14},
                                                   {.26, .36, .15},
                                                   {.82, .58, .13},
                                                   {.17, .60, .12},
                                                   {.66, .72, .17},
                                                   {.36, .74, .16},
                                                   {.50, .48, .24},
                                                   {.54, .84, .10}}};
    const qreal spread = .8 + .2 * progress;
    const qreal growth = progress < .2 ? 1 : 1 - (progress - .2) / .8;
    QList<QRectF> result;
    for (const Ball &ball : balls) {
        const QPointF center((.5 + (ball.x - .5) * spread) * size.width(),
                             (.5 + (ball.y - .5) * spread) * size.height());
        const QPointF reach(ball.radius * growth * size.width(), ball.radius * growth * size.height());
        result.append(QRectF(center - reach, center + reach));
    }
    return result;
}

// Each ball is lit from above; only the cloud as a whole has an outline.
void paintCloud(QPainter &painter, const QList<QRectF> &balls)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(120, 125, 135), 2));
    for (const QRectF &ball : balls)
        painter.drawEllipse(ball);
    painter.setPen(Qt::NoPen);
    for (const QRectF &ball : balls) {
        if (ball.isEmpty())
            continue;
        QRadialGradient light(ball.center() - QPointF(0, ball.height() / 5), ball.height() * .75);
        light.setColorAt(0, QColor(255, 255, 255));
        light.setColorAt(.55, QColor(240, 242, 245));
        light.setColorAt(1, QColor(178, 184, 194));
        painter.setBrush(light);
        painter.drawEllipse(ball);
    }
}

class Puff : public QWidget
{
public:
    Puff(const QPointF &center, const QSize &size)
        : QWidget(nullptr,
                  Qt::Tool | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint | Qt::WindowStaysOnTopHint
                      | Qt::WindowTransparentForInput | Qt::WindowDoesNotAcceptFocus)
    {
        setObjectName(QStringLiteral("disappearingItem"));
        setAttribute(Qt::WA_ShowWithoutActivating);
        setAttribute(Qt::WA_TranslucentBackground);
        setAttribute(Qt::WA_DeleteOnClose);
        setAttribute(Qt::WA_QuitOnClose, false);
        setGeometry(QRect(center.toPoint() - QPoint(size.width(), size.height()) / 2, size));
        showProgress(0);
    }

    void showProgress(qreal progress)
    {
        m_cloud = cloud(QSizeF(size()), progress);
        if (isShaped())
            setMask(shape());
        update();
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        paintCloud(painter, m_cloud);
    }

private:
    // Where nothing blends windows, as under a bare X11, the ground would be a black square.
    static bool isShaped() { return QGuiApplication::platformName() == QLatin1String("xcb"); }

    QRegion shape() const
    {
        // An empty mask would be none.
        QRegion region(QRect(rect().center(), QSize(1, 1)));
        for (const QRectF &ball : m_cloud)
            region += QRegion(ball.adjusted(-1, -1, 1, 1).toAlignedRect(), QRegion::Ellipse);
        return region;
    }

    QList<QRectF> m_cloud;
};

} // namespace

namespace DisappearingItem
{

QPixmap pointer(bool isVanishing, const QPixmap &carried)
{
    constexpr int reach = 36; // of the pointer and the cloud around the tip
    constexpr QPoint beside(14, 24);
    const QSize size = carried.size() / carried.devicePixelRatio();
    const QPoint tip(reach + size.width(), reach + size.height());
    QPixmap pixmap(2 * QSize(tip.x(), tip.y()) * carried.devicePixelRatio());
    pixmap.setDevicePixelRatio(carried.devicePixelRatio());
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.translate(tip);
    if (!carried.isNull())
        painter.drawPixmap(beside, carried);
    if (isVanishing) {
        painter.save();
        painter.translate(4, -4);
        paintCloud(painter, cloud(QSizeF(30, 28), 0));
        painter.restore();
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::white, 1.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::black);
    painter.drawPolygon(QPolygonF({{0, 0}, {0, 13}, {3, 10}, {5.2, 15}, {7.4, 14}, {5.2, 9.2}, {9.2, 9.2}}));
    painter.end();
    // A cursor's tip is told in pixels of the picture, whatever the screen's scale.
    pixmap.setDevicePixelRatio(1);
    return pixmap;
}

QCursor cursor()
{
    return QCursor(pointer(true));
}

void showAnimation(const QPointF &center, const QSize &size, QObject *owner, std::function<void()> ended)
{
    auto *puff = new Puff(center, size);
    auto *animation = new QVariantAnimation(puff);
    animation->setDuration(duration);
    animation->setStartValue(0.0);
    animation->setEndValue(1.0);
    QObject::connect(animation, &QVariantAnimation::valueChanged, puff,
                     [puff](const QVariant &progress) { puff->showProgress(progress.toReal()); });
    QObject::connect(animation, &QVariantAnimation::finished, puff,
                     [puff, owner = QPointer(owner), ended = std::move(ended)] {
                         puff->close();
                         if (owner && ended)
                             ended();
                     });
    puff->show();
    animation->start();
}

} // namespace DisappearingItem
