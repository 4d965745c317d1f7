#pragma once

#include "Classes/Delegate/EditView/PositionView.h"
#include "Classes/Delegate/PositionRect.h"
#include "Classes/Delegate/WorkspaceBackup.h"
#include "linklist/PrivateView.h"
#include "platform/ui/WebView.h"
#include "platform/ui/WindowController.h"

#include <QPointer>
#include <array>
#include <functional>
#include <memory>

class Matrix;
class QAbstractButton;
class QLineEdit;
class RunLoopTimer;
class Slider;

// One settings session: the window in which a person edits the box's place and its list of links and sees the
// preview. Every edit is written to the workspace at once; a backup of the workspace, taken when the window
// opens, is what Cancel goes back to. The host sets the workspace and the modal mode before it first asks for
// the window, and reads closeMode and isCloseBundle after the close.
class PluginSettingsDelegate : public WindowController,
                               public PrivateViewDelete,
                               public PostionViewDelete,
                               public WebViewDelegate
{
    Q_OBJECT

public:
    static constexpr qint64 applyMode = 1;
    static constexpr qint64 revertMode = 0;

    // The widget classes that an interface file may name, besides the toolkit's own.
    static void registerInterfaceClasses();

    // Empty when there is no interface file for the window. A nil language leaves the process's language as
    // it is, a nil or empty bundle path stands for the main bundle.
    static std::unique_ptr<PluginSettingsDelegate> initWithLanguageCode(const QString &languageCode,
                                                                        const QString &bundlePath);
    ~PluginSettingsDelegate() override;

    // The plug-in's folder of the book; nil until the window loads means the default one. Once the window is
    // loaded the session stays with its workspace.
    QString workSpace() const { return m_workSpace; }
    void setWorkSpace(const QString &workSpace);
    QString bundlePath() const { return m_bundlePath; }
    void setBundlePath(const QString &bundlePath) { m_bundlePath = bundlePath; }

    // True once the window has closed. Setting it tells others so and changes nothing of the close.
    bool isCloseBundle() const { return m_isCloseBundle; }
    void setIsCloseBundle(bool isCloseBundle) { m_isCloseBundle = isCloseBundle; }

    // Whether the window runs modally; read when the window loads.
    bool isModalMode() const { return m_isModalMode; }
    void setIsModalMode(bool isModalMode) { m_isModalMode = isModalMode; }
    void setModalMode(bool isModalMode) { setIsModalMode(isModalMode); }

    // How the session ends: 1 applies, anything else reverts.
    qint64 closeMode() const { return m_closeMode; }
    void setCloseMode(qint64 closeMode) { m_closeMode = closeMode; }

    QString backupSettingPath() const { return m_backup.path(); }
    void setBackupSettingPath(const QString &path) { m_backup.setPath(path); }

    // Puts the record back to zeros and makes a new, empty backup folder.
    void initialParaments();
    void awakeFromNib() override;
    void windowWillClose() override;

    void onOK(QObject *sender = nullptr);
    void onCancel(QObject *sender = nullptr);
    void onDefaultSetting(QObject *sender = nullptr);

    // Settings files, backup and undo. Failures are silent towards the person; true means that all of it was
    // done.
    void loadSettings();
    bool loadSettingFromFile(const QString &path);
    void saveGlobalSettings() override;
    bool saveInitialSettings() { return m_backup.save(m_workSpace); }
    bool undoSettings() { return m_backup.undo(m_workSpace); }
    bool clearBackupSettings() { return m_backup.clear(); }

    // Position and transparency controls.
    void onChangePositionView() override;
    void didChangedPositionView() override;
    void controlTextDidChange(QWidget *field);
    static QString checkStringFrom(const QString &text);
    void onTransparency(QObject *sender = nullptr);

    // Live preview. A timer looks three times a second whether the workspace has changed; if it has, the view
    // is blanked, and the page is loaded and then, once it is there, reloaded.
    void timerRepeat();
    void refreshPreview();
    void loadMainPage();
    void didFinishLoadForFrame() override;
    void delayReloadData();
    // Local files are used, links to the web go to the browser and everything else nowhere. Never throws.
    WebPolicy decidePolicyForNavigationAction(const QUrl &request) override;
    WebView *createWebViewWithRequest(const QUrl &request) override;
    // Who is given links to the web: the desktop's browser, unless told otherwise.
    void setUrlOpener(std::function<void(const QUrl &)> opener) { m_urlOpener = std::move(opener); }

    const PositionRect &ptRect() const { return m_ptRect; }
    bool isChange() const { return m_isChange; }
    bool isNeedReload() const { return m_isNeedReload; }
    // Null before the window is loaded and once it has closed.
    const RunLoopTimer *repeatTimer() const { return m_repeatTimer.get(); }
    PrivateView *privateView() const { return m_privateView; }
    PositionView *positionView() const { return m_positionView; }

private:
    struct MarginField {
        const char *name;
        double (PositionRect::*margin)() const;
        void (PositionRect::*setMargin)(double);
    };
    static const std::array<MarginField, 4> marginFields;

    PluginSettingsDelegate();
    void findOutlets();
    void loadPrivateView();
    void loadPositionView();
    void replacePlaceholder(const char *name, QWidget *widget);
    void showInPositionView();
    void showMargins();
    void startPreview();
    void endPreview();
    static void openInBrowser(const QUrl &url);
    bool savePreviewPage() const;
    void endEditing();
    bool closeAgain();
    void stripWorkspace(const QStringList &files) const;
    void arrangeButtons();
    void arrangeTabOrder();
    QString inWorkspace(const char *name) const;

    QString m_workSpace;
    QString m_bundlePath;
    bool m_isCloseBundle = false;
    bool m_isModalMode = false;
    qint64 m_closeMode = revertMode;
    PositionRect m_ptRect;
    WorkspaceBackup m_backup;
    bool m_isOKCancelButton = false;
    bool m_isEnding = false;
    bool m_hasClosed = false;
    bool m_isChange = false; // the workspace has changed since the preview was last refreshed
    bool m_isNeedReload = false; // the preview is reloaded once its next load has finished
    std::unique_ptr<RunLoopTimer> m_repeatTimer;
    std::function<void(const QUrl &)> m_urlOpener = openInBrowser;

    // Parts of the window; each is null when the interface file has none of that name.
    std::array<QPointer<QLineEdit>, 4> m_margins;
    QPointer<QLineEdit> m_txtTransparency;
    QPointer<Slider> m_sldTrans;
    QPointer<Matrix> m_matLayer;
    QPointer<WebView> m_iWebView;
    QPointer<PrivateView> m_privateView;
    QPointer<PositionView> m_positionView;
};
