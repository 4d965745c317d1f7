#pragma once

#include <QTimer>

// A repeating timer bound to a mode of the application: the default mode rests while a modal loop of this
// module runs, the modal-panel mode lasts exactly as long as one. A tick that falls into the other mode is
// left out. An invalidated timer never fires again and cannot be started again.
class RunLoopTimer : public QObject
{
    Q_OBJECT

public:
    enum class Mode { Default, ModalPanel };

    RunLoopTimer(Mode mode, int intervalInMilliseconds, QObject *parent = nullptr);

    Mode mode() const { return m_mode; }
    // In milliseconds.
    int interval() const { return m_timer.interval(); }
    void start();
    void invalidate();
    bool isValid() const { return m_isValid; }

Q_SIGNALS:
    // The receiver may invalidate or delete the timer.
    void fired();

private:
    Mode m_mode;
    bool m_isValid = true;
    QTimer m_timer;
};
