// e2e_watch X Y WIDTH HEIGHT [PICTURE]
// Looks at that part of the screen as often as it can until it is told to end (SIGTERM). Prints "MILLISECONDS
// changed" or "MILLISECONDS blank" with the time since 1970 whenever the picture is another one, blank
// meaning that it has one colour, and at last "N pictures, M of them blank". The first blank one is kept as
// PICTURE.
#include <QDateTime>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QTimer>
#include <csignal>
#include <cstdio>

static volatile std::sig_atomic_t isOver = 0;

static bool isBlank(const QImage &picture)
{
    QImage plain(picture.size(), picture.format());
    plain.fill(picture.pixelColor(picture.width() / 2, picture.height() / 2));
    return picture == plain;
}

int main(int argc, char **argv)
{
    std::signal(SIGTERM, [](int) { isOver = 1; });
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() < 5)
        return 2;
    const QRect part(arguments[1].toInt(), arguments[2].toInt(), arguments[3].toInt(), arguments[4].toInt());
    QImage last;
    int pictures = 0;
    int blank = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &application, [&] {
        if (isOver)
            QGuiApplication::quit();
        const QImage picture = QGuiApplication::primaryScreen()
                                   ->grabWindow(0, part.x(), part.y(), part.width(), part.height())
                                   .toImage();
        ++pictures;
        if (picture == last)
            return;
        last = picture;
        const bool showsNothing = isBlank(picture);
        if (showsNothing && ++blank == 1 && arguments.size() > 5)
            picture.save(arguments[5]);
        std::printf("%lld %s\n", QDateTime::currentMSecsSinceEpoch(), showsNothing ? "blank" : "changed");
        std::fflush(stdout);
    });
    timer.start(15); // about as often as a screen shows one
    const int status = QGuiApplication::exec();
    std::printf("%d pictures, %d of them blank\n", pictures, blank);
    return status;
}
