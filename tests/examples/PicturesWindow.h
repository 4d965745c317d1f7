#include "Classes/Delegate/DragDrop/DragFileImport.h"
#include "Classes/Delegate/TableViewProtocol.h"
#include "Classes/Mode/Log/Log.h"
#include "Classes/Mode/OZPanel.h"
#include "platform/NotificationCenter.h"

#include <QTableView>

// Collects pictures: chosen in a panel, dropped on the window, or picked from a table of those that are
// known.
class PicturesWindow : public WindowController, public OpenPanelReceiver, public TableSelectionReceiver
{
public:
    QStringList pictures() const { return m_pictures; }

    void choosePictures() { m_panel.runModel(); }

    // <pictures><picture title="Cover" file="/pictures/cover.jpg"/>...</pictures>
    void showKnownPictures(const pugi::xml_node &pictures)
    {
        m_table.listFromElement(pictures, TableViewProtocol::Attributes);
    }

    // Both run on threads of their own: they touch nothing but their values, and hand the rest to the main
    // thread.
    void endOpenPanel(const PanelResult &panel) override { addLater(panel.paths); }
    void tableViewSelectionDidChange(const TableSelection &selection) override
    {
        QStringList paths;
        for (const TableRow &row : selection.values)
            paths.append(row.value(QStringLiteral("file")));
        addLater(paths);
    }
    AsyncScope &asyncScope() override { return m_scope; }

protected:
    void awakeFromNib() override
    {
        m_panel.setOwer(this);
        m_panel.setIsOpenPanel(true);
        m_panel.setTypes({QStringLiteral("jpg"), QStringLiteral("png")});
        m_panel.setMessage(QStringLiteral("Choose pictures, or a folder of them."));
        m_panel.setCanChooseDirectories(true);
        m_panel.setAllowsMultipleSelection(true);

        m_table.setOwer(this);
        if (auto *view = outlet<QTableView>("tableView"))
            m_table.showIn(view);

        // Last among the window's children, so that it lies above them; clicks pass through it.
        auto *target = new DragFileImport(window()->rect(), window());
        target->setFilters({QStringLiteral("jpg"), QStringLiteral("png")});
        NotificationCenter::defaultCenter().addObserver(
            this, DragReportNotification, [this, target](QObject *) { add(target->dragResult()); }, target);
    }

private:
    void addLater(const QStringList &paths)
    {
        QMetaObject::invokeMethod(
            this, [this, paths] { add(paths); }, Qt::QueuedConnection);
    }
    void add(const QStringList &paths)
    {
        m_pictures += paths;
        logSave("%d pictures, the last is %s", int(m_pictures.size()),
                qUtf8Printable(m_pictures.isEmpty() ? QString() : m_pictures.constLast()));
    }

    QStringList m_pictures;
    OZPanel m_panel;
    TableViewProtocol m_table;
    AsyncScope m_scope; // the last member, so that it goes first
};
