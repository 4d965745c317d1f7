#pragma once

#include "linklist/LinkListDocument.h"

#include <QPersistentModelIndex>
#include <QPointer>
#include <QStringList>
#include <QWidget>

class ColorButtonCell;
class ColorPanelDelegate;
class DragDeleteDelegate;
class DragDeleteDetectView;
class LinkCellDelegate;
class LinkListModel;
class QLabel;
class QAbstractButton;
class QLineEdit;
class QMimeData;
class QTableView;
class Stepper;

// Who is told that the link list was saved. Not owned by the view; outlives it or is unset first.
class PrivateViewDelete
{
public:
    virtual ~PrivateViewDelete() = default;
    virtual void saveGlobalSettings() = 0;
};

// The link-list editor: heading, font sizes, colours, the table of links and two fields for the selected one.
// It shows the settings document of the workspace and writes every completed change back to it at once. Its
// parts are found by their object names in the interface file that it came from, and any of them may be
// missing there.
class PrivateView : public QWidget
{
    Q_OBJECT

public:
    explicit PrivateView(QWidget *parent = nullptr);
    ~PrivateView() override;

    QString workSpace() const { return m_workSpace; }
    void setWorkSpace(const QString &workSpace) { m_workSpace = workSpace; }
    QString bundlePath() const { return m_bundlePath; }
    void setBundlePath(const QString &bundlePath) { m_bundlePath = bundlePath; }
    PrivateViewDelete *ower() const { return m_ower; }
    void setOwer(PrivateViewDelete *ower) { m_ower = ower; }

    // After workspace, bundle and owner are set: prepares the workspace and shows its document. A second time
    // shows it anew.
    void loadDispInfo();

    // Shows a parsed document, given its root; its items are added behind those that are there.
    void loadPrivateSetting(const pugi::xml_node &element);
    // Merges what is shown into a parsed document, given its root. False when it has no place for a link
    // list.
    bool savePrivateSetting(const pugi::xml_node &element) const;

    // Saves the document and asks the owner to save the global settings. False, and nothing is done, once
    // editing has ended, without a workspace folder or without any document that can be read; false also when
    // the file could not be written, of which the owner is told all the same.
    bool onSave(QObject *sender = nullptr);

    QString settingFileInWorkspace() const;
    QString settingFileInApp() const;
    // Copies a file into the workspace, while that may be edited.
    bool saveFile2Workspace(const QString &path);
    // Files in the workspace that the list refers to, by relative names. A list of links refers to none.
    QStringList locateFiles() const { return m_files; }
    static QString convertHttpFormat(const QString &link)
    {
        return LinkListDocument::convertHttpFormat(link);
    }

    // Whether the preview may follow a link to the web: never.
    bool ignoreOpenURL() const { return false; }

    // The text without anything but the digits 0 to 9.
    static QString stringWithNumber(const QString &text);

    // A field's text has changed by typing; its editing has ended.
    void controlTextDidChange(QWidget *field);
    void controlTextDidEndEditing(QWidget *field);
    void onStepperChange(Stepper *sender);

    // The table's buttons. Removing asks first; moving gathers the selected rows into one block.
    void onAdd(QObject *sender = nullptr);
    void onRemove(QObject *sender = nullptr);
    void onMoveUp(QObject *sender = nullptr);
    void onMoveDown(QObject *sender = nullptr);
    void checkButtonStatus();
    // Shows the selected row's item in the two fields.
    void refreshEditInfo();
    // A cell was edited: the title as typed, the link normalised. Nothing happens outside the table.
    void setObjectValue(const QString &value, int column, int row);
    // The current row if it is selected, else the highest selected one; -1 for none.
    int selectedRow() const;

    // Lets the person choose the button's colour. The window is raised meanwhile and floats afterwards.
    void onOpenColorPanel(ColorButtonCell *button);
    void onChangeColor(ColorButtonCell *button);
    void onChangedPanelColor(ColorPanelDelegate *chooser);
    void refreshCellColor(ColorPanelDelegate *chooser);

