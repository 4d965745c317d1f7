#pragma once

#include <QCoreApplication>
#include <QObject>
#include <QTest>

// The base of every test class: a test function fails on any Qt warning that it did not announce with
// QTest::ignoreMessage and that is not on the short list of allowed ones in TestCase.cpp. A class with an
// init() of its own calls TestCase::init() first.
class TestCase : public QObject
{
    Q_OBJECT

protected Q_SLOTS:
    void init();
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
