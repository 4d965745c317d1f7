#pragma once

#include <QWidget>
#include <memory>

struct ModalFrame;

// Modal windows of this module: a window is shown above the whole application, and the caller waits for the
// code with which somebody stops the loop. Loops nest, as for a question inside a modal window. Host loops
// are never touched. Everything that the caller owns may be deleted while a loop runs, the window included.
// For the main thread only.
class ModalLoop
{
public:
    // Answered when the window is destroyed or the application quits before anybody gave a code.
    static constexpr qint64 abortCode = -1001;

    // Shows the window and waits. The window's own modality is back afterwards. Closing the window does not
    // end the loop: whoever hears of the close gives the code.
    static qint64 runModalForWindow(QWidget *window);

    // Stops this module's innermost loop as soon as control returns to it; without a loop nothing happens.
    static void stopModalWithCode(qint64 code);

    // Stops every loop of that window and of the dialogs that belong to it with the abort code; true when
    // there was one.
    static bool abortLoopsOf(const QWidget *window);

    // Stops with the abort code all loops but that many outermost ones.
    static void abortLoopsAbove(int depth);

    // How many loops and sessions have begun and not ended.
    static int depth();

    // True from the start of a loop or session to its end.
    static bool isRunning();

    // The window of the innermost loop, null for none.
    static QWidget *modalWindow();
};

// A modal loop whose caller keeps control between events: begin(), then run() for as long as it answers
// continueCode, then end(). The session ends with its object, which may be deleted inside its own run().
class ModalSession
{
public:
    static constexpr qint64 continueCode = -1002;

    ModalSession() = default;
    ~ModalSession() { end(); }
    Q_DISABLE_COPY_MOVE(ModalSession)

    // Shows the window. A session that had begun ends first.
    void begin(QWidget *window);

    // Waits for events, handles them, and answers continueCode or the code with which the session was
    // stopped. Without a session that is the abort code.
    qint64 run();

    // Leaves the window as it is, shown or not.
    void end();

private:
    std::shared_ptr<ModalFrame> m_frame;
};
