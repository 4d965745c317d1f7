#include "Classes/Delegate/PluginSettingsDelegate/PluginSettingsDelegate.h"

#include "Classes/Delegate/PluginSettingsInfo.h"
#include "Classes/Delegate/RoundView.h"
#include "Classes/Delegate/SimpleCell.h"
#include "Classes/Delegate/TransitionBGView.h"
#include "Classes/Mode/LastDocument.h"
#include "Classes/Mode/Locale.h"
#include "Classes/Mode/Log/LogAlert.h"
#include "Classes/Mode/SelectedLanguage.h"
#include "linklist/LinkTableView.h"
#include "platform/Bundle.h"
#include "platform/File.h"
#include "platform/ui/Field.h"
#include "platform/ui/Matrix.h"
#include "platform/ui/ModalLoop.h"
#include "platform/ui/Nib.h"
#include "platform/ui/RunLoopTimer.h"
#include "platform/ui/Slider.h"
#include "platform/ui/WebView.h"
#include "text/ColorButtonCell.h"
#include "text/SelectedCell.h"

#include <QAbstractButton>
#include <QBoxLayout>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QInputMethod>
#include <QLineEdit>
#include <QScreen>
#include <QStyle>
#include <cstdio>

namespace
{

const QString identifier = QStringLiteral("linklist");

PluginSettingsInfo workspaceInfo(const QString &workSpace, const QString &bundlePath)
{
    PluginSettingsInfo info;
    info.setWorkSpace(workSpace);
    info.setIdentifier(identifier);
    info.setBundlePath(bundlePath);
    return info;
}

} // namespace

void PluginSettingsDelegate::registerInterfaceClasses()
{
    Nib::registerClass<PrivateView>();
    Nib::registerClass<LinkTableView>();
    Nib::registerClass<ColorButtonCell>();
    Nib::registerClass<SelectedCell>();
    Nib::registerClass<SimpleCell>();
    Nib::registerClass<RoundView>();
    Nib::registerClass<TransitionBGView>();
    Nib::registerClass<WebView>();
}

std::unique_ptr<PluginSettingsDelegate>
PluginSettingsDelegate::initWithLanguageCode(const QString &languageCode, const QString &bundlePath)
{
    registerInterfaceClasses();
    if (!languageCode.isNull())
        setDefaultLanguageCode(languageCode);
    // Absolute, so that it stays the same folder wherever the host goes.
    const QString path
        = bundlePath.isEmpty() ? Bundle::mainBundle().path() : QDir().absoluteFilePath(bundlePath);
    setDefaultBundlePath(path);

    std::unique_ptr<PluginSettingsDelegate> controller(new PluginSettingsDelegate);
    controller->m_bundlePath = path;
    if (!controller->initWithResourceNibName(QStringLiteral("PluginSettingsDelegate")))
        return nullptr;
    controller->initialParaments();
    return controller;
}

PluginSettingsDelegate::PluginSettingsDelegate() = default;

PluginSettingsDelegate::~PluginSettingsDelegate()
{
    endPreview();
    if (m_privateView) {
        m_privateView->endEditing();
        m_privateView->setOwer(nullptr);
    }
    if (m_positionView)
        m_positionView->setOwer(nullptr);
    LastDocument::forget();
    // A session whose window never loaded has copied nothing; any other backup is the person's last way back.
    m_backup.clearIfEmpty();
}

void PluginSettingsDelegate::initialParaments()
{
    m_ptRect = PositionRect();
    m_backup.setPath(File::joined(QDir::tempPath(), File::timeStamp()));
    // Where no backup can be made, the session goes on without one: saveInitialSettings finds no folder.
    m_backup.create();
}

QString PluginSettingsDelegate::inWorkspace(const char *name) const
{
    return File::joined(m_workSpace, QLatin1String(name));
}

void PluginSettingsDelegate::findOutlets()
{
    for (size_t i = 0; i < marginFields.size(); ++i)
        m_margins[i] = outlet<QLineEdit>(marginFields[i].name);
    m_txtTransparency = outlet<QLineEdit>("txtTransparency");
    m_sldTrans = outlet<Slider>("sldTrans");
    m_matLayer = outlet<Matrix>("matLayer");
    m_iWebView = outlet<WebView>("iWebView");
}

