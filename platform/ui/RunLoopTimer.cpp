#include "platform/ui/RunLoopTimer.h"

#include "platform/ui/ModalLoop.h"

RunLoopTimer::RunLoopTimer(Mode mode, int intervalInMilliseconds, QObject *parent)
    : QObject(parent)
    , m_mode(mode)
{
    m_timer.setInterval(intervalInMilliseconds);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        if (ModalLoop::isRunning() == (m_mode == Mode::ModalPanel))
            Q_EMIT fired();
    });
}

void RunLoopTimer::start()
{
    if (m_isValid)
        m_timer.start();
}

void RunLoopTimer::invalidate()
{
    m_isValid = false;
    m_timer.stop();
}
