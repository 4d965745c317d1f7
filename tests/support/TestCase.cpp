#include "tests/support/TestCase.h"

#include <QRegularExpression>
#include <utility>

void TestCase::init()
{
    // Said by the offscreen platform itself for every window with a size limit and every window put in front
    // of others or behind them; and by some versions of the web engine's own error page.
    static const QRegularExpression unexpected(
        QStringLiteral("^(?!This plugin does not support (propagateSizeHints|raise|lower)\\(\\)"
                       "|.*non-JS module files deprecated)"));
    QTest::failOnWarning(unexpected);

    if (std::exchange(m_areLoopsEnded, false)) {
        // Others run again only once the application's own has.
        QTimer::singleShot(0, this, [] { QCoreApplication::exit(); });
        QCoreApplication::exec();
    }
    if (!m_failureWatch.isActive()) {
        m_failureWatch.callOnTimeout(this, [this] {
            if (!QTest::currentTestFailed())
                return;
            m_areLoopsEnded = true;
            QCoreApplication::exit();
        });
        m_failureWatch.start(100);
    }
}
