#include "platform/ui/WindowController.h"

#include "Classes/Mode/SelectedLanguage.h"
#include "platform/ui/ModalLoop.h"
#include "platform/ui/Nib.h"

#include <QCloseEvent>
#include <QDialog>
#include <QKeyEvent>
#include <QPushButton>
#include <QSignalBlocker>
#include <QThread>

namespace
{
constexpr const char *controllerProperty = "_linklist_windowController";

void haveNoDefaultButton(const QWidget *window)
{
    const QList<QPushButton *> buttons = window->findChildren<QPushButton *>();
    for (QPushButton *button : buttons) {
        button->setAutoDefault(false);
        button->setDefault(false);
    }
}
} // namespace

WindowController::WindowController(QObject *parent)
    : QObject(parent)
{
}

WindowController::~WindowController()
{
    if (!m_window)
        return;
    m_window->removeEventFilter(this);
    m_window->setProperty(controllerProperty, QVariant());
    // A field that is destroyed while it has the focus is asked about by assistive tools when it is half
    // gone.
    if (QWidget *focused = m_window->focusWidget()) {
        const QSignalBlocker silent(focused);
        focused->clearFocus();
    }
    m_window->hide();
    const bool hadLoop = ModalLoop::abortLoopsOf(m_window);
    // Inside the window's own close event its handler deletes it at the end; inside any other event the event
    // may be one of the window's own elements'.
    if (m_isClosing) {
        ModalLoop::abortLoopsAbove(m_depthAtClose);
        return;
    }
    if (hadLoop || QThread::currentThread()->loopLevel() > 0)
        m_window->deleteLater();
    else
        delete m_window;
}

bool WindowController::initWithResourceNibName(const QString &name)
{
    m_nibPath = SelectedLanguage::windowNibPath(name);
    return !m_nibPath.isEmpty();
}

QWidget *WindowController::window()
{
    if (!m_isLoaded) {
        m_isLoaded = true;
        load();
    }
    return m_window;
}

void WindowController::load()
{
    Nib nib = m_nibPath.isEmpty() ? Nib(QByteArray()) : Nib::fromFile(m_nibPath);
    m_window = nib.instantiate();
    m_loadError = nib.errorString();
    if (!m_window)
        return;
    m_window->setAttribute(Qt::WA_DeleteOnClose, false);
    m_window->installEventFilter(this);
    m_window->setProperty(controllerProperty, QVariant::fromValue<QObject *>(this));
    // accept(), reject() and done() hide a dialog without a close event.
    if (auto *dialog = qobject_cast<QDialog *>(m_window.data()))
        connect(dialog, &QDialog::finished, this, &WindowController::handleClose);
    awakeFromNib();
}

WindowController *WindowController::ofWindow(const QWidget *window)
{
    return window ? qobject_cast<WindowController *>(window->property(controllerProperty).value<QObject *>())
                  : nullptr;
}

void WindowController::showWindow()
{
    QWidget *shown = window();
    if (!shown)
        return;
    shown->setWindowState(shown->windowState() & ~Qt::WindowMinimized);
    shown->show();
    shown->raise();
    shown->activateWindow();
}

qint64 WindowController::runModal()
{
    return ModalLoop::runModalForWindow(window());
}

bool WindowController::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_window)
        return QObject::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::Close:
        event->setAccepted(!m_isClosing);
        handleClose();
        return true;
    case QEvent::KeyPress:
        // A dialog would close; whoever wants the key has had it by now.
        if (static_cast<QKeyEvent *>(event)->matches(QKeySequence::Cancel)) {
            event->ignore();
            return true;
        }
        return false;
    case QEvent::Show:
        // Now, and not while loading: a button box chooses its default button when it is shown.
        haveNoDefaultButton(m_window);
        return false;
    default:
        return false;
    }
}

void WindowController::handleClose()
{
    if (m_isClosing)
        return;
    m_isClosing = true;
    m_depthAtClose = ModalLoop::depth();
    const QPointer<WindowController> self(this);
    const QPointer<QWidget> closed(m_window);
    windowWillClose();
    if (self)
        m_isClosing = false;
    else if (closed)
        closed->deleteLater();
}
