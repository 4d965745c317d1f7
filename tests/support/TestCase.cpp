#include "tests/support/TestCase.h"

#include <QRegularExpression>

void TestCase::init()
{
    // Said by the offscreen platform itself for every window with a size limit.
    static const QRegularExpression unexpected(
        QStringLiteral("^(?!This plugin does not support propagateSizeHints\\(\\))"));
    QTest::failOnWarning(unexpected);
}
