#include "platform/AsyncScope.h"
#include "tests/support/TestCase.h"

#include <QProcess>
#include <QThread>
#include <array>
#include <atomic>
#include <pthread.h>
#include <semaphore>
#include <thread>

// A semaphore orders what the threads do; nothing here waits for time to pass.
class tst_AsyncScope : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void callRunsOnAThreadOfItsOwn();
    void callsRunAtOnceOnDifferentThreads();
    void closingWaitsForTheCallInProgress();
    void closingKeepsBackCallsThatHaveNotBegun();
    void whatACallCarriesGoesWithIt();
    void nothingStartsOnceClosed();
    void closingTwiceIsClosingOnce();
    void emptyCallIsDropped();
    void threadThatCannotStartIsDropped();
    void receiverIsWholeDuringItsCalls();
    void manyCallsAndReceivers();
    void processEndsAfterItsLastThread();
};

namespace
{
// The standard's, which the thread sanitizer understands.
using Semaphore = std::counting_semaphore<>;
constexpr std::chrono::seconds patience{20}; // never spent when all is well

// Has work for a call to meet: a member that the call reads, and a scope that goes before it.
class Receiver
{
public:
    explicit Receiver(int value)
        : m_value(value)
    {
    }

    bool add(std::atomic<int> *sum)
    {
        return m_scope.spawn([this, sum] { *sum += m_value; });
    }

private:
    int m_value;
    AsyncScope m_scope;
};
} // namespace

void tst_AsyncScope::callRunsOnAThreadOfItsOwn()
{
    AsyncScope scope;
    Semaphore done{0};
    Qt::HANDLE thread = nullptr;
    QVERIFY(scope.spawn([&] {
        thread = QThread::currentThreadId();
        done.release();
    }));
    QVERIFY(done.try_acquire_for(patience));
    QVERIFY(thread && thread != QThread::currentThreadId());
}

void tst_AsyncScope::callsRunAtOnceOnDifferentThreads()
{
    Semaphore arrived{0};
    Semaphore leave{0};
    std::array<Qt::HANDLE, 3> threads{};
    AsyncScope scope;
    for (Qt::HANDLE &thread : threads) {
        QVERIFY(scope.spawn([&] {
            thread = QThread::currentThreadId();
            arrived.release();
            leave.acquire();
        }));
    }
    // All three are there before any may leave.
    for (size_t i = 0; i < threads.size(); ++i)
        QVERIFY(arrived.try_acquire_for(patience));
    QVERIFY(threads[0] != threads[1] && threads[1] != threads[2] && threads[0] != threads[2]);
    leave.release(3);
}

void tst_AsyncScope::closingWaitsForTheCallInProgress()
{
    AsyncScope scope;
    Semaphore begun{0};
    Semaphore finish{0};
    std::atomic<bool> isOver = false;
    QVERIFY(scope.spawn([&] {
        begun.release();
        finish.acquire();
        isOver = true;
    }));
    QVERIFY(begun.try_acquire_for(patience));
    bool wasOver = false;
    std::thread closer([&] {
        scope.close();
        wasOver = isOver;
    });
    // The call ends only when the close has begun.
    while (scope.spawn([] {}))
        std::this_thread::yield();
    finish.release();
    closer.join();
    QVERIFY(wasOver);
}

void tst_AsyncScope::closingKeepsBackCallsThatHaveNotBegun()
{
    // A thread takes longer to start than a scope to close: most of these calls come too late.
    constexpr size_t count = 200;
    std::array<std::atomic<bool>, count> isGone{};
    std::atomic<int> late = 0;
    const auto calls = std::make_shared<int>();
    for (std::atomic<bool> &gone : isGone) {
        AsyncScope scope;
        QVERIFY(scope.spawn([&late, &gone, calls] {
            if (gone)
                ++late;
        }));
        scope.close();
        gone = true;
    }
    QTRY_COMPARE(calls.use_count(), 1);
    QCOMPARE(late, 0);
}

void tst_AsyncScope::whatACallCarriesGoesWithIt()
{
    const auto carried = std::make_shared<int>();
    AsyncScope scope;
    Semaphore done{0};
    QVERIFY(scope.spawn([&done, carried] { done.release(); }));
    QVERIFY(done.try_acquire_for(patience));
    scope.close();
    QCOMPARE(carried.use_count(), 1);
}

