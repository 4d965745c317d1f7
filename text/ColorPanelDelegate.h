#pragma once

#include "text/ColorButtonCell.h"

#include <QColorDialog>
#include <QPointer>
#include <optional>

class QInputMethodEvent;
class QLineEdit;
class QMessageBox;
class QPushButton;

// The colour chooser: the process's one colour panel, with a hexadecimal field and the buttons "Choose" and
// "Cancel" in it (txtColorValue, btnColorChoose, btnColorCancel). A chooser has the panel from its making to
// its close and serves once; a later one finds the panel where the person left it. Whoever makes it runs a
// modal session for window() until isClosed(). The session is stopped with closeMode(), as if cancelled
// when the owner is destroyed meanwhile or another chooser takes the panel.
//
// The title bar's close asks first; Escape is "Cancel". Colours keep what was set or typed to the last bit:
// only one picked in the panel comes in steps of 1/255. For the main thread only.
class ColorPanelDelegate : public QObject
{
    Q_OBJECT

public:
    // Takes the panel.
    explicit ColorPanelDelegate(QObject *parent = nullptr);
    // Leaves the panel, and hides it if it was still open.
    ~ColorPanelDelegate() override;

    // The chooser that has the panel, null for none.
    static ColorPanelDelegate *delegate();

    // The panel; null once the application is gone.
    QColorDialog *colorPanel() const { return m_panel; }
    QWidget *window() const { return m_panel; }

    // The view that opened the chooser; neither owned nor kept. The panel stands above its window.
    QObject *ower() const { return m_ower; }
    void setOwer(QObject *ower);
    // The swatch being edited; neither owned nor kept.
    ColorButtonCell *cell() const { return m_cell; }
    void setCell(ColorButtonCell *cell) { m_cell = cell; }
    // The colour before editing.
    const std::optional<Color> &bkColor() const { return m_bkColor; }
    void setBkColor(const std::optional<Color> &color) { m_bkColor = color; }
    // The chosen colour. It follows the panel while that is open, whatever the outcome. Setting one shows it
    // in the panel too.
    const std::optional<Color> &color() const { return m_color; }
    void setColor(const std::optional<Color> &color);

    bool isClosed() const { return m_isClosed; }
    // 1 for chosen, 0 for cancelled.
    qint64 closeMode() const { return m_closeMode; }
    void setCloseMode(qint64 mode) { m_closeMode = mode; }

    QString title() const;
    void setTitle(const QString &title);
    bool isFloatingPanel() const;
    bool showsAlpha() const;
    // Always true from then on, whatever the argument says.
    void setFloatingPanel(bool floating);
    void setShowsAlpha(bool shows);

    // What is kept of a typed text: hexadecimal digits, and an "x" in second place. A dropped character uses
    // up its place; at most six places count, or eight with the "x".
    static QString keptText(const QString &typed);
    // The colour text for what was kept, filled up with zeros on the right: "f" means "0xf00000".
    static QString colorText(const QString &kept);

    void controlTextDidChange(QWidget *field);
    void onOK(QObject *sender = nullptr);
    void onCancel(QObject *sender = nullptr);

    // False, and the question comes up later, unless the outcome is decided.
    bool windowShouldClose();
    void windowWillClose();
    // Asks above the panel whether to change the colour (btnAlertFirst, btnAlertSecond).
    void alert2Save();
    // The first button's return code is 1000.
    void alertDidEnd(int returnCode);
    // 1 to choose the panel's colour, 0 to cancel.
    void endAlertProcess(qint64 answer);

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    // The panel shows another colour; color() is that colour already.
    void colorPanelDidChange(ColorPanelDelegate *chooser);

private:
    void addAccessoryView();
    void makeDefault(QPushButton *choose);
    void putIntoPanel(const Color &color);
    void panelDidChange();
    std::optional<Color> panelColor() const;
    void decide(qint64 mode);
    void leavePanel();
    void noteComposing(const QInputMethodEvent *event);

    QPointer<QColorDialog> m_panel;
    QPointer<QWidget> m_accessoryView;
    QPointer<QLineEdit> m_value;
    QPointer<QMessageBox> m_alert;
    QPointer<QObject> m_ower;
    QPointer<ColorButtonCell> m_cell;
    std::optional<Color> m_bkColor;
    std::optional<Color> m_color;
    // The colour last put into the panel, and what the panel made of it.
    std::optional<Color> m_exactColor;
    unsigned m_shownColor = 0;
    qint64 m_closeMode = 0;
    bool m_isClosed = false;
    bool m_isClick = false;
    bool m_isComposing = false;
};
