#include "tests/support/TestCase.h"

#include <QRegularExpression>

void TestCase::init()
{
    // Said by the offscreen platform itself for every window with a size limit and every window put in front
    // of others or behind them; and by some versions of the web engine's own error page.
    static const QRegularExpression unexpected(
        QStringLiteral("^(?!This plugin does not support (propagateSizeHints|raise|lower)\\(\\)"
                       "|.*non-JS module files deprecated)"));
    QTest::failOnWarning(unexpected);
}
