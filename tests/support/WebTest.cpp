#include "tests/support/WebTest.h"

#include "platform/ui/WebView.h"
#include "tests/support/Fixtures.h"

#include <QEventLoop>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWebEngineView>

namespace WebTest
{

QWebEngineView *engineView(const QWidget &view)
{
    return view.findChild<QWebEngineView *>();
}

bool waitFor(const std::function<bool()> &condition)
{
    return waitForAtMost(loadTimeout, condition);
}

bool waitForAtMost(int milliseconds, const std::function<bool()> &condition)
{
    constexpr int interval = 3; // milliseconds
    QEventLoop loop;
    QTimer look;
    QTimer end;
    end.setSingleShot(true);
    bool holds = condition();
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        holds = condition();
        if (holds)
            loop.quit();
    });
    QObject::connect(&end, &QTimer::timeout, &loop, &QEventLoop::quit);
    look.start(interval);
    end.start(milliseconds);
    if (!holds)
        loop.exec();
    return holds;
}

int load(WebView &view, const QUrl &url)
{
    QSignalSpy finished(&view, &WebView::loadFinished);
    view.loadPage(url);
    if (finished.isEmpty() && !finished.wait(loadTimeout))
        return -1;
    return finished.first().first().toBool() ? 1 : 0;
}

QVariant evaluate(const QWidget &view, const QString &script)
{
    auto answer = std::make_shared<std::optional<QVariant>>();
    engineView(view)->page()->runJavaScript(script, [answer](const QVariant &value) { *answer = value; });
    return waitFor([answer] { return answer->has_value(); }) ? **answer : QVariant();
}

bool click(const QWidget &view, const QString &selector)
{
    const QVariantList at
        = evaluate(view,
                   QStringLiteral("(() => { const r = document.querySelector('%1')?.getBoundingClientRect();"
                                  " return r ? [r.x + r.width / 2, r.y + r.height / 2] : [] })()")
                       .arg(selector))
              .toList();
    QWidget *target = engineView(view)->focusProxy();
    if (at.size() != 2 || !target)
        return false;
    QTest::mouseClick(target, Qt::LeftButton, {}, QPoint(at[0].toInt(), at[1].toInt()));
    return true;
}

void prepare()
{
    static const QTemporaryDir runtimeFolder; // made with mode 0700, as the engine wants it
    qputenv("XDG_RUNTIME_DIR", runtimeFolder.path().toLocal8Bit());
    if (!Fixtures::isOrdinaryUser())
        qputenv("QTWEBENGINE_DISABLE_SANDBOX", "1");
}

bool startEngine()
{
    WebView view;
    return load(view, QUrl(QStringLiteral("data:text/html,"))) >= 0;
}

} // namespace WebTest