void tst_AsyncScope::nothingStartsOnceClosed()
{
    AsyncScope scope;
    scope.close();
    std::atomic<bool> isCalled = false;
    QVERIFY(!scope.spawn([&] { isCalled = true; }));
    QVERIFY(!isCalled);
}

void tst_AsyncScope::closingTwiceIsClosingOnce()
{
    AsyncScope scope;
    Semaphore done{0};
    QVERIFY(scope.spawn([&] { done.release(); }));
    QVERIFY(done.try_acquire_for(patience));
    scope.close();
    scope.close();
    QVERIFY(!scope.spawn([] {}));
}

void tst_AsyncScope::emptyCallIsDropped()
{
    AsyncScope scope;
    QVERIFY(!scope.spawn({}));
}

void tst_AsyncScope::threadThatCannotStartIsDropped()
{
    // No machine has room for a stack of that size.
    pthread_attr_t before;
    pthread_attr_t huge;
    QCOMPARE(pthread_getattr_default_np(&before), 0);
    QCOMPARE(pthread_getattr_default_np(&huge), 0);
    QCOMPARE(pthread_attr_setstacksize(&huge, size_t(1) << 46), 0);
    QCOMPARE(pthread_setattr_default_np(&huge), 0);
    std::atomic<bool> isCalled = false;
    bool isStarted = true;
    {
        AsyncScope scope;
        isStarted = scope.spawn([&] { isCalled = true; });
    }
    QCOMPARE(pthread_setattr_default_np(&before), 0);
    QVERIFY(!isStarted);
    QVERIFY(!isCalled);
    AsyncScope scope;
    Semaphore done{0};
    QVERIFY(scope.spawn([&] { done.release(); }));
    QVERIFY(done.try_acquire_for(patience));
}

void tst_AsyncScope::receiverIsWholeDuringItsCalls()
{
    std::atomic<int> sum = 0;
    int started = 0;
    for (int i = 0; i < 200; ++i) {
        Receiver receiver(1);
        started += receiver.add(&sum) ? 1 : 0;
    }
    QCOMPARE(started, 200);
    // Each call met its receiver whole or not at all, and none comes when all receivers have gone.
    const int met = sum;
    Receiver last(1);
    QVERIFY(last.add(&sum));
    QTRY_COMPARE(sum.load(), met + 1);
}

void tst_AsyncScope::manyCallsAndReceivers()
{
    std::atomic<int> sum = 0;
    Semaphore done{0};
    std::array<AsyncScope, 20> scopes;
    for (int call = 0; call < 10; ++call) {
        for (AsyncScope &scope : scopes) {
            QVERIFY(scope.spawn([&] {
                ++sum;
                done.release();
            }));
        }
    }
    for (int i = 0; i < 200; ++i)
        QVERIFY(done.try_acquire_for(patience));
    QCOMPARE(sum, 200);
}

// The program below leaks its receiver and returns from main() while the receiver's call is running.
void tst_AsyncScope::processEndsAfterItsLastThread()
{
    QProcess program;
    program.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--leave-a-call-behind")});
    QVERIFY(program.waitForFinished(20'000));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
    QCOMPARE(program.readAllStandardError(), QByteArray());
    const QByteArray output = program.readAllStandardOutput();
    QVERIFY(output.startsWith("main is over\n"));
    QVERIFY2(output.endsWith("the call is over\nall is over\n"), output.right(100).constData());
}

namespace
{
// Made before the first call, it goes after the threads that calls run on.
struct LastWord {
    ~LastWord()
    {
        std::puts("all is over");
        std::fflush(stdout);
    }
};

int leaveACallBehind()
{
    static const LastWord lastWord;
    static Semaphore mainIsOver{0};
    static AsyncScope &leaked = *new AsyncScope;
    const bool isStarted = leaked.spawn([] {
        mainIsOver.acquire();
        for (int i = 0; i < 20'000; ++i)
            std::puts("still at it");
        std::puts("the call is over");
        std::fflush(stdout);
    });
    std::puts("main is over");
    std::fflush(stdout);
    // What is registered last runs first, before the threads are joined.
    std::atexit([] { mainIsOver.release(); });
    return isStarted ? 0 : 1;
}
} // namespace

int main(int argc, char **argv)
{
    if (argc == 2 && QByteArray(argv[1]) == "--leave-a-call-behind")
        return leaveACallBehind();
    QCoreApplication application(argc, argv);
    tst_AsyncScope test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_AsyncScope.moc"
