// A host with a window of its own for the end-to-end scripts: modalhost BUNDLE WORKSPACE GEOMETRY_FILE
// LOG_FILE shows an editor and a button that runs a modal session. The log says what reaches the host's
// window ("text ..." is all that stands in the editor, "click" a click on the button), which window the
// toolkit holds for modal whenever that changes ("modal PluginSettingsDelegateWindow", "modal none"), and how
// each session ended ("ended 0"). A file LOG_FILE.close makes the host close the session's window, where no
// window manager gives that a close box. It goes on until it is killed.
#include "host/GeometryReport.h"
#include "plugin/PluginSettingsInterface.h"

#include <QApplication>
#include <QFile>
#include <QPlainTextEdit>
#include <QPluginLoader>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>
#include <utility>

namespace
{

class Log
{
public:
    explicit Log(const QString &path)
        : m_file(path)
    {
        if (!m_file.open(QIODevice::WriteOnly | QIODevice::Append))
            qFatal("cannot write %s", qPrintable(path));
    }
    void say(const QString &what)
    {
        m_file.write(what.toUtf8() + '\n');
        m_file.flush();
    }

private:
    QFile m_file;
};

QString modalName()
{
    const QWindow *window = QGuiApplication::modalWindow();
    return window ? window->objectName() : QStringLiteral("none");
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 5)
        qFatal("modalhost BUNDLE WORKSPACE GEOMETRY_FILE LOG_FILE");
    const QString bundle = arguments[1];
    Log log(arguments[4]);

    QPluginLoader loader(bundle + QStringLiteral("/Contents/Linux/linklist.so"));
    auto *plugin = qobject_cast<PluginSettingsInterface *>(loader.instance());
    if (!plugin)
        qFatal("%s", qPrintable(loader.errorString()));

    QWidget window;
    window.setWindowTitle(QStringLiteral("Host"));
    auto *layout = new QVBoxLayout(&window);
    auto *editor = new QPlainTextEdit(&window);
    editor->setObjectName(QStringLiteral("hostEditor"));
    auto *button = new QPushButton(QStringLiteral("Settings"), &window);
    button->setObjectName(QStringLiteral("hostButton"));
    layout->addWidget(editor);
    layout->addWidget(button);
    QObject::connect(editor, &QPlainTextEdit::textChanged, editor, [editor, &log] {
        log.say(QStringLiteral("text ") + editor->toPlainText().replace(u'\n', u' '));
    });
    QPointer<QWidget> settings;
    QObject::connect(button, &QPushButton::clicked, &window, [&] {
        log.say(QStringLiteral("click"));
        const auto session = plugin->initWithLanguageCode(QStringLiteral("en"), bundle);
        session->setWorkSpace(arguments[2]);
        session->setModalMode(true);
        settings = session->window();
        new GeometryReport(session->window(), arguments[3]);
        log.say(QStringLiteral("ended %1").arg(session->runModal()));
    });

    QTimer look;
    QString modal = modalName();
    QObject::connect(&look, &QTimer::timeout, &look, [&] {
        const QString before = std::exchange(modal, modalName());
        if (modal != before)
            log.say(QStringLiteral("modal ") + modal);
        if (settings && QFile::remove(arguments[4] + QStringLiteral(".close")))
            settings->close();
    });
    look.start(10);

    new GeometryReport(&window, arguments[3]);
    window.setGeometry(20, 700, 500, 220); // a part of it stays in sight below the settings window
    window.show();
    return QApplication::exec();
}
