#include "platform/ui/ModalLoop.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QGuiApplication>
#include <QPointer>
#include <QWidget>
#include <QWindow>
#include <vector>

namespace
{
// A window takes on a modality only while it is hidden. Blocking the others for a visible one without a
// flicker takes a second window that is modal in its place, outside every screen; its transient windows stay
// free.
bool canBlockFromOutside()
{
    return QGuiApplication::platformName() == QLatin1String("xcb")
        || QGuiApplication::platformName() == QLatin1String("offscreen");
}

// It takes part in nothing else: focus that it is given after a click on a blocked window is passed on.
class Blocker : public QWindow
{
public:
    explicit Blocker(QWidget *modal)
        : m_modal(modal)
    {
        setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::BypassWindowManagerHint);
        setGeometry(-10, -10, 1, 1);
        setModality(Qt::ApplicationModal);
    }

protected:
    void focusInEvent(QFocusEvent *) override
    {
        if (m_modal)
            m_modal->activateWindow();
    }

private:
    QPointer<QWidget> m_modal;
};

// Makes a window modal for as long as one lives, and shows it. It stands above the window that was active
// before. The toolkit may make the native window anew at any time, as for the first part of it that the
// graphics hardware draws, and forgets its modality then: both are told to every native window before it is
// shown.
class ScopedModality : public QObject
{
public:
    explicit ScopedModality(QWidget *window)
        : m_window(window)
        , m_previous(window->windowModality())
        , m_wasSet(window->testAttribute(Qt::WA_SetWindowModality))
    {
        if (!window->parentWidget() && !transientParent())
            m_parent = activeWindow();
        window->installEventFilter(this);
        if (!window->isVisible())
            set(Qt::ApplicationModal, true);
        else if (m_previous != Qt::ApplicationModal && canBlockFromOutside())
            blockOthers();
        else if (m_previous != Qt::ApplicationModal)
            setWhileHidden(Qt::ApplicationModal, true);
        tellHandle();
        window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
        window->show();
        window->raise();
        window->activateWindow();
    }

    ~ScopedModality() override
    {
        if (!m_window)
            return;
        m_window->removeEventFilter(this);
        if (m_parent && transientParent() == m_parent)
            m_window->windowHandle()->setTransientParent(m_previousParent);
        if (m_blocker)
            m_blocker->hide();
        else if (m_window->windowModality() != m_previous)
            setWhileHidden(m_previous, m_wasSet);
        else
            m_window->setAttribute(Qt::WA_SetWindowModality, m_wasSet);
    }
    Q_DISABLE_COPY_MOVE(ScopedModality)

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == m_window && event->type() == QEvent::WinIdChange)
            tellHandle();
        return false;
    }

private:
    QWindow *transientParent() const
    {
        const QWindow *handle = m_window->windowHandle();
        return handle ? handle->transientParent() : nullptr;
    }

    QWindow *activeWindow() const
    {
        QWindow *active = QGuiApplication::focusWindow();
        while (active && active->parent())
            active = active->parent();
        return active && active->isVisible() && active != m_window->windowHandle() ? active : nullptr;
    }

    void tellHandle()
    {
        QWindow *handle = m_window->windowHandle();
        if (!handle)
            return;
        handle->setModality(m_window->windowModality());
        if (m_parent)
            handle->setTransientParent(m_parent);
    }

    void set(Qt::WindowModality modality, bool isSet)
    {
        m_window->setWindowModality(modality);
        m_window->setAttribute(Qt::WA_SetWindowModality, isSet);
    }

    void setWhileHidden(Qt::WindowModality modality, bool isSet)
    {
        const bool wasVisible = m_window->isVisible();
        if (wasVisible)
            m_window->hide();
        set(modality, isSet);
        if (wasVisible)
            m_window->show();
    }

    // A window that is made anew meanwhile still has the blocker for its parent.
    void blockOthers()
    {
        m_previousParent = transientParent();
        m_blocker = std::make_unique<Blocker>(m_window);
        m_parent = m_blocker.get();
        m_blocker->show();
    }

    QPointer<QWidget> m_window;
    Qt::WindowModality m_previous;
    bool m_wasSet;
    std::unique_ptr<QWindow> m_blocker;
    QPointer<QWindow> m_parent; // above which the window stands meanwhile; null when nothing changes that
    QPointer<QWindow> m_previousParent;
};

