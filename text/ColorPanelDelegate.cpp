#include "text/ColorPanelDelegate.h"

#include "Classes/Mode/Locale.h"
#include "platform/ui/Field.h"
#include "platform/ui/ModalLoop.h"
#include "platform/ui/WindowLevel.h"

#include <QBoxLayout>
#include <QCoreApplication>
#include <QHash>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QScreen>
#include <QSignalBlocker>
#include <QWindow>
#include <algorithm>

namespace
{

constexpr int alertFirstButtonReturn = 1000;
constexpr int alertSecondButtonReturn = 1001;

QPointer<QColorDialog> &panelOfProcess()
{
    static QPointer<QColorDialog> panel;
    return panel;
}

QPointer<ColorPanelDelegate> &panelDelegate()
{
    static QPointer<ColorPanelDelegate> delegate;
    return delegate;
}

// Without a translation of Qt's own in the host, the panel's texts would stay English beside ours.
void translateTexts(QColorDialog *panel)
{
    const QHash<QString, QString> texts = {
        {QStringLiteral("&Basic colors"), loadAppString(QStringLiteral("&Basic colors"), {})},
        {QStringLiteral("&Custom colors"), loadAppString(QStringLiteral("&Custom colors"), {})},
        {QStringLiteral("&Add to Custom Colors"), loadAppString(QStringLiteral("&Add to Custom Colors"), {})},
        {QStringLiteral("&Pick Screen Color"), loadAppString(QStringLiteral("&Pick Screen Color"), {})},
        {QStringLiteral("Hu&e:"), loadAppString(QStringLiteral("Hu&e:"), {})},
        {QStringLiteral("&Sat:"), loadAppString(QStringLiteral("&Sat:"), {})},
        {QStringLiteral("&Val:"), loadAppString(QStringLiteral("&Val:"), {})},
        {QStringLiteral("&Red:"), loadAppString(QStringLiteral("&Red:"), {})},
        {QStringLiteral("&Green:"), loadAppString(QStringLiteral("&Green:"), {})},
        {QStringLiteral("Bl&ue:"), loadAppString(QStringLiteral("Bl&ue:"), {})},
        {QStringLiteral("A&lpha channel:"), loadAppString(QStringLiteral("A&lpha channel:"), {})},
    };
    const auto translate = [&texts](auto *element) {
        if (const QString text = texts.value(element->text()); !text.isEmpty())
            element->setText(text);
    };
    const QList<QLabel *> labels = panel->findChildren<QLabel *>();
    std::for_each(labels.begin(), labels.end(), translate);
    const QList<QPushButton *> buttons = panel->findChildren<QPushButton *>();
    std::for_each(buttons.begin(), buttons.end(), translate);
}

// Made when it is first needed; it goes when the application begins to go, while windows still can.
QColorDialog *sharedPanel()
{
    QPointer<QColorDialog> &panel = panelOfProcess();
    if (panel)
        return panel;
    panel = new QColorDialog;
    panel->setOptions(QColorDialog::DontUseNativeDialog | QColorDialog::NoButtons);
    // The panel is a tool of the host's: its close is no reason to end the program.
    panel->setAttribute(Qt::WA_QuitOnClose, false);
    panel->setWindowTitle(loadAppString(QStringLiteral("Color"), QStringLiteral("Color")));
    translateTexts(panel);
    WindowLevel::set(panel, WindowLevel::Level::Floating);
    WindowLevel::setOnAllWorkspaces(panel);
    qAddPostRoutine([] { delete panelOfProcess(); });
    return panel;
}

QPushButton *makeButton(QWidget *parent, const char *name, const QString &title)
{
    auto *button = new QPushButton(title, parent);
    button->setObjectName(QLatin1String(name));
    button->setMinimumSize(77, 28);
    return button;
}

bool isHexDigit(QChar c)
{
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

QColor shown(const Color &color)
{
    QColor result = QColor::fromRgb(MyColorOper::colorToHexRGB(color).mid(2).toUInt(nullptr, 16));
    result.setAlpha(color.isConvertible() ? qRound(std::clamp(color.alpha, 0.0, 1.0) * 255) : 255);
    return result;
}

Color picked(const QColor &color)
{
    const auto component = [](int byte) { return double(float(byte) / 255.0F); };
    return {component(color.red()), component(color.green()), component(color.blue()),
            component(color.alpha())};
}

// Beside the window, so that the swatch stays in sight, if there is room on its screen, and else above it.
QPoint placeBeside(const QWidget *window, const QSize &size)
{
    constexpr int gap = 12;
    const QRect screen = window->screen()->availableGeometry();
    const QRect frame = window->frameGeometry();
    int x = frame.center().x() - size.width() / 2;
    if (frame.right() + gap + size.width() <= screen.right())
        x = frame.right() + gap;
    else if (frame.left() - gap - size.width() >= screen.left())
        x = frame.left() - gap - size.width();
    const int y = frame.center().y() - size.height() / 2;
    const auto within = [](int value, int low, int high) { return std::max(low, std::min(value, high)); };
    return {within(x, screen.left(), screen.right() - size.width()),
            within(y, screen.top(), screen.bottom() - size.height())};
}

} // namespace

ColorPanelDelegate::ColorPanelDelegate(QObject *parent)
    : QObject(parent)
    , m_panel(sharedPanel())
{
    // Whoever has the panel would wait for it for ever.
    if (ColorPanelDelegate *previous = delegate())
        previous->onCancel();
    panelDelegate() = this;
    m_panel->setLayoutDirection(loadedTableDirection());
    addAccessoryView();
    m_panel->installEventFilter(this);
    connect(m_panel, &QColorDialog::currentColorChanged, this, &ColorPanelDelegate::panelDidChange);
    // Hidden without a close: as good as cancelled.
    connect(m_panel, &QDialog::finished, this, [this] { onCancel(); });
}

ColorPanelDelegate::~ColorPanelDelegate()
{
    if (m_isClosed)
        return;
    leavePanel();
    if (m_panel)
        m_panel->hide();
}

ColorPanelDelegate *ColorPanelDelegate::delegate()
{
    return panelDelegate();
}

void ColorPanelDelegate::addAccessoryView()
{
    m_accessoryView = new QWidget(m_panel);
    m_accessoryView->setMinimumSize(160, 56);

    auto *label = new QLabel(loadAppString(QStringLiteral("ColorPanelC-Value:"), QStringLiteral("Value:")),
                             m_accessoryView);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setMinimumSize(60, 24);

    m_value = new QLineEdit(m_accessoryView);
    m_value->setObjectName(QStringLiteral("txtColorValue"));
    m_value->setMinimumSize(98, 22);
    m_value->setAttribute(Qt::WA_MacShowFocusRect, false);
    m_value->setToolTip(loadAppString(QStringLiteral("ColorPanelC-input hexadecimal(0~9,A~F)"),
                                      QStringLiteral("input hexadecimal(0~9,A~F)")));
    m_value->setPlaceholderText(QStringLiteral("0x??????"));
    m_value->installEventFilter(this);
    Field::onTextChange(m_value, this, [this](QLineEdit *field) { controlTextDidChange(field); });
    label->setBuddy(m_value);

    QPushButton *choose
        = makeButton(m_accessoryView, "btnColorChoose",
                     loadAppString(QStringLiteral("ColorPanelC-Choose"), QStringLiteral("Choose")));
    QPushButton *cancel
        = makeButton(m_accessoryView, "btnColorCancel",
                     loadAppString(QStringLiteral("ColorPanelC-Cancel"), QStringLiteral("Cancel")));
    connect(choose, &QPushButton::clicked, this, [this, choose] { onOK(choose); });
    connect(cancel, &QPushButton::clicked, this, [this, cancel] { onCancel(cancel); });

    auto *rows = new QVBoxLayout(m_accessoryView);
    rows->setContentsMargins(0, 0, 0, 2);
    rows->setSpacing(4);
    auto *valueRow = new QHBoxLayout;
    valueRow->setSpacing(6);
    valueRow->addWidget(label);
    valueRow->addWidget(m_value, 1);
    rows->addLayout(valueRow);
    auto *buttonRow = new QHBoxLayout;
    buttonRow->setSpacing(6);
    buttonRow->addWidget(cancel, 1);
    buttonRow->addWidget(choose, 1);
    rows->addLayout(buttonRow);

    auto *panelLayout = static_cast<QBoxLayout *>(m_panel->layout());
    panelLayout->insertWidget(panelLayout->count() - 1, m_accessoryView, 0, Qt::AlignTrailing);
    makeDefault(choose);
    // Return on the button that has the keyboard presses that one.
    cancel->setAutoDefault(true);
    m_value->setFocus();
}

void ColorPanelDelegate::makeDefault(QPushButton *choose)
{
    const QList<QPushButton *> buttons = m_panel->findChildren<QPushButton *>();
    for (QPushButton *button : buttons)
        button->setAutoDefault(false);
    choose->setDefault(true);
}

void ColorPanelDelegate::setOwer(QObject *ower)
{
    if (m_ower)
        disconnect(m_ower, nullptr, this, nullptr);
    m_ower = ower;
    if (!ower || m_isClosed || !m_panel)
        return;
    connect(ower, &QObject::destroyed, this, [this] { onCancel(); });
    const auto *view = qobject_cast<QWidget *>(ower);
    if (!view)
        return;
    // The layout gives the panel its size for the accessory view.
    m_panel->adjustSize();
    if (!m_panel->testAttribute(Qt::WA_Moved))
        m_panel->move(placeBeside(view->window(), m_panel->size()));
    m_panel->winId();
    m_panel->windowHandle()->setTransientParent(view->window()->windowHandle());
}

void ColorPanelDelegate::setColor(const std::optional<Color> &color)
{
    m_color = color;
    if (color)
        putIntoPanel(*color);
}

void ColorPanelDelegate::putIntoPanel(const Color &color)
{
    if (m_isClosed || !m_panel)
        return;
    {
        // Told once, and with the colour as it was given.
        const QSignalBlocker silent(m_panel);
        const QPointer<QWidget> focused(m_panel->focusWidget());
        m_panel->setCurrentColor(shown(color));
        // The dialog gives the focus to its own swatch of that colour: the next character would be typed
        // there.
        if (focused && m_panel->focusWidget() != focused)
            focused->setFocus(Qt::OtherFocusReason);
    }
    m_exactColor = color;
    m_shownColor = m_panel->currentColor().rgba();
    panelDidChange();
}

std::optional<Color> ColorPanelDelegate::panelColor() const
{
    if (!m_panel)
        return m_color;
    const QColor current = m_panel->currentColor();
    return m_exactColor && current.rgba() == m_shownColor ? *m_exactColor : picked(current);
}

void ColorPanelDelegate::panelDidChange()
{
    m_color = panelColor();
    Q_EMIT colorPanelDidChange(this);
}

QString ColorPanelDelegate::title() const
{
    return m_panel ? m_panel->windowTitle() : QString();
}

void ColorPanelDelegate::setTitle(const QString &title)
{
    if (m_panel)
        m_panel->setWindowTitle(title);
}

bool ColorPanelDelegate::isFloatingPanel() const
{
    return m_panel && WindowLevel::of(m_panel) == WindowLevel::Level::Floating;
}

void ColorPanelDelegate::setFloatingPanel(bool)
{
    WindowLevel::set(m_panel, WindowLevel::Level::Floating);
}

bool ColorPanelDelegate::showsAlpha() const
{
    return m_panel && m_panel->testOption(QColorDialog::ShowAlphaChannel);
}

void ColorPanelDelegate::setShowsAlpha(bool)
{
    if (m_panel)
        m_panel->setOption(QColorDialog::ShowAlphaChannel);
}

QString ColorPanelDelegate::keptText(const QString &typed)
{
    QString kept;
    bool isPrefixed = false;
    for (qsizetype i = 0; i < typed.size() && i < (isPrefixed ? 8 : 6); ++i) {
        const QChar c = typed[i];
        const bool isPrefix = i == 1 && (c == u'x' || c == u'X');
        if (isPrefix || isHexDigit(c))
            kept += c;
        isPrefixed = isPrefixed || isPrefix;
    }
    return kept;
}

QString ColorPanelDelegate::colorText(const QString &kept)
{
    const QString prefix = QStringLiteral("0x");
    QString text = kept.toLower() + QStringLiteral("0000000");
    if (!text.startsWith(prefix))
        text.prepend(prefix);
    return text.left(8);
}

void ColorPanelDelegate::controlTextDidChange(QWidget *field)
{
    auto *value = qobject_cast<QLineEdit *>(field);
    if (m_isClosed || !value || !m_panel || value->window() != m_panel)
        return;
    const QString typed = value->text();
    const QString kept = keptText(typed);
    if (!m_isComposing && kept != typed) {
        // The caret stays behind the character that it stood behind.
        const qsizetype caret = keptText(typed.left(value->cursorPosition())).size();
        Field::putText(value, kept);
        value->setCursorPosition(int(caret));
    }
    putIntoPanel(MyColorOper::colorFromHexRGB(colorText(kept)));
}

void ColorPanelDelegate::decide(qint64 mode)
{
    if (m_isClosed)
        return;
    m_isClick = true;
    m_closeMode = mode;
    if (mode == 1)
        m_color = panelColor();
    windowWillClose();
}

void ColorPanelDelegate::onOK(QObject *)
{
    decide(1);
}

void ColorPanelDelegate::onCancel(QObject *)
{
    decide(0);
}

bool ColorPanelDelegate::windowShouldClose()
{
    if (m_isClick)
        return true;
    QMetaObject::invokeMethod(this, &ColorPanelDelegate::alert2Save, Qt::QueuedConnection);
    return false;
}

void ColorPanelDelegate::windowWillClose()
{
    if (m_isClosed)
        return;
    m_isClosed = true;
    leavePanel();
    if (!m_panel)
        return;
    const qint64 mode = m_closeMode;
    if (m_panel->windowModality() == Qt::WindowModal) {
        static_cast<QDialog *>(m_panel)->done(int(mode));
        return;
    }
    m_panel->hide();
    // A loop of somebody else's goes on.
    if (ModalLoop::modalWindow() == m_panel)
        ModalLoop::stopModalWithCode(mode);
}

void ColorPanelDelegate::leavePanel()
{
    if (panelDelegate() == this)
        panelDelegate() = nullptr;
    if (m_ower)
        disconnect(m_ower, nullptr, this, nullptr);
    if (m_alert) {
        m_alert->disconnect(this);
        m_alert->hide();
        m_alert->deleteLater();
    }
    if (m_accessoryView) {
        // One of its buttons may be what is closing the panel.
        m_accessoryView->hide();
        m_accessoryView->setParent(nullptr);
        m_accessoryView->deleteLater();
    }
    if (!m_panel)
        return;
    m_panel->disconnect(this);
    m_panel->removeEventFilter(this);
    if (QWindow *handle = m_panel->windowHandle())
        handle->setTransientParent(nullptr);
}

void ColorPanelDelegate::alert2Save()
{
    if (m_isClosed || m_alert || !m_panel)
        return;
    m_alert = new QMessageBox(m_panel);
    m_alert->setAttribute(Qt::WA_DeleteOnClose);
    m_alert->setWindowTitle(title());
    m_alert->setIcon(QMessageBox::Warning);
    m_alert->setTextFormat(Qt::PlainText);
    m_alert->setText(
        loadAppString(QStringLiteral("ColorPanelC-Change the color?"), QStringLiteral("Change the color?")));
    m_alert->setInformativeText(
        loadAppString(QStringLiteral("ColorPanelC-Press OK to change now,otherwise not!"),
                      QStringLiteral("Press OK to change now,otherwise not!")));
    // One role for both: those of different roles would stand in the desktop's order.
    const auto add = [this](const char *name, const QString &title) {
        QPushButton *button = m_alert->addButton(title, QMessageBox::ActionRole);
        button->setObjectName(QLatin1String(name));
        return button;
    };
    QPushButton *first
        = add("btnAlertFirst", loadAppString(QStringLiteral("ColorPanelC-OK"), QStringLiteral("OK")));
    QPushButton *second = add("btnAlertSecond",
                              loadAppString(QStringLiteral("ColorPanelC-Cancel"), QStringLiteral("Cancel")));
    m_alert->setDefaultButton(first);
    m_alert->setEscapeButton(second);
    connect(m_alert, &QDialog::finished, this, [this, first] {
        const bool isFirst = m_alert && m_alert->clickedButton() == first;
        alertDidEnd(isFirst ? alertFirstButtonReturn : alertSecondButtonReturn);
    });
    WindowLevel::set(m_alert, WindowLevel::of(m_panel));
    m_alert->open();
}

void ColorPanelDelegate::alertDidEnd(int returnCode)
{
    const qint64 answer = returnCode == alertFirstButtonReturn ? 1 : 0;
    QMetaObject::invokeMethod(
        this, [this, answer] { endAlertProcess(answer); }, Qt::QueuedConnection);
}

void ColorPanelDelegate::endAlertProcess(qint64 answer)
{
    decide(answer == 1 ? 1 : 0);
}

void ColorPanelDelegate::noteComposing(const QInputMethodEvent *event)
{
    const bool wasComposing = m_isComposing;
    m_isComposing = !event->preeditString().isEmpty();
    // What had to wait for the composition's end is put right after it.
    if (wasComposing && !m_isComposing)
        QMetaObject::invokeMethod(
            this, [this] { controlTextDidChange(m_value); }, Qt::QueuedConnection);
}

bool ColorPanelDelegate::eventFilter(QObject *watched, QEvent *event)
{
    // By the event first: of others some come from a panel or field that is half destroyed.
    switch (event->type()) {
    case QEvent::InputMethod:
        if (watched == m_value)
            noteComposing(static_cast<QInputMethodEvent *>(event));
        return false;
    case QEvent::Close: {
        if (watched != m_panel)
            return false;
        const bool isAllowed = windowShouldClose();
        event->setAccepted(isAllowed);
        if (isAllowed)
            windowWillClose();
        return true;
    }
    case QEvent::KeyPress:
        if (watched != m_panel || !static_cast<QKeyEvent *>(event)->matches(QKeySequence::Cancel))
            return false;
        onCancel();
        return true;
    default:
        return false;
    }
}
