#include "Classes/Mode/OZPanel.h"

#include "Classes/Mode/Log/Log.h"

#include <QDialogButtonBox>
#include <QEvent>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QShortcut>
#include <QStandardPaths>
#include <QTreeView>
#include <algorithm>
#include <climits>

namespace
{
QString startingFolder(const QString &wanted)
{
    if (!wanted.isEmpty() && QFileInfo::exists(wanted))
        return QFileInfo(wanted).isDir() ? wanted : QFileInfo(wanted).absolutePath();
    const QString desktop = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    // From a folder that is not there the panel would start wherever the last one ended.
    return QFileInfo(desktop).isDir() ? desktop : QDir::homePath();
}

// The toolkit's own panel, as the desktop's shows no message and lets files or folders be chosen, not both.
// Its parts are found by the names that the toolkit gives them.
class FilePanel : public QFileDialog
{
public:
    FilePanel(const OZPanel &panel, bool isOpenPanel, QWidget *above)
        : QFileDialog(above)
        , m_types(panel.types())
        , m_prompt(panel.prompt())
        , m_isOpenPanel(isOpenPanel)
        , m_canChooseDirectories(panel.canChooseDirectories())
        , m_allowsMultipleSelection(panel.allowsMultipleSelection())
        , m_allowsOtherFileTypes(panel.allowsOtherFileTypes())
    {
        setAttribute(Qt::WA_DeleteOnClose);
        setOption(DontUseNativeDialog);
        dropNestedLoops();
        setAcceptMode(isOpenPanel ? AcceptOpen : AcceptSave);
        showTypes();
        showTexts(panel);
        if (isOpenPanel)
            setFileMode(m_allowsMultipleSelection ? ExistingFiles : ExistingFile);
        setDirectory(startingFolder(panel.directory()));
        if (!panel.nameFieldStringValue().isNull())
            selectFile(QFileInfo(panel.nameFieldStringValue()).fileName());
        if (isOpenPanel)
            watchTheChoice();
        if (above)
            above->installEventFilter(this);
    }

    PanelResult choice() const
    {
        return {m_isOpenPanel, m_isOpenPanel ? chosen() : QStringList(m_savePath), selectedNameFilter()};
    }

protected:
    void accept() override
    {
        if (!m_isOpenPanel) {
            save();
            return;
        }
        const QStringList paths = chosen();
        if (!isChoice(paths))
            return;
        // The toolkit's own enters a folder instead.
        if (m_canChooseDirectories && std::any_of(paths.begin(), paths.end(), isFolder))
            done(Accepted);
        else
            QFileDialog::accept();
    }

    // A window that closes cancels its panel; one that is minimised keeps it.
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched == parentWidget() && event->type() == QEvent::Hide && !event->spontaneous())
            reject();
        return QFileDialog::eventFilter(watched, event);
    }
    void hideEvent(QHideEvent *event) override
    {
        QFileDialog::hideEvent(event);
        if (m_question && !isVisible())
            m_question->close();
    }

