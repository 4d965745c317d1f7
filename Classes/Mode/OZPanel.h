#pragma once

#include "platform/AsyncScope.h"
#include "platform/ui/WindowController.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <atomic>
#include <functional>

// What a person chose in a panel: copies, free to cross to another thread.
struct PanelResult {
    bool isOpenPanel = true;
    QStringList paths; // absolute; several only where several may be chosen
    QString filter; // the file types that were on show, such as "*.jpg *.png"

    QString path() const { return paths.value(0); }
};

// Owners that hear of what was chosen, each time on a new thread: see AsyncScope for what they may do there.
// Results of save panels arrive only at an owner that is an OpenPanelReceiver, too.
class OpenPanelReceiver : public virtual AsyncReceiver
{
public:
    virtual void endOpenPanel(const PanelResult &panel) = 0;

protected:
    ~OpenPanelReceiver() = default;
};
class SavePanelReceiver : public virtual AsyncReceiver
{
public:
    virtual void endSavePanel(const PanelResult &panel) = 0;

protected:
    ~SavePanelReceiver() = default;
};

// An open or save panel for a window controller: configured, run once or several times, and told to its owner
// when it was confirmed. The panel belongs to the owner's window, which it blocks as a sheet does. It closes,
// and nothing is told, when it is cancelled, when the window is closed, or when the window, the owner or this
// object goes, even while the panel asks whether a file may be replaced. Texts come translated; a null one
// leaves what the panel has of its own. Everything is for the main thread but runModel.
class OZPanel : public QObject
{
    Q_OBJECT

public:
    // Called in place of endOpenPanel or endSavePanel, in the owner's scope: it may capture the owner, which
    // has to be an AsyncReceiver. For any other owner it is not called, and a warning says so.
    using EndPanelSelector = std::function<void(const PanelResult &panel)>;

    explicit OZPanel(QObject *parent = nullptr);

    // Endings without their dot, compared without regard to case; none leaves the types unrestricted. A name
    // given in a save panel gets the first of them where it has none of them.
    QStringList types() const { return m_panelTypes; }
    void setTypes(const QStringList &types) { m_panelTypes = types; }
    void addType(const QString &type) { m_panelTypes.append(type); }
    void removeType(const QString &type) { m_panelTypes.removeAll(type); }
    QStringList panelTypes() const { return types(); }
    void setPanelTypes(const QStringList &types) { setTypes(types); }

    // Which of the two panels runModel shows: at first the save panel.
    bool isOpenPanel() const { return m_isOpenPanel; }
    void setIsOpenPanel(bool isOpenPanel) { m_isOpenPanel = isOpenPanel; }
    QString title() const { return m_title; }
    void setTitle(const QString &title) { m_title = title; }
    // The text of the button that confirms.
    QString prompt() const { return m_prompt; }
    void setPrompt(const QString &prompt) { m_prompt = prompt; }
    QString nameFieldLabel() const { return m_nameFieldLabel; }
    void setNameFieldLabel(const QString &label) { m_nameFieldLabel = label; }
    // Stands at the panel's top, as plain text.
    QString message() const { return m_message; }
    void setMessage(const QString &message) { m_message = message; }
    // Where the panel starts; the person's desktop when there is nothing at that path.
    QString directory() const { return m_directory; }
    void setDirectory(const QString &directory) { m_directory = directory; }
    // The name that is proposed, without a folder.
    QString nameFieldStringValue() const { return m_nameFieldStringValue; }
    void setNameFieldStringValue(const QString &name) { m_nameFieldStringValue = name; }

    // Not owned and free to go at any time.
    WindowController *ower() const { return m_ower; }
    void setOwer(WindowController *ower) { m_ower = ower; }

    // Kept and never asked: an open panel always lets files be chosen.
    bool canChooseFiles() const { return m_canChooseFiles; }
    void setCanChooseFiles(bool can) { m_canChooseFiles = can; }
    // In an open panel a folder may be chosen by selecting it, or by confirming while nothing is selected in
    // it.
    bool canChooseDirectories() const { return m_canChooseDirectories; }
    void setCanChooseDirectories(bool can) { m_canChooseDirectories = can; }
    bool allowsMultipleSelection() const { return m_allowsMultipleSelection; }
    void setAllowsMultipleSelection(bool allows) { m_allowsMultipleSelection = allows; }
    // Files of types outside the list may be chosen or named, too.
    bool allowsOtherFileTypes() const { return m_allowsOtherFileTypes; }
    void setAllowsOtherFileTypes(bool allows) { m_allowsOtherFileTypes = allows; }

    // Empty for the owner's endOpenPanel or endSavePanel.
    EndPanelSelector endPanelSelector() const { return m_endPanelSelector; }
    void setEndPanelSelector(EndPanelSelector selector) { m_endPanelSelector = std::move(selector); }

    // Shows the panel once the main thread is back in its event loop, and returns at once. From any thread.
    void runModel();

    // Show the panel now.
    void startOpenPanel();
    void startSavePanel();

    // Tell the owner of a panel that ended with this code, which is any but 0 where it was confirmed. The
    // panels call them with 1. The context is not used.
    void openPanelDidEnd(const PanelResult &panel, int returnCode, void *contextInfo) const;
    void savePanelDidEnd(const PanelResult &panel, int returnCode, void *contextInfo) const;

private:
    void start(bool isOpenPanel);
    void tellOwner(const PanelResult &panel) const;

    QStringList m_panelTypes;
    QString m_title;
    QString m_prompt;
    QString m_nameFieldLabel;
    QString m_message;
    QString m_directory;
    QString m_nameFieldStringValue;
    QPointer<WindowController> m_ower;
    EndPanelSelector m_endPanelSelector;
    std::atomic<bool> m_isOpenPanel = false; // read by runModel on its caller's thread
    bool m_canChooseFiles = false;
    bool m_canChooseDirectories = false;
    bool m_allowsMultipleSelection = false;
    bool m_allowsOtherFileTypes = false;
};
