#include "platform/ui/WebView.h"

#include "Classes/Mode/Locale.h"

#include <QChildEvent>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QOpenGLContext>
#include <QVBoxLayout>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineSettings>
#include <QWebEngineUrlRequestInterceptor>
#include <QWebEngineView>

#ifdef Q_OS_LINUX
#include <unistd.h>
#endif

namespace
{

// Answers the engine's questions: what may be navigated to, what the page may read, whether a window may
// open.
class Page : public QWebEnginePage
{
public:
    Page(QWebEngineProfile *profile, QObject *parent)
        : QWebEnginePage(profile, parent)
    {
        setUrlRequestInterceptor(&m_interceptor);
    }

protected:
    bool acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame) override
    {
        // A page blanked by the view itself arrives as a typed data: address.
        const bool isOwnBlankPage
            = isMainFrame && type == NavigationTypeTyped && url.scheme() == QLatin1String("data");
        if (isMainFrame && url.isLocalFile())
            m_interceptor.folder = folderOf(url);
        return isOwnBlankPage || url.isLocalFile();
    }

    QWebEnginePage *createWindow(WebWindowType) override { return nullptr; }

private:
    static QString folderOf(const QUrl &url) { return QFileInfo(url.toLocalFile()).path() + u'/'; }

    // The engine's own setting knows only all local files or none, not even the page's scripts. Here a page
    // reads what lies in its own folder and below.
    struct Interceptor : QWebEngineUrlRequestInterceptor {
        void interceptRequest(QWebEngineUrlRequestInfo &info) override
        {
            const QUrl url = info.requestUrl();
            if (info.resourceType() == QWebEngineUrlRequestInfo::ResourceTypeMainFrame || !url.isLocalFile())
                return;
            if (folder.isEmpty() || !QDir::cleanPath(url.toLocalFile()).startsWith(folder))
                info.block(true);
        }
        QString folder;
    };
    Interceptor m_interceptor;
};

// The engine ends the whole process when root starts it inside its sandbox.
bool isRootInsideSandbox()
{
#ifdef Q_OS_LINUX
    return geteuid() == 0 && qgetenv("QTWEBENGINE_DISABLE_SANDBOX") != "1";
#else
    return false;
#endif
}

} // namespace

WebView::WebView(QWidget *parent)
    : QWidget(parent)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
}

// The view goes before the profile that its page uses; left to the order of the children it would go after.
WebView::~WebView()
{
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
    m_view->load(url);
}

void WebView::stopLoading()
{
    if (m_view)
        m_view->stop();
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
    m_profile = new QWebEngineProfile(this);
    m_profile->setHttpCacheType(QWebEngineProfile::NoCache);
    m_view = new QWebEngineView(this);
    m_view->setContextMenuPolicy(Qt::NoContextMenu);
    m_view->installEventFilter(this);

    auto *page = new Page(m_profile, m_view);
    QWebEngineSettings *settings = page->settings();
    settings->setAttribute(QWebEngineSettings::FocusOnNavigationEnabled, false);
    settings->setAttribute(QWebEngineSettings::LocalContentCanAccessFileUrls, true);
    settings->setAttribute(QWebEngineSettings::LocalContentCanAccessRemoteUrls, false);
    settings->setAttribute(QWebEngineSettings::JavascriptCanOpenWindows, false);
    connect(page, &QWebEnginePage::loadStarted, this, &WebView::refuseDrops);
    connect(page, &QWebEnginePage::loadFinished, this, [this](bool ok) {
        refuseDrops();
        Q_EMIT loadFinished(ok);
    });
    m_view->setPage(page);
    layout()->addWidget(m_view);
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
