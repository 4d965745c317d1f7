#include "tests/support/TestCase.h"

#include <QRegularExpression>

void TestCase::init()
{
    // Said by the offscreen platform itself for every window with a size limit and every window put in front.
    static const QRegularExpression unexpected(
        QStringLiteral("^(?!This plugin does not support (propagateSizeHints|raise)\\(\\))"));
    QTest::failOnWarning(unexpected);
}
