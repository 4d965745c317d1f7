#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

// Owns a window that an interface file describes, loads it when it is first asked for, and hears of every
// close. The window is a plain one: Escape never closes it, no button in it is the default, and a closed
// window can be shown again. The controller may be deleted at any time, inside windowWillClose() and inside
// a modal loop too: the loop then answers the abort code, and code after a nested question must look
// whether its controller is still there.
class WindowController : public QObject
{
    Q_OBJECT

public:
    explicit WindowController(QObject *parent = nullptr);
    ~WindowController() override;

    // Finds the interface file of that name in the language's folder of the default bundle; false when there
    // is none anywhere. Nothing is loaded yet.
    bool initWithResourceNibName(const QString &name);

    // Loads the window on the first call; null when that failed, then and ever after.
    QWidget *window();
    bool isWindowLoaded() const { return m_window; }
    // Why there is no window; empty when there is one or none was asked for.
    QString loadError() const { return m_loadError; }

    void showWindow();

    // The controller of that window; null when it has none.
    static WindowController *ofWindow(const QWidget *window);

    // Shows the window above the application and answers the code with which the loop was stopped, or
    // ModalLoop::abortCode without a window.
    qint64 runModal();

    // The window's element of that name, null when there is none or it is of another class.
    template <typename T>
    T *outlet(const char *name) const
    {
        return m_window ? m_window->findChild<T *>(QString::fromLatin1(name)) : nullptr;
    }

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    // Called once, when the window has been loaded and nothing shown yet.
    virtual void awakeFromNib() { }

    // Called at every close, whatever its cause and whether or not the window is visible; it cannot be
    // refused. Another close that arrives meanwhile is dropped.
    virtual void windowWillClose() { }

private:
    void load();
    void handleClose();

    QString m_nibPath;
    QString m_loadError;
    QPointer<QWidget> m_window;
    bool m_isLoaded = false;
    bool m_isClosing = false;
    // How many modal loops ran when the close began: those above are its own questions.
    int m_depthAtClose = 0;
};
