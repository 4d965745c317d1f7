#pragma once

#include <QString>
#include <QVariant>
#include <functional>

class QUrl;
class QWebEngineView;
class QWidget;
class WebView;

// What tests with a real web engine share.
namespace WebTest
{

constexpr int loadTimeout = 20'000; // milliseconds

// The engine's own view inside of ours; null before its first load.
QWebEngineView *engineView(const QWidget &view);

// Runs the event loop until the condition holds, looking every few milliseconds; false when it never did. The
// engine does much of its work in small steps, which a loop that sleeps in between would draw out.
bool waitFor(const std::function<bool()> &condition);
bool waitForAtMost(int milliseconds, const std::function<bool()> &condition);

// Loads the page and waits for its end: 1 well, 0 failed, -1 no end at all.
int load(WebView &view, const QUrl &url);

// What the script gives in the page; an invalid value when there is no answer.
QVariant evaluate(const QWidget &view, const QString &script);

// Clicks with the mouse what the selector finds in the page of a shown view; false when there is nothing.
bool click(const QWidget &view, const QString &selector);

// Environment of a process that runs the engine: call it before the application object is made. It keeps a
// runtime folder for as long as the process lives.
void prepare();

// The engine says once per process which graphics it does without; that is no test's business. False when it
// did not answer.
bool startEngine();

} // namespace WebTest

#define LINKLIST_WEB_TEST_MAIN(TestClass)                                                                    \
    int main(int argc, char **argv)                                                                          \
    {                                                                                                        \
        WebTest::prepare();                                                                                  \
        QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);                                          \
        QApplication application(argc, argv);                                                                \
        if (!WebTest::startEngine())                                                                         \
            qWarning("The web engine did not answer its first load");                                        \
        TestClass test;                                                                                      \
        return QTest::qExec(&test, argc, argv);                                                              \
    }
