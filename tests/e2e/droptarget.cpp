// A window with a button all over it and a drop target for pictures above, for dropfiles.sh. It writes to
// standard output, line by line: "window X Y WIDTH HEIGHT" in the screen's points whenever it has moved,
// "clicked", "highlight 1" and "highlight 0", and for each drop "dropped" followed by its paths,
// percent-encoded and separated by blanks.
#include "Classes/Delegate/DragDrop/DragFileImport.h"
#include "platform/NotificationCenter.h"

#include <QApplication>
#include <QPushButton>
#include <QTimer>
#include <QUrl>
#include <cstdio>

namespace
{
void say(const QByteArray &line)
{
    std::puts(line.constData());
    std::fflush(stdout);
}

// Tells when the frame appears and goes.
class Target : public DragFileImport
{
public:
    using DragFileImport::DragFileImport;

protected:
    void paintEvent(QPaintEvent *event) override
    {
        DragFileImport::paintEvent(event);
        if (m_wasHighlighted != highlight())
            say("highlight " + QByteArray::number(int(highlight())));
        m_wasHighlighted = highlight();
    }

private:
    bool m_wasHighlighted = false;
};
} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QPushButton button(QStringLiteral("Beneath"));
    button.setWindowTitle(QStringLiteral("droptarget"));
    button.setGeometry(600, 100, 300, 200);
    QObject::connect(&button, &QPushButton::clicked, &button, [] { say("clicked"); });
    Target target(button.rect(), &button);
    target.setFilters({QStringLiteral("jpg"), QStringLiteral("png")});
    target.setAllowDirectory(true);
    NotificationCenter::defaultCenter().addObserver(&target, DragReportNotification, [&](QObject *) {
        QByteArray line("dropped");
        const QStringList paths = target.dragResult();
        for (const QString &path : paths)
            line += ' ' + QUrl::toPercentEncoding(path, "/");
        say(line);
    });
    button.show();
    QRect last;
    QTimer timer;
    timer.callOnTimeout(&button, [&] {
        const QRect place(button.mapToGlobal(QPoint(0, 0)), button.size());
        if (place != last)
            say(QByteArray("window ") + QByteArray::number(place.x()) + ' ' + QByteArray::number(place.y())
                + ' ' + QByteArray::number(place.width()) + ' ' + QByteArray::number(place.height()));
        last = place;
    });
    timer.start(100);
    return QApplication::exec();
}