private:
    static bool isFolder(const QString &path) { return QFileInfo(path).isDir(); }

    QLineEdit *nameField() const { return findChild<QLineEdit *>(QStringLiteral("fileNameEdit")); }
    QPushButton *confirmButton() const
    {
        return findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Open);
    }

    void showTypes()
    {
        if (m_types.isEmpty())
            return;
        QStringList patterns;
        for (const QString &type : std::as_const(m_types))
            patterns.append(QStringLiteral("*.") + type);
        QStringList filters{patterns.join(u' ')};
        if (m_allowsOtherFileTypes)
            filters.append(QFileDialog::tr("All Files (*)"));
        setNameFilters(filters);
    }

    void showTexts(const OZPanel &panel)
    {
        if (!panel.title().isNull())
            setWindowTitle(panel.title());
        if (!m_prompt.isNull())
            setLabelText(Accept, m_prompt);
        if (!panel.nameFieldLabel().isNull())
            setLabelText(FileName, panel.nameFieldLabel());
        if (panel.message().isNull())
            return;
        auto *message = new QLabel(panel.message());
        message->setObjectName(QStringLiteral("lblMessage"));
        message->setTextFormat(Qt::PlainText);
        message->setWordWrap(true);
        const QMargins margins = layout()->contentsMargins();
        message->setContentsMargins(margins.left(), margins.top(), margins.right(), 0);
        // The place of a menu bar, the whole of the panel's top edge, is free.
        layout()->setMenuBar(message);
    }

    // The toolkit judges what is selected by its own rules; the button follows these here, a moment later.
    void watchTheChoice()
    {
        connect(nameField(), &QLineEdit::textChanged, this, &FilePanel::updateConfirmButton);
        const auto *list = findChild<QListView *>(QStringLiteral("listView"));
        connect(list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
                &FilePanel::updateConfirmButton);
        // A folder that is entered keeps the toolkit busy with the button until it is shown.
        const auto *files = findChild<QFileSystemModel *>(QStringLiteral("qt_filesystem_model"));
        connect(files, &QFileSystemModel::rootPathChanged, this, &FilePanel::updateConfirmButton,
                Qt::QueuedConnection);
        connect(this, &QFileDialog::directoryEntered, this, &FilePanel::updateConfirmButton,
                Qt::QueuedConnection);
        updateConfirmButton();
    }

    void updateConfirmButton()
    {
        confirmButton()->setEnabled(isChoice(chosen()));
        if (m_canChooseDirectories && !m_prompt.isNull())
            setLabelText(Accept, m_prompt); // "Open" while a folder is selected
    }

    QStringList chosen() const
    {
        QStringList paths = selectedFiles();
        // "Computer" lists the drives and is no folder.
        if (paths.isEmpty() && m_canChooseDirectories && directory().isAbsolute())
            paths.append(directory().absolutePath());
        for (QString &path : paths)
            path = QDir::cleanPath(path);
        return paths;
    }

    // Whether confirming does something: a folder that may not be chosen is entered.
    bool isChoice(const QStringList &paths) const
    {
        const auto isAllowed = [this](const QString &path) {
            return isFolder(path) || (QFileInfo::exists(path) && (m_allowsOtherFileTypes || isOfType(path)));
        };
        return !paths.isEmpty() && (paths.size() == 1 || m_allowsMultipleSelection)
            && std::all_of(paths.begin(), paths.end(), isAllowed);
    }

    bool isOfType(const QString &path) const
    {
        return m_types.isEmpty() || std::any_of(m_types.begin(), m_types.end(), [&path](const QString &type) {
                   return path.endsWith(u'.' + type, Qt::CaseInsensitive);
               });
    }

    // The toolkit's own questions and menus wait inside it for their answer, and it would crash when it goes
    // meanwhile: with its owner, its window or its wrapper. So its menus, deleting and renaming are off.
    void dropNestedLoops()
    {
        setOption(DontConfirmOverwrite);
        // New folders are for save panels only.
        setOption(ReadOnly, m_isOpenPanel);
        const QList<QAbstractItemView *> views{findChild<QListView *>(QStringLiteral("listView")),
                                               findChild<QTreeView *>(QStringLiteral("treeView"))};
        for (QAbstractItemView *view : views) {
            view->setContextMenuPolicy(Qt::NoContextMenu);
            view->setEditTriggers(QAbstractItemView::NoEditTriggers);
            const auto shortcuts = view->findChildren<QShortcut *>();
            for (QShortcut *shortcut : shortcuts) {
                if (shortcut->key() == QKeySequence(Qt::Key_Delete))
                    shortcut->setEnabled(false);
            }
        }
    }

    void save()
    {
        if (m_question)
            return;
        QItemSelectionModel *selection = findChild<QListView *>(QStringLiteral("listView"))->selectionModel();
        if (selection->hasSelection() && isFolder(selectedFiles().constFirst())) {
            QFileDialog::accept(); // enters it
            return;
        }
        // The name counts, and a selected file of a similar name would win over it.
        selection->clearSelection();
        const QString named = namedPath();
        if (isFolder(named)) {
            setDirectory(QDir::cleanPath(named));
            return;
        }
        const QString path = completed(named);
        if (!path.isEmpty() && QFileInfo::exists(path))
            askToReplace(path);
        else if (!path.isEmpty())
            confirmSave(path);
    }

    // Empty where there is no telling which folder a name is for: "Computer" is none.
    QString namedPath() const
    {
        QString name = nameField()->text();
        if (name.isEmpty() || (!directory().isAbsolute() && QDir::isRelativePath(name)))
            return {};
        if (!name.contains(u'"'))
            return selectedFiles().value(0); // with "~" followed
        // The toolkit quotes names; any other quotation mark is a character of the name.
        if (name.size() > 2 && name.startsWith(u'"') && name.indexOf(u'"', 1) == name.size() - 1)
            name = name.mid(1, name.size() - 2);
        return directory().absoluteFilePath(name);
    }

    // The path with the first type where it needs one; empty where no file of that name can be made.
    QString completed(QString path) const
    {
        if (path.isEmpty())
            return {};
        const bool isFree = m_allowsOtherFileTypes && !QFileInfo(path).suffix().isEmpty();
        if (!isOfType(path) && !isFree) {
            while (path.endsWith(u'.'))
                path.chop(1);
            if (!path.endsWith(u'/'))
                path += u'.' + m_types.constFirst();
        }
        const QFileInfo file(path);
        const qsizetype length = QFile::encodeName(file.fileName()).size();
        if (length == 0 || length > NAME_MAX || !isFolder(file.absolutePath()))
            return {};
        return QDir::cleanPath(path);
    }

    void askToReplace(const QString &path)
    {
        const QString text = QFileDialog::tr("%1 already exists.\nDo you want to replace it?");
        m_question
            = new QMessageBox(QMessageBox::Warning, windowTitle(), text.arg(QFileInfo(path).fileName()),
                              QMessageBox::Yes | QMessageBox::No, this);
        m_question->setAttribute(Qt::WA_DeleteOnClose);
        m_question->setTextFormat(Qt::PlainText);
        m_question->setDefaultButton(QMessageBox::No);
        connect(m_question, &QDialog::finished, this, [this, path](int answer) {
            // One that is closed with the panel answers nothing.
            if (answer == QMessageBox::Yes && isVisible())
                confirmSave(path);
        });
        m_question->open();
    }

    void confirmSave(const QString &path)
    {
        m_savePath = path;
        done(Accepted);
    }

    QStringList m_types;
    QString m_prompt;
    bool m_isOpenPanel;
    bool m_canChooseDirectories;
    bool m_allowsMultipleSelection;
    bool m_allowsOtherFileTypes;
    QPointer<QMessageBox> m_question; // whether the file may be replaced
    QString m_savePath;
};
} // namespace

