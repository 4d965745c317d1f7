#pragma once

#include <QCoreApplication>
#include <QObject>
#include <QTest>
#include <QTimer>

// How long a test waits for what must come, in milliseconds; never spent when all is well. The five seconds
// that these take by themselves are short on a busy machine.
constexpr int waitLimit = 30'000;

#undef QTRY_VERIFY
#define QTRY_VERIFY(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, waitLimit)
#undef QTRY_COMPARE
#define QTRY_COMPARE(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, waitLimit)

// The base of every test class: a test function fails on any Qt warning that it did not announce with
// QTest::ignoreMessage and that is not on the short list of allowed ones in TestCase.cpp. Once a function has
// failed, its event loops end at once: an alert that nobody answers any more keeps no program waiting. A
// class with an init() of its own calls TestCase::init() first.
class TestCase : public QObject
{
    Q_OBJECT

protected Q_SLOTS:
    void init();

private:
    QTimer m_failureWatch;
    bool m_areLoopsEnded = false;
};

// main() of a test program without and with widgets. Widget tests run on the platform that QT_QPA_PLATFORM
// names.
#define LINKLIST_TEST_MAIN(TestClass)                                                                        \
    int main(int argc, char **argv)                                                                          \
    {                                                                                                        \
        QCoreApplication application(argc, argv);                                                            \
        TestClass test;                                                                                      \
        return QTest::qExec(&test, argc, argv);                                                              \
    }
#define LINKLIST_GUI_TEST_MAIN(TestClass)                                                                    \
    int main(int argc, char **argv)                                                                          \
    {                                                                                                        \
        QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);                                          \
        QApplication application(argc, argv);                                                                \
        TestClass test;                                                                                      \
        return QTest::qExec(&test, argc, argv);                                                              \
    }
