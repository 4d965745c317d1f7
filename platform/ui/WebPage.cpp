#include "platform/ui/WebPage.h"

#include "platform/ui/WebView.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QUuid>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>
#include <QWebEngineSettings>

namespace
{

// What connects past the interceptor of requests is not there for pages.
const char *const withoutPeers = R"js(
for (const name of ["RTCPeerConnection", "webkitRTCPeerConnection", "WebTransport"])
    delete window[name];
)js";

// Tells of each scrolling once per painted picture. A box is named by its id, or by its place below an
// element that has one, so that it is found again in the page's next life.
const char *const noteScrolling = R"js(
(() => {
    const moved = new Set();
    const selectorOf = element => {
        const steps = [];
        for (; element && element !== document.documentElement; element = element.parentElement) {
            if (element.id)
                return ["#" + CSS.escape(element.id), ...steps].join(">");
            steps.unshift(`:nth-child(${1 + [...element.parentElement.children].indexOf(element)})`);
        }
        return [":root", ...steps].join(">");
    };
    const tell = () => {
        for (const target of moved) {
            const isPage = target === document;
            const element = isPage ? document.scrollingElement : target;
            if (element?.isConnected)
                console.log("%MARK" + JSON.stringify([isPage ? "" : selectorOf(element), element.scrollLeft,
                    element.scrollTop]));
        }
        moved.clear();
    };
    document.addEventListener("scroll", event => {
        if (moved.size === 0)
            requestAnimationFrame(tell);
        moved.add(event.target);
    }, { capture: true, passive: true });
})();
)js";

// The first callback comes before the picture that shows the new positions is made, the second after that;
// with the third it is on its way to the window.
const char *const scrollAndTell = R"js(
(() => {
    for (const [selector, left, top] of %POSITIONS) {
        const element = selector ? document.querySelector(selector) : document.scrollingElement;
        element?.scrollTo({ left, top, behavior: "instant" });
    }
    const next = (pictures, job) => requestAnimationFrame(() => pictures > 1 ? next(pictures - 1, job) : job());
    next(3, () => console.log("%MARK%NUMBER"));
})();
)js";

} // namespace

WebProfile::WebProfile()
{
    setHttpCacheType(QWebEngineProfile::NoCache);
    setUrlRequestInterceptor(&m_interceptor);
}

WebProfile::~WebProfile()
{
    setUrlRequestInterceptor(nullptr);
}

void WebProfile::setFolder(const QString &folder)
{
    const QString canonical = folder.isEmpty() ? QString() : QFileInfo(folder).canonicalFilePath();
    m_interceptor.folder = canonical.isEmpty() ? QString() : canonical + u'/';
}

// A file that is not there has no canonical path: it counts as outside.
bool WebProfile::Interceptor::isReadable(const QUrl &url) const
{
    return url.isLocalFile() && !folder.isEmpty()
        && QFileInfo(url.toLocalFile()).canonicalFilePath().startsWith(folder);
}

void WebProfile::Interceptor::interceptRequest(QWebEngineUrlRequestInfo &request)
{
    const QUrl url = request.requestUrl();
    // Where the page itself goes has been decided by now; what the view blanks comes as data:.
    const bool isPage = request.resourceType() == QWebEngineUrlRequestInfo::ResourceTypeMainFrame
        && (url.isLocalFile() || url.scheme() == QLatin1String("data"));
    if (!isPage && !isReadable(url))
        request.block(true);
}

WebPage::WebPage(WebView *view, WebProfile *profile, QObject *parent)
    : QWebEnginePage(profile, parent)
    , m_view(view)
    , m_mark(QUuid::createUuid().toString(QUuid::Id128))
{
    QWebEngineSettings *own = settings();
    own->setAttribute(QWebEngineSettings::FocusOnNavigationEnabled, false);
    // All local files or none, not even the page's scripts: the interceptor is finer.
    own->setAttribute(QWebEngineSettings::LocalContentCanAccessFileUrls, true);
    own->setAttribute(QWebEngineSettings::LocalContentCanAccessRemoteUrls, false);
    own->setAttribute(QWebEngineSettings::JavascriptCanOpenWindows, true);
    insertScripts();
}

void WebPage::insertScripts()
{
    QWebEngineScript peers;
    peers.setSourceCode(QString::fromUtf8(withoutPeers));
    peers.setInjectionPoint(QWebEngineScript::DocumentCreation);
    peers.setWorldId(QWebEngineScript::MainWorld);
    peers.setRunsOnSubFrames(true);
    scripts().insert(peers);

    QWebEngineScript scrolling;
    scrolling.setSourceCode(withMark(QString::fromUtf8(noteScrolling)));
    scrolling.setInjectionPoint(QWebEngineScript::DocumentReady);
    scrolling.setWorldId(QWebEngineScript::ApplicationWorld);
    scripts().insert(scrolling);
}

QString WebPage::withMark(QString script) const
{
    return script.replace(QLatin1String("%MARK"), m_mark);
}

void WebPage::tellWhenPainted(int number, const QJsonArray &positions)
{
    QString script = withMark(QString::fromUtf8(scrollAndTell));
    script.replace(QLatin1String("%NUMBER"), QStringLiteral("[%1]").arg(number));
    script.replace(QLatin1String("%POSITIONS"),
                   QString::fromUtf8(QJsonDocument(positions).toJson(QJsonDocument::Compact)));
    runJavaScript(script, QWebEngineScript::ApplicationWorld);
}

bool WebPage::acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame)
{
    // A page blanked by the view itself arrives as a typed data: address.
    const bool isOwnBlankPage
        = isMainFrame && type == NavigationTypeTyped && url.scheme() == QLatin1String("data");
    return isOwnBlankPage || m_view->decidesToUse(url);
}

QWebEnginePage *WebPage::createWindow(WebWindowType)
{
    return m_view->openHiddenPage();
}

void WebPage::javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message, int line,
                                       const QString &source)
{
    if (!message.startsWith(m_mark)) {
        QWebEnginePage::javaScriptConsoleMessage(level, message, line, source);
        return;
    }
    const QJsonArray told = QJsonDocument::fromJson(message.mid(m_mark.size()).toUtf8()).array();
    if (told.size() == 1)
        Q_EMIT painted(told[0].toInt());
    else if (told.size() == 3)
        Q_EMIT scrolled(told[0].toString(), told[1].toDouble(), told[2].toDouble());
}
