#include "platform/ui/WebView.h"

#include "Classes/Mode/Locale.h"
#include "platform/ui/WebPage.h"

#include <QChildEvent>
#include <QFileInfo>
#include <QJsonArray>
#include <QLabel>
#include <QOpenGLContext>
#include <QPointer>
#include <QQuickWidget>
#include <QVBoxLayout>
#include <QWebEngineLoadingInfo>
#include <QWebEngineView>

#ifdef Q_OS_LINUX
#include <unistd.h>
#endif

namespace
{

constexpr qsizetype scrolledLimit = 100; // boxes of a page whose positions are kept
constexpr int hiddenLoadLimit = 5'000; // milliseconds that a page which was opened in no window gets

// The engine ends the whole process when root starts it inside its sandbox.
bool isRootInsideSandbox()
{
#ifdef Q_OS_LINUX
    return geteuid() == 0 && qgetenv("QTWEBENGINE_DISABLE_SANDBOX") != "1";
#else
    return false;
#endif
}

// The engine draws through a Quick widget, which composes its window by the graphics hardware. A window that
// meets its first one when it is already on the screen is taken off and made anew, without its modality and
// its place among the others; one that has it from the start is made right. This one is never shown and
// starts nothing.
void giveSurface(QWidget *view)
{
    auto *surface = new QQuickWidget(view);
    surface->setAcceptDrops(false);
    surface->hide();
}

} // namespace

WebView::WebView(QWidget *parent)
    : QWidget(parent)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_coverTimer.setSingleShot(true);
    m_coverTimer.setInterval(coverLimit);
    connect(&m_coverTimer, &QTimer::timeout, this, &WebView::uncover);
    // Without shared contexts the engine will draw in software, into a window like any other.
    if (QOpenGLContext::globalShareContext() && !isRootInsideSandbox())
        giveSurface(this);
}

// Views go before the profile that their pages use.
WebView::~WebView()
{
    m_hiddenViews.clear();
    delete m_view;
}

void WebView::loadPage(const QUrl &url)
{
    if (url.isEmpty() || !url.isValid())
        return;
    if (!m_view) {
        if (!isAvailable()) {
            showReason();
            return;
        }
        createView();
    }
    cover();
    ++m_load;
    m_profile->setFolder(url.isLocalFile() ? QFileInfo(url.toLocalFile()).path() : QString());
    m_view->load(url);
}

void WebView::stopLoading()
{
    if (m_view)
        m_view->stop();
}

void WebView::loadHTMLString(const QString &html)
{
    if (!m_view)
        return;
    cover();
    ++m_load;
    m_view->setHtml(html);
}

void WebView::evaluateWebScript(const QString &script)
{
    if (m_page)
        m_page->runJavaScript(script);
}

WebView *WebView::createHiddenView()
{
    if (!m_page || m_hiddenViews.size() >= hiddenViewLimit)
        return nullptr;
    auto owned = std::make_unique<WebView>();
    WebView *view = owned.get();
    view->m_profile = m_profile;
    view->m_isHiddenView = true;
    view->createView();
    m_hiddenViews.push_back(std::move(owned));
    // Not at once: the engine still works with the view.
    const auto drop = [this, view] {
        QTimer::singleShot(0, this, [this, view = QPointer(view)] {
            std::erase_if(m_hiddenViews, [&view](const auto &hidden) { return hidden.get() == view; });
        });
    };
    connect(view, &WebView::loadFinished, this, drop);
    connect(view->m_page, &QWebEnginePage::windowCloseRequested, this, drop);
    QTimer::singleShot(hiddenLoadLimit, view, drop);
    return view;
}

void WebView::setPolicyDelegate(WebViewDelegate *delegate)
{
    m_policyDelegate = delegate;
    for (const auto &hidden : m_hiddenViews)
        hidden->setPolicyDelegate(delegate);
}

// To the engine all local pages are of one origin: a page and the window that it opened read each other. So a
// hidden view goes only where the page could read anyway, and goes itself when the page moves on.
bool WebView::decidesToUse(const QUrl &url)
{
    const QPointer<WebView> self(this);
    const bool isUsed = m_policyDelegate
        ? m_policyDelegate->decidePolicyForNavigationAction(url) == WebPolicy::Use
        : url.isLocalFile();
    if (!self || !isUsed)
        return false;
    if (m_profile->isReadable(url))
        return true;
    dropHiddenViews();
    return !m_isHiddenView;
}

void WebView::dropHiddenViews()
{
    if (!m_hiddenViews.empty())
        QTimer::singleShot(0, this, [this] { m_hiddenViews.clear(); });
}

QWebEnginePage *WebView::openHiddenPage()
{
    const WebView *opened = m_uiDelegate ? m_uiDelegate->createWebViewWithRequest(QUrl()) : nullptr;
    return opened ? opened->m_page : nullptr;
}