    // Rows of the table that are dragged. They move when they are dropped in the table, and are deleted
    // without a question when they are dropped anywhere outside it. What another table asks is refused.
    // Begins a drag of those rows: puts them on the pasteboard and makes the window ready that catches them
    // outside.
    bool writeRowsWithIndexes(QTableView *table, const QList<int> &rows, QMimeData *pasteboard);
    Qt::DropActions validateDrop(const QTableView *table, const QMimeData *pasteboard) const;
    // Drops them before that row, or behind the last.
    bool acceptDrop(const QTableView *table, const QMimeData *pasteboard, int row);
    // Closes the window that catches rows outside; nothing happens when it is not shown.
    void onDeleteWindowDismiss(QObject *sender = nullptr);
    // A catching window's drag has ended: deletes what was dropped into this view's own one.
    void DeleteWindowDragEndA(QObject *window);
    // The puff of smoke is over.
    void deleteAnimationEnd(void *context);
    // Ends a drag of rows that is under way, and leaves them where they are.
    void cancelDrag();
    // Lets the view's window notice rows that leave the table; nothing happens while the view stands in none.
    // Done when the view is shown, or before by whoever puts it into a window.
    void addDragDetection();
    DragDeleteDetectView *dragDeleteView() const;
    DragDeleteDelegate *DragDeleteCtrl() const;

    // Commits what is still being edited and saves it where that changed something.
    void commitEditing();
    // After this nothing is saved any more, whoever asks for it; for a window that is about to close. What a
    // closed window still shows is not what the workspace holds.
    void endEditing();

    const LinkListModel *model() const { return m_model; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    struct FontSize {
        QPointer<QLineEdit> field;
        QPointer<Stepper> stepper;
    };

    void findOutlets();
    void connectFields();
    void connectButtons();
    void setUpTable();
    void addShortcuts();
    void showHint();
    QList<int> selectedRows() const;
    void selectRows(const QList<int> &rows);
    void scheduleEditInfo();
    void move(QList<int> (LinkListModel::*step)(const QList<int> &));
    LinkListSettings settings() const;
    void showFontSize(const FontSize &size, const QString &text);
    bool completeFontSize(const FontSize &size);
    void dragRows(const QList<int> &rows);
    QPixmap pictureOfRows(const QList<int> &rows) const;
    void showDroppedRows(const QList<int> &rows);

    QString m_workSpace;
    QString m_bundlePath;
    PrivateViewDelete *m_ower = nullptr;
    QStringList m_files;
    LinkListModel *m_model;
    bool m_isEditable = true;
    bool m_isConnected = false;

    QPointer<QLineEdit> m_titleContent;
    FontSize m_titleSize;
    FontSize m_bodySize;
    QPointer<ColorButtonCell> m_titleColor;
    QPointer<ColorButtonCell> m_bodyColor;
    QPointer<QTableView> m_tableView;
    QPointer<QLabel> m_hint;
    QPointer<QLineEdit> m_content;
    QPointer<QLineEdit> m_link;
    QPointer<QAbstractButton> m_save;
    QPointer<QAbstractButton> m_add;
    QPointer<QAbstractButton> m_remove;
    QPointer<QAbstractButton> m_moveUp;
    QPointer<QAbstractButton> m_moveDown;
    LinkCellDelegate *m_cells;
    // The item shown in the two fields; it follows its row.
    QPersistentModelIndex m_selectedItem;
    bool m_isEditInfoDue = false;
    // The field in which something was typed since its last edit ended.
    QPointer<QLineEdit> m_edited;
    QPointer<DragDeleteDetectView> m_dragDeleteView;
    QPointer<DragDeleteDelegate> m_dragDeleteCtrl;
    bool m_isAddingDetection = false;
    bool m_isDragging = false;
    // What the document told and no part of the interface shows: kept as it was.
    LinkListSettings m_loaded;
};
