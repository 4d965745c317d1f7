#include "tests/support/TestCase.h"

#include <QRegularExpression>

void TestCase::init()
{
    // Said by the offscreen platform itself for every window with a size limit and every window put in front
    // of others or behind them.
    static const QRegularExpression unexpected(
        QStringLiteral("^(?!This plugin does not support (propagateSizeHints|raise|lower)\\(\\))"));
    QTest::failOnWarning(unexpected);
}
