// The preview half of PluginSettingsDelegate: when the workspace's page is loaded again, and where a click in
// it may lead.
#include "Classes/Delegate/PluginSettingsDelegate/PluginSettingsDelegate.h"

#include "platform/File.h"
#include "platform/ui/RunLoopTimer.h"
#include "platform/ui/WebView.h"

#include <QDesktopServices>
#include <QThread>

namespace
{

constexpr int previewInterval = 330; // milliseconds
constexpr unsigned long loadPause = 100; // milliseconds

} // namespace

void PluginSettingsDelegate::openInBrowser(const QUrl &url)
{
    QDesktopServices::openUrl(url);
}

void PluginSettingsDelegate::startPreview()
{
    const auto mode = m_isModalMode ? RunLoopTimer::Mode::ModalPanel : RunLoopTimer::Mode::Default;
    m_repeatTimer = std::make_unique<RunLoopTimer>(mode, previewInterval);
    connect(m_repeatTimer.get(), &RunLoopTimer::fired, this, &PluginSettingsDelegate::timerRepeat);
    m_repeatTimer->start();
    if (m_iWebView) {
        m_iWebView->setUIDelegate(this);
        m_iWebView->setPolicyDelegate(this);
        m_iWebView->setFrameLoadDelegate(this);
    }
    m_isChange = true;
}

void PluginSettingsDelegate::endPreview()
{
    if (!m_iWebView)
        return;
    m_iWebView->stopLoading();
    m_iWebView->setUIDelegate(nullptr);
    m_iWebView->setPolicyDelegate(nullptr);
    m_iWebView->setFrameLoadDelegate(nullptr);
}

// However many edits came since the last tick, they are shown by one refresh.
void PluginSettingsDelegate::timerRepeat()
{
    if (!m_isChange)
        return;
    m_isChange = false;
    refreshPreview();
}

// The blank page is what keeps the engine from showing anything that it still holds of the old one. The
// person sees none of it: the view covers itself with its last picture.
void PluginSettingsDelegate::refreshPreview()
{
    if (!m_iWebView)
        return;
    QWidget *focused = window()->focusWidget();
    const bool hadFocus = focused && m_iWebView->isAncestorOf(focused);
    // Hiding would hand the focus to the next field, which would select its text.
    if (hadFocus)
        focused->clearFocus();
    m_iWebView->hide();
    m_iWebView->stopLoading();
    m_iWebView->show();
    if (hadFocus)
        m_iWebView->setFocus(Qt::OtherFocusReason);
    m_iWebView->loadHTMLString(QString());
    QMetaObject::invokeMethod(this, &PluginSettingsDelegate::loadMainPage, Qt::QueuedConnection);
    m_isNeedReload = true;
}

// The pause blocks on purpose. With a timer in its place the blank page would finish first, and would be the
// one that is reloaded.
void PluginSettingsDelegate::loadMainPage()
{
    if (!m_iWebView || m_isEnding)
        return;
    if (m_iWebView->isAvailable())
        QThread::msleep(loadPause);
    const bool hasPage = File::isUsableFolderPath(m_workSpace);
    m_iWebView->loadPage(hasPage ? QUrl::fromLocalFile(inWorkspace("index.html")) : QUrl());
}

void PluginSettingsDelegate::didFinishLoadForFrame()
{
    delayReloadData();
}

// The page's scripts and styles may have come from the engine's memory; this second load takes all of them
// from the disk.
void PluginSettingsDelegate::delayReloadData()
{
    if (!m_isNeedReload)
        return;
    m_isNeedReload = false;
    if (m_iWebView)
        m_iWebView->evaluateWebScript(QStringLiteral("location.reload(true);"));
}

WebPolicy PluginSettingsDelegate::decidePolicyForNavigationAction(const QUrl &request)
{
    try {
        if (!request.isValid())
            return WebPolicy::Undecided;
        const QString scheme = request.scheme();
        if (scheme == QLatin1String("file") || (m_privateView && m_privateView->ignoreOpenURL()))
            return WebPolicy::Use;
        if (scheme == QLatin1String("http") || scheme == QLatin1String("https")) {
            const auto opener = m_urlOpener; // a host's handler of web addresses may delete the session
            opener(request);
        }
        return WebPolicy::Ignore;
    } catch (const std::exception &exception) {
        qWarning("Web action exception: %s", exception.what());
    } catch (...) {
        qWarning("Web action exception: %s", "unknown");
    }
    return WebPolicy::Undecided;
}

// The page's links for a new window lead to the browser like its others; files are loaded where nobody sees
// them.
WebView *PluginSettingsDelegate::createWebViewWithRequest(const QUrl &)
{
    WebView *view = m_iWebView ? m_iWebView->createHiddenView() : nullptr;
    if (view)
        view->setPolicyDelegate(this);
    return view;
}
