// Another program's window for the end-to-end scripts: bystander X Y WIDTH HEIGHT FILE shows it there and
// writes a line to the file for itself ("shown"), for every click on it, and for every drop that it is
// offered.
#include <QApplication>
#include <QDragEnterEvent>
#include <QFile>
#include <QMimeData>
#include <QTimer>
#include <QWidget>
#include <utility>

class Bystander : public QWidget
{
public:
    explicit Bystander(const QString &path)
        : m_file(path)
    {
        if (!m_file.open(QIODevice::WriteOnly | QIODevice::Append))
            qFatal("cannot write %s", qPrintable(path));
        setAcceptDrops(true);
        setWindowTitle(QStringLiteral("Bystander"));
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        // After the first painting the window manager has placed the window.
        if (!std::exchange(m_isPainted, true))
            QTimer::singleShot(0, this, [this] { say("shown"); });
    }
    void mousePressEvent(QMouseEvent *) override { say("click"); }
    void dragEnterEvent(QDragEnterEvent *event) override
    {
        say("offered " + event->mimeData()->formats().join(u',').toUtf8());
        event->acceptProposedAction();
    }
    void dropEvent(QDropEvent *event) override
    {
        say("drop");
        event->acceptProposedAction();
    }

private:
    void say(const QByteArray &what)
    {
        m_file.write(what + '\n');
        m_file.flush();
    }

    QFile m_file;
    bool m_isPainted = false;
};

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 6)
        qFatal("bystander X Y WIDTH HEIGHT FILE");
    Bystander window(arguments[5]);
    window.setGeometry(arguments[1].toInt(), arguments[2].toInt(), arguments[3].toInt(),
                       arguments[4].toInt());
    window.show();
    return QApplication::exec();
}