void PluginSettingsDelegate::awakeFromNib()
{
    findOutlets();
    const QString title = QStringLiteral("Plugin Settings - %@");
    window()->setWindowTitle(
        loadAppString(title, title).replace(QLatin1String("%@"), QLatin1String("Link List Plugin")));
    window()->setLayoutDirection(loadedTableDirection());

    for (QLineEdit *field : {m_margins[0].data(), m_margins[1].data(), m_margins[2].data(),
                             m_margins[3].data(), m_txtTransparency.data()})
        Field::onTextChange(field, this, [this](QLineEdit *changed) { controlTextDidChange(changed); });
    if (m_sldTrans)
        connect(m_sldTrans, &Slider::moved, this, [this] { onTransparency(m_sldTrans); });
    const auto onClick = [this](const char *name, void (PluginSettingsDelegate::*action)(QObject *)) {
        if (auto *button = outlet<QAbstractButton>(name))
            connect(button, &QAbstractButton::clicked, this,
                    [this, button, action] { (this->*action)(button); });
    };
    onClick("btnDefault", &PluginSettingsDelegate::onDefaultSetting);
    onClick("btnCancel", &PluginSettingsDelegate::onCancel);
    onClick("btnOK", &PluginSettingsDelegate::onOK);
    arrangeButtons();

    loadPrivateView();
    if (m_workSpace.isNull())
        m_workSpace = File::joined(PluginSettingsInfo::getSavePluginPath(), identifier);
    if (m_privateView) {
        m_privateView->setWorkSpace(m_workSpace);
        m_privateView->setOwer(this);
        m_privateView->setBundlePath(m_bundlePath);
        m_privateView->loadDispInfo();
        replacePlaceholder("PrivateSettingView", m_privateView);
        m_privateView->addDragDetection();
        arrangeTabOrder();
    }
    loadSettings();
    // A small screen gets a smaller window, never one that hangs over its edges.
    constexpr QSize decoration(16, 48);
    window()->resize(window()->size().boundedTo(window()->screen()->availableSize() - decoration));

    startPreview();
    saveInitialSettings();
    if (m_privateView && File::exists(inWorkspace("settings.dat")))
        m_privateView->onSave();
}

void PluginSettingsDelegate::loadPrivateView()
{
    const QString bundle = File::exists(m_bundlePath) ? m_bundlePath : QString();
    const std::unique_ptr<Nib> nib
        = SelectedLanguage::initWithResourceNibName(QStringLiteral("PrivateView"), bundle);
    std::unique_ptr<QWidget> root(nib ? nib->instantiate(nullptr) : nullptr);
    if (!root)
        return;
    if (auto *view = qobject_cast<PrivateView *>(root.get())) {
        m_privateView = view;
        root.release()->setParent(window());
        return;
    }
    const QList<PrivateView *> views = root->findChildren<PrivateView *>();
    if (views.isEmpty())
        return;
    m_privateView = views.last();
    m_privateView->setParent(window());
}

// Puts a widget where a placeholder of the interface file is, in its layout if it is in one, and removes the
// placeholder. Without one the widget joins the window with an empty frame.
void PluginSettingsDelegate::replacePlaceholder(const char *name, QWidget *widget)
{
    auto *placeholder = outlet<QWidget>(name);
    QWidget *parent = placeholder ? placeholder->parentWidget() : window();
    const QRect frame = placeholder ? placeholder->geometry() : QRect();
    widget->setParent(parent);
    QLayout *layout = placeholder && parent ? parent->layout() : nullptr;
    const std::unique_ptr<QLayoutItem> replaced(layout ? layout->replaceWidget(placeholder, widget)
                                                       : nullptr);
    if (replaced) {
        widget->setSizePolicy(placeholder->sizePolicy());
        widget->setMinimumSize(placeholder->minimumSize());
    } else {
        widget->setGeometry(frame);
    }
    widget->show();
    delete placeholder;
}

// OK stands left of Cancel on the desktops that have it so.
void PluginSettingsDelegate::arrangeButtons()
{
    auto *ok = outlet<QAbstractButton>("btnOK");
    auto *cancel = outlet<QAbstractButton>("btnCancel");
    const int order = window()->style()->styleHint(QStyle::SH_DialogButtonLayout, nullptr, window());
    if (!ok || !cancel || (order != 0 && order != 2))
        return;
    for (QBoxLayout *row : window()->findChildren<QBoxLayout *>()) {
        const int at = row->indexOf(cancel);
        if (at >= 0 && row->indexOf(ok) == at + 1) {
            row->removeWidget(ok);
            row->insertWidget(at, ok);
        }
    }
}

