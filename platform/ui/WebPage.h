#pragma once

#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineUrlRequestInterceptor>

class WebView;

// What the pages of one view and of the windows that they open may fetch: files of one folder and below,
// symbolic links resolved, and nothing from any network. Nothing is kept on disk. It outlives its pages. What
// it cannot stop is a peer connection that a script opens from a frame made for that, or a transport from a
// worker: the engine asks nobody about them. Texts and links of a page reach neither.
class WebProfile : public QWebEngineProfile
{
public:
    WebProfile();
    ~WebProfile() override;

    // An empty folder stands for no files.
    void setFolder(const QString &folder);
    // Whether the address is a file of the folder; one that is not there is none.
    bool isReadable(const QUrl &url) const { return m_interceptor.isReadable(url); }

private:
    // The page's own interceptor would come too late for the first load of a new window.
    class Interceptor : public QWebEngineUrlRequestInterceptor
    {
    public:
        void interceptRequest(QWebEngineUrlRequestInfo &request) override;
        bool isReadable(const QUrl &url) const;

        QString folder; // canonical, with a slash at its end
    };
    Interceptor m_interceptor;
};

// The web engine's page inside a WebView. It asks the view where it may go and for new windows, shows no
// dialogs, and passes on what the view's own script tells.
//
// That script runs in the engine's application world, out of reach for the page's own scripts. It notes how
// far the page and the boxes in it are scrolled.
class WebPage : public QWebEnginePage
{
    Q_OBJECT

public:
    WebPage(WebView *view, WebProfile *profile, QObject *parent);

    // Scrolls the page to these positions, a list of [selector, left, top], and emits painted() with the
    // number once this is on its way to the screen. A page that is not shown or whose process has ended never
    // does.
    void tellWhenPainted(int number, const QJsonArray &positions);

Q_SIGNALS:
    // The element that the selector names has been scrolled; an empty selector stands for the page itself.
    void scrolled(const QString &selector, double left, double top);
    void painted(int number);

protected:
    bool acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame) override;
    QWebEnginePage *createWindow(WebWindowType type) override;
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel level, const QString &message, int line,
                                  const QString &source) override;
    // Nobody asked the page: a dialog would take the focus from the field that is being typed into.
    void javaScriptAlert(const QUrl &, const QString &) override { }
    bool javaScriptConfirm(const QUrl &, const QString &) override { return false; }
    bool javaScriptPrompt(const QUrl &, const QString &, const QString &, QString *) override
    {
        return false;
    }
    QStringList chooseFiles(FileSelectionMode, const QStringList &, const QStringList &) override
    {
        return {};
    }

private:
    void insertScripts();
    QString withMark(QString script) const;

    WebView *m_view;
    QString m_mark; // at the start of every message of the view's own script
};
