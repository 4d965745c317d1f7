#include "tests/support/TestCase.h"

#include <QEventLoop>
#include <QProcess>

// What every test class gets from its base, seen from outside: a program of failing functions ends by itself.

namespace
{

const char *const childSwitch = "--failing";

} // namespace

class Failing : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void loopsOfAFailureEnd()
    {
        QTimer::singleShot(0, this, [] {
            QTimer::singleShot(0, qApp, [] { QVERIFY2(false, "nobody ends the loops"); });
            QEventLoop().exec();
        });
        QEventLoop().exec();
        QEventLoop().exec();
    }
    void loopsOfTheNextFunctionRun()
    {
        QEventLoop loop;
        QTimer::singleShot(0, &loop, [&loop] { loop.exit(7); });
        QCOMPARE(loop.exec(), 7);
    }
    void unexpectedWarningFails() { qWarning("unexpected"); }
    void expectedWarningPasses()
    {
        QTest::ignoreMessage(QtWarningMsg, "expected");
        qWarning("expected");
    }
};

class tst_TestCase : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void failingProgramEndsWithItsVerdicts()
    {
        QProcess program;
        program.start(QCoreApplication::applicationFilePath(), {QLatin1String(childSwitch)});
        QVERIFY(program.waitForFinished(waitLimit));
        const QByteArray report = program.readAllStandardOutput();
        QCOMPARE(program.exitCode(), 2);
        for (const char *verdict :
             {"FAIL!  : Failing::loopsOfAFailureEnd() 'false' returned FALSE. (nobody ends the loops)",
              "PASS   : Failing::loopsOfTheNextFunctionRun()", "FAIL!  : Failing::unexpectedWarningFails()",
              "PASS   : Failing::expectedWarningPasses()"})
            QVERIFY2(report.contains(verdict), report);
    }
};

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (QCoreApplication::arguments().value(1) == QLatin1String(childSwitch)) {
        Failing test;
        return QTest::qExec(&test, {QString()});
    }
    tst_TestCase test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_TestCase.moc"