OZPanel::OZPanel(QObject *parent)
    : QObject(parent)
{
}

void OZPanel::runModel()
{
    QMetaObject::invokeMethod(this, m_isOpenPanel ? &OZPanel::startOpenPanel : &OZPanel::startSavePanel,
                              Qt::QueuedConnection);
}

void OZPanel::startOpenPanel()
{
    start(true);
}

void OZPanel::startSavePanel()
{
    start(false);
}

void OZPanel::start(bool isOpenPanel)
{
    auto *panel = new FilePanel(*this, isOpenPanel, m_ower ? m_ower->window() : nullptr);
    connect(panel, &QDialog::finished, this, [this, panel](int returnCode) {
        if (returnCode != QDialog::Accepted)
            return;
        const PanelResult choice = panel->choice();
        choice.isOpenPanel ? openPanelDidEnd(choice, returnCode, nullptr)
                           : savePanelDidEnd(choice, returnCode, nullptr);
    });
    const auto closeWith = [panel](const QObject *other) {
        connect(other, &QObject::destroyed, panel, &QWidget::hide);
        connect(other, &QObject::destroyed, panel, &QObject::deleteLater);
    };
    closeWith(this);
    if (m_ower)
        closeWith(m_ower);
    panel->open();
}

void OZPanel::openPanelDidEnd(const PanelResult &panel, int returnCode, void *) const
{
    if (returnCode != 0)
        tellOwner(panel);
}

void OZPanel::savePanelDidEnd(const PanelResult &panel, int returnCode, void *) const
{
    if (returnCode != 0)
        tellOwner(panel);
}

void OZPanel::tellOwner(const PanelResult &panel) const
{
    auto *receiver = dynamic_cast<AsyncReceiver *>(m_ower.data());
    auto *open = dynamic_cast<OpenPanelReceiver *>(m_ower.data());
    auto *save = dynamic_cast<SavePanelReceiver *>(m_ower.data());
    if (!receiver) {
        if (m_ower && m_endPanelSelector)
            logWarn("OZPanel: the owner %s is no AsyncReceiver, its endPanelSelector is not called",
                    m_ower->metaObject()->className());
        return;
    }
    // A result for which no thread can be had is dropped.
    AsyncScope &scope = receiver->asyncScope();
    if (m_endPanelSelector)
        scope.spawn([selector = m_endPanelSelector, panel] { selector(panel); });
    else if (open && panel.isOpenPanel)
        scope.spawn([open, panel] { open->endOpenPanel(panel); });
    else if (open && save)
        scope.spawn([save, panel] { save->endSavePanel(panel); });
}
