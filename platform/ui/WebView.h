#pragma once

#include <QUrl>
#include <QWidget>

class QLabel;
class QWebEngineProfile;
class QWebEngineView;

// An embedded view for local pages. The web engine is started by the first load, so that a window which holds
// the view opens at once; nothing is kept on disk. A page reads local files of its own folder only. The page
// stays where it is: links to other places and new windows are refused, files dropped on it pass to the
// window behind, a load does not take the focus.
//
// Where the engine cannot run, the first load shows the reason instead of the page and loadFinished() never
// comes.
class WebView : public QWidget
{
    Q_OBJECT

public:
    explicit WebView(QWidget *parent = nullptr);
    ~WebView() override;

    // Loads the page afresh; an empty or invalid address is no navigation.
    void loadPage(const QUrl &url);
    void stopLoading();

    // False when starting the engine would end the process. The reason is a text for people, empty when
    // available.
    bool isAvailable() const;
    QString unavailableReason() const;

Q_SIGNALS:
    // Once for every load that ended, stopped ones included.
    void loadFinished(bool ok);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void createView();
    void showReason();
    void refuseDrops();

    QWebEngineProfile *m_profile = nullptr;
    QWebEngineView *m_view = nullptr;
    QLabel *m_reason = nullptr;
};