// Hiding is where a refresh begins: the page is still there to be kept as a picture.
void WebView::setVisible(bool visible)
{
    if (!visible)
        cover();
    QWidget::setVisible(visible);
}

void WebView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_picture)
        m_picture->setGeometry(rect());
}

void WebView::cover()
{
    if (!m_isPainted || !isVisible())
        return;
    m_coverTimer.start();
    if (m_picture)
        return;
    const QPixmap picture = m_view->grab();
    m_picture = new QLabel(this);
    m_picture->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_picture->setScaledContents(true);
    m_picture->setPixmap(picture);
    m_picture->setGeometry(rect());
    m_picture->show();
}

void WebView::uncover()
{
    m_coverTimer.stop();
    delete m_picture;
    m_picture = nullptr;
}

void WebView::followLoading(const QWebEngineLoadingInfo &info)
{
    if (info.url().scheme() == QLatin1String("data"))
        return;
    if (info.status() == QWebEngineLoadingInfo::LoadStartedStatus) {
        if (info.url().isLocalFile()) {
            cover();
            ++m_load;
        }
        return;
    }
    QJsonArray positions;
    if (m_page->url().adjusted(QUrl::RemoveFragment) == m_scrolledPage) {
        for (auto it = m_scrolled.cbegin(); it != m_scrolled.cend(); ++it)
            positions.append(QJsonArray{it.key(), it->x(), it->y()});
    }
    m_page->tellWhenPainted(m_load, positions);
    if (info.status() == QWebEngineLoadingInfo::LoadSucceededStatus && m_frameLoadDelegate)
        m_frameLoadDelegate->didFinishLoadForFrame();
}

void WebView::noteScrolling(const QString &selector, double left, double top)
{
    const QUrl page = m_page->url().adjusted(QUrl::RemoveFragment);
    if (page != m_scrolledPage) {
        m_scrolledPage = page;
        m_scrolled.clear();
    }
    if (m_scrolled.size() < scrolledLimit || m_scrolled.contains(selector))
        m_scrolled.insert(selector, QPointF(left, top));
}

bool WebView::isAvailable() const
{
    return !isRootInsideSandbox();
}

QString WebView::unavailableReason() const
{
    if (isAvailable())
        return QString();
    const QString reason = QStringLiteral("the web engine cannot run as root with its sandbox on");
    return loadAppString(reason, reason);
}

// Parts of the engine's view appear with its first page and ask for drops: they would swallow rows that are
// dragged across the window and open files.
bool WebView::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ChildAdded || event->type() == QEvent::ChildPolished)
        refuseDrops();
    return QWidget::eventFilter(watched, event);
}

void WebView::createView()
{
    // A host that shares no graphics contexts would crash at its first accelerated view.
    if (!QOpenGLContext::globalShareContext())
        qputenv("QT_QUICK_BACKEND", "software");

    delete m_reason;
    m_reason = nullptr;
    if (!m_profile)
        m_profile = std::make_shared<WebProfile>();
    m_view = new QWebEngineView(this);
    m_view->setContextMenuPolicy(Qt::NoContextMenu);
    m_view->installEventFilter(this);

    m_page = new WebPage(this, m_profile.get(), m_view);
    connect(m_page, &QWebEnginePage::loadStarted, this, &WebView::refuseDrops);
    connect(m_page, &QWebEnginePage::loadFinished, this, [this](bool ok) {
        refuseDrops();
        Q_EMIT loadFinished(ok);
    });
    connect(m_page, &QWebEnginePage::loadingChanged, this, &WebView::followLoading);
    connect(m_page, &QWebEnginePage::renderProcessTerminated, this, [this] {
        m_isPainted = false;
        uncover();
    });
    connect(m_page, &WebPage::scrolled, this, &WebView::noteScrolling);
    connect(m_page, &WebPage::painted, this, [this](int load) {
        if (load != m_load)
            return;
        m_isPainted = true;
        uncover();
    });
    m_view->setPage(m_page);
    layout()->addWidget(m_view);
    setFocusProxy(m_view);
    m_view->show();
    refuseDrops();
}

void WebView::showReason()
{
    if (!m_reason) {
        m_reason = new QLabel(this);
        m_reason->setAlignment(Qt::AlignCenter);
        m_reason->setTextFormat(Qt::PlainText);
        m_reason->setWordWrap(true);
        layout()->addWidget(m_reason);
    }
    const QString text = QStringLiteral("No preview is available here: %@");
    m_reason->setText(loadAppString(text, text).replace(QLatin1String("%@"), unavailableReason()));
    m_reason->show();
}

void WebView::refuseDrops()
{
    m_view->setAcceptDrops(false);
    const QList<QWidget *> parts = m_view->findChildren<QWidget *>();
    for (QWidget *part : parts)
        part->setAcceptDrops(false);
}
