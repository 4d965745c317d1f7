#pragma once

#include <QHash>
#include <QPointF>
#include <QTimer>
#include <QUrl>
#include <QWidget>
#include <memory>
#include <vector>

class QLabel;
class QWebEngineLoadingInfo;
class QWebEnginePage;
class QWebEngineView;
class WebPage;
class WebProfile;
class WebView;

// The answer to a navigation; without a decision the view stays where it is, as with Ignore.
enum class WebPolicy { Undecided, Use, Ignore };

// What a web view asks and tells those who use it, each through a setter of its own. All of it comes on the
// main thread, inside the engine's own work: a receiver that wants the view to go deletes it later.
class WebViewDelegate
{
public:
    // A load or reload has ended well. The engine tells of whole pages only, their frames included.
    virtual void didFinishLoadForFrame() { }

    // Before a page or a frame in it goes anywhere; an empty address stands for no request.
    virtual WebPolicy decidePolicyForNavigationAction(const QUrl &request) = 0;

    // The page opens a window. The engine does not say yet for which address: the new view is asked its
    // policy. The answer is a view made by createHiddenView(), or null to refuse.
    virtual WebView *createWebViewWithRequest(const QUrl &) { return nullptr; }

protected:
    ~WebViewDelegate() = default;
};

// An embedded view for local pages. The web engine is started by the first load, so that a window which holds
// the view opens at once; nothing is kept on disk. Pages read files of the folder of the page that was
// loaded, and reach no network. Without a policy delegate only local files are navigated to; without a UI
// delegate no window opens. Files dropped on the view pass to the window behind, a load does not take the
// focus.
//
// Loading again does not flicker: the last picture lies over the view until the new page is painted, for at
// most coverLimit, and the page comes back scrolled as it was.
//
// Where the engine cannot run, the first load shows the reason instead of the page and loadFinished() never
// comes. The virtual functions are there for stand-ins that record.
class WebView : public QWidget
{
    Q_OBJECT

public:
    static constexpr int coverLimit = 3'000; // milliseconds
    static constexpr int hiddenViewLimit = 16; // at the same time; a page gets no more windows than that

    explicit WebView(QWidget *parent = nullptr);
    ~WebView() override;

    // Null for none; a delegate is unset before it goes.
    WebViewDelegate *frameLoadDelegate() const { return m_frameLoadDelegate; }
    void setFrameLoadDelegate(WebViewDelegate *delegate) { m_frameLoadDelegate = delegate; }
    WebViewDelegate *policyDelegate() const { return m_policyDelegate; }
    // For the hidden views, too.
    void setPolicyDelegate(WebViewDelegate *delegate);
    WebViewDelegate *uiDelegate() const { return m_uiDelegate; }
    void setUIDelegate(WebViewDelegate *delegate) { m_uiDelegate = delegate; }

    // Loads the page afresh; an empty or invalid address is no navigation.
    virtual void loadPage(const QUrl &url);
    virtual void stopLoading();
    // Shows this text in place of the page, without an address of its own; an empty one blanks the view.
    // Before the first page there is nothing to replace.
    virtual void loadHTMLString(const QString &html);
    // Runs the script in the page, among the page's own.
    virtual void evaluateWebScript(const QString &script);

    // A view for a window that the page opens: in no window, never shown, with the same limits and without
    // delegates. This view owns it and drops it once its first load has ended, whichever way. Null when too
    // many are open.
    virtual WebView *createHiddenView();

    // False when starting the engine would end the process. The reason is a text for people, empty when
    // available.
    virtual bool isAvailable() const;
    QString unavailableReason() const;

    // Whether the last picture lies over the view.
    bool isCovered() const { return m_picture != nullptr; }

    void setVisible(bool visible) override;

Q_SIGNALS:
    // Once for every load that ended, stopped ones included.
    void loadFinished(bool ok);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    friend class WebPage;
    bool decidesToUse(const QUrl &url);
    QWebEnginePage *openHiddenPage();

    void createView();
    void dropHiddenViews();
    void showReason();
    void refuseDrops();
    void followLoading(const QWebEngineLoadingInfo &info);
    void noteScrolling(const QString &selector, double left, double top);
    void cover();
    void uncover();

    WebViewDelegate *m_frameLoadDelegate = nullptr;
    WebViewDelegate *m_policyDelegate = nullptr;
    WebViewDelegate *m_uiDelegate = nullptr;

    std::shared_ptr<WebProfile> m_profile; // shared with the hidden views
    QWebEngineView *m_view = nullptr;
    WebPage *m_page = nullptr;
    QLabel *m_reason = nullptr;
    std::vector<std::unique_ptr<WebView>> m_hiddenViews;
    bool m_isHiddenView = false;

    // The picture that lies over the view from one page to the next.
    QLabel *m_picture = nullptr;
    QTimer m_coverTimer;
    // Counts what has been asked for and begun; what is told of an earlier load is out of date.
    int m_load = 0;
    bool m_isPainted = false; // the view shows a page that can be kept as a picture

    QUrl m_scrolledPage; // whose scroll positions are kept
    QHash<QString, QPointF> m_scrolled;
};