bool belongsTo(const QWidget *widget, const QWidget *window)
{
    while (widget && widget != window)
        widget = widget->parentWidget();
    return widget;
}
} // namespace

struct ModalFrame {
    explicit ModalFrame(QWidget *forWindow)
        : window(forWindow)
        , modality(forWindow)
    {
        QObject::connect(forWindow, &QObject::destroyed, &loop, [this] { abort(); });
    }

    void stop(qint64 withCode)
    {
        if (isAborted)
            return;
        isStopped = true;
        code = withCode;
        loop.exit();
    }

    void abort()
    {
        stop(ModalLoop::abortCode);
        isAborted = true;
    }

    QPointer<QWidget> window;
    ScopedModality modality;
    QEventLoop loop;
    qint64 code = ModalLoop::abortCode;
    bool isStopped = false;
    bool isAborted = false;
};

namespace
{
using FramePointer = std::shared_ptr<ModalFrame>;

std::vector<FramePointer> &frames()
{
    static std::vector<FramePointer> list;
    return list;
}

FramePointer push(QWidget *window)
{
    auto frame = std::make_shared<ModalFrame>(window->window());
    frames().push_back(frame);
    return frame;
}

void remove(const FramePointer &frame)
{
    std::erase(frames(), frame);
}

// Waits until events have come and been handled; false when the application ends. Only a loop that is
// executed learns of that, so this is one, left at the first event that it sees.
class SinglePass : public QObject
{
public:
    bool run()
    {
        QCoreApplication::instance()->installEventFilter(this);
        return m_loop.exec() == passed;
    }

    bool eventFilter(QObject *, QEvent *) override
    {
        QCoreApplication::instance()->removeEventFilter(this);
        m_loop.exit(passed);
        return false;
    }

private:
    static constexpr int passed = 7043;
    QEventLoop m_loop;
};
} // namespace

qint64 ModalLoop::runModalForWindow(QWidget *window)
{
    if (!window)
        return abortCode;
    const FramePointer frame = push(window);
    if (!frame->isStopped)
        frame->loop.exec();
    remove(frame);
    return frame->code;
}

void ModalLoop::stopModalWithCode(qint64 code)
{
    if (isRunning())
        frames().back()->stop(code);
}

bool ModalLoop::abortLoopsOf(const QWidget *window)
{
    bool found = false;
    for (const FramePointer &frame : frames()) {
        if (window && belongsTo(frame->window, window)) {
            frame->abort();
            found = true;
        }
    }
    return found;
}

void ModalLoop::abortLoopsAbove(int depth)
{
    for (size_t i = size_t(depth); i < frames().size(); ++i)
        frames()[i]->abort();
}

int ModalLoop::depth()
{
    return int(frames().size());
}

bool ModalLoop::isRunning()
{
    return !frames().empty();
}

QWidget *ModalLoop::modalWindow()
{
    return isRunning() ? frames().back()->window.data() : nullptr;
}

void ModalSession::begin(QWidget *window)
{
    end();
    if (window)
        m_frame = push(window);
}

qint64 ModalSession::run()
{
    // Kept here: this session may be deleted by what it handles.
    const FramePointer frame = m_frame;
    if (!frame)
        return ModalLoop::abortCode;
    if (!frame->isStopped && !SinglePass().run())
        frame->abort();
    return frame->isStopped ? frame->code : continueCode;
}

void ModalSession::end()
{
    if (!m_frame)
        return;
    remove(m_frame);
    m_frame.reset();
}
