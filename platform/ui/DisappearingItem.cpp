#include "platform/ui/DisappearingItem.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QVariantAnimation>
#include <QWidget>
#include <array>

namespace
{

constexpr int duration = 400; // milliseconds

// A cloud of round balls in the unit square. From 0 to 1 it drifts apart while its balls shrink to nothing.
QPainterPath cloud(const QSizeF &size, qreal progress)
{
    struct Ball {
        qreal x, y, radius;
    };
    static constexpr std::array<Ball, 9> balls = {{{.50, .50, .20},
                                                   {.32, .42, .14},
                                                   {.66, .38, .15},
                                                   {.70, .60, .14},
                                                   {.36, .64, .15},
                                                   {.52, .28, .12},
                                                   {.53, .72, .12},
                                                   {.22, .56, .09},
                                                   {.80, .48, .09}}};
    const qreal spread = .55 + .45 * progress;
    const qreal growth = progress < .25 ? .7 + progress * 1.2 : 1 - (progress - .25) / .75;
    QPainterPath path;
    for (const Ball &ball : balls) {
        const QPointF center(.5 + (ball.x - .5) * spread, .5 + (ball.y - .5) * spread);
        QPainterPath circle;
        circle.addEllipse(QPointF(center.x() * size.width(), center.y() * size.height()),
                          ball.radius * growth * size.width(), ball.radius * growth * size.height());
        path = path.united(circle);
    }
    return path;
}

void paintCloud(QPainter &painter, const QPainterPath &path)
{
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient shade(path.boundingRect().topLeft(), path.boundingRect().bottomLeft());
    shade.setColorAt(0, QColor(252, 252, 252));
    shade.setColorAt(1, QColor(196, 200, 206));
    painter.setBrush(shade);
    painter.setPen(QPen(QColor(128, 132, 140), 1));
    painter.drawPath(path);
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
        QPainterPathStroker outline;
        outline.setWidth(1);
        const QPolygonF polygon = outline.createStroke(m_cloud).united(m_cloud).toFillPolygon();
        // An empty mask would be none.
        return QRegion(polygon.toPolygon()).united(QRect(rect().center(), QSize(1, 1)));
    }

    QPainterPath m_cloud;
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
        paintCloud(painter, cloud(QSizeF(32, 28), .3));
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