// The editor joined the window last; Tab reaches it before the buttons below it.
void PluginSettingsDelegate::arrangeTabOrder()
{
    QWidget *last = m_privateView;
    for (QWidget *next = last->nextInFocusChain(); next != m_privateView; next = next->nextInFocusChain()) {
        if (m_privateView->isAncestorOf(next) && next->focusPolicy() & Qt::TabFocus)
            last = next;
    }
    QList<QWidget *> buttons;
    for (const char *name : {"btnDefault", "btnOK", "btnCancel"}) {
        if (auto *button = outlet<QWidget>(name))
            buttons.append(button);
    }
    // The two on the right in the order in which they stand.
    auto *ok = outlet<QWidget>("btnOK");
    auto *cancel = outlet<QWidget>("btnCancel");
    for (const QBoxLayout *row : window()->findChildren<QBoxLayout *>()) {
        if (ok && cancel && row->indexOf(cancel) >= 0 && row->indexOf(cancel) < row->indexOf(ok))
            buttons.swapItemsAt(buttons.indexOf(ok), buttons.indexOf(cancel));
    }
    for (QWidget *button : std::as_const(buttons)) {
        QWidget::setTabOrder(last, button);
        last = button;
    }
}

void PluginSettingsDelegate::setWorkSpace(const QString &workSpace)
{
    if (!isWindowLoaded())
        m_workSpace = workSpace;
}

void PluginSettingsDelegate::onOK(QObject *)
{
    if (closeAgain())
        return;
    QGuiApplication::inputMethod()->commit();
    QStringList files;
    if (m_privateView) {
        m_privateView->commitEditing();
        m_privateView->onSave();
        files = m_privateView->locateFiles();
    }
    workspaceInfo(m_workSpace, m_bundlePath).generateJSConfig(QStringLiteral("files/plugin"));
    endPreview(); // its page is about to go
    if (File::isFolder(m_workSpace)) {
        File::write(inWorkspace("files"), files.join(u'\n').toUtf8());
        stripWorkspace(files);
    }
    endEditing(); // from here on the workspace is what a published book carries
    m_isOKCancelButton = true;
    m_closeMode = applyMode;
    window()->close();
}

// Nothing is written into the workspace any more, whatever the window is asked: neither while it closes nor
// when a host shows it once more.
void PluginSettingsDelegate::endEditing()
{
    m_isEnding = true;
    if (m_privateView)
        m_privateView->endEditing();
}

// The buttons of a window that a host shows once more close it and do nothing else: its session is over.
bool PluginSettingsDelegate::closeAgain()
{
    if (m_isEnding)
        window()->close();
    return m_isEnding;
}

void PluginSettingsDelegate::stripWorkspace(const QStringList &files) const
{
    const QStringList keepList = files
        + QStringList{QStringLiteral("files"), QStringLiteral("bookPlugin.js"),
                      QStringLiteral("defaultsettings.dat"), QStringLiteral("settings.dat"),
                      identifier + QStringLiteral(".xml")};
    const QStringList entries
        = QDir(m_workSpace).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QString &name : entries) {
        if (!keepList.contains(name))
            File::removeAll(File::joined(m_workSpace, name));
    }
}

void PluginSettingsDelegate::onCancel(QObject *)
{
    if (closeAgain())
        return;
    endEditing();
    m_isOKCancelButton = true;
    m_closeMode = revertMode;
    window()->close();
}

void PluginSettingsDelegate::onDefaultSetting(QObject *)
{
    QString path = File::joined(m_bundlePath, QStringLiteral("Contents/Resources/data/defaultsettings.dat"));
    if (!File::exists(path))
        path = inWorkspace("defaultsettings.dat");
    if (!File::exists(path)) {
        std::puts("defaultsettings.dat not found!");
        return;
    }
    loadSettingFromFile(path);
    saveGlobalSettings();
    m_isChange = true;
}

void PluginSettingsDelegate::windowWillClose()
{
    m_repeatTimer.reset();
    if (m_hasClosed) {
        ModalLoop::stopModalWithCode(m_closeMode);
        return;
    }
    const QPointer<PluginSettingsDelegate> self(this);
    if (m_privateView)
        m_privateView->cancelDrag();
    if (!m_isOKCancelButton) {
        QGuiApplication::inputMethod()->commit();
        if (m_privateView)
            m_privateView->commitEditing();
        const QString question = QStringLiteral("Do you want to apply the settings?");
        const bool isApplied
            = LogAlert::AlertOKCancelWithMessage(loadAppString(question, question), QString(), window());
        if (!self) // the host dropped the session while the question was shown
            return;
        m_closeMode = isApplied ? applyMode : revertMode;
    }
    endEditing();
    endPreview();
    if (m_closeMode == applyMode)
        clearBackupSettings();
    else
        undoSettings();
    m_hasClosed = true;
    m_isCloseBundle = true;
    ModalLoop::stopModalWithCode(m_closeMode);
}
