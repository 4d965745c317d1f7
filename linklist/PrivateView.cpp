#include "linklist/PrivateView.h"

#include "Classes/Delegate/PluginSettingsInfo.h"
#include "linklist/LinkCellDelegate.h"
#include "linklist/LinkListModel.h"
#include "platform/Bundle.h"
#include "platform/File.h"
#include "platform/ui/Field.h"
#include "platform/ui/Stepper.h"
#include "text/ColorButtonCell.h"

#include <QAbstractButton>
#include <QHeaderView>
#include <QLineEdit>
#include <QPainter>
#include <QTableView>
#include <utility>

PrivateView::PrivateView(QWidget *parent)
    : QWidget(parent)
    , m_model(new LinkListModel(this))
    , m_cells(new LinkCellDelegate(this))
{
}

void PrivateView::findOutlets()
{
    const auto find = [this]<typename T>(QPointer<T> &outlet, const char *name) {
        outlet = findChild<T *>(QLatin1String(name));
    };
    find(m_titleContent, "txtTitleContent");
    find(m_titleSize.field, "txtTitleFontSize");
    find(m_titleSize.stepper, "stTitleFontSize");
    find(m_titleColor, "btnTitleFontColor");
    find(m_bodySize.field, "txtBodyFontSize");
    find(m_bodySize.stepper, "stBodyFontSize");
    find(m_bodyColor, "btnBodyFontColor");
    find(m_tableView, "tableView");
    find(m_content, "txtContent");
    find(m_link, "txtLink");
    find(m_save, "btnSave");
    find(m_add, "btnAdd");
    find(m_remove, "btnRemove");
    find(m_moveUp, "btnMoveUp");
    find(m_moveDown, "btnMoveDown");
}

void PrivateView::loadDispInfo()
{
    m_files.clear();
    m_model->clear();
    findOutlets();
    PluginSettingsInfo info;
    info.setWorkSpace(m_workSpace);
    info.setIdentifier(QStringLiteral("linklist"));
    info.setBundlePath(m_bundlePath);
    // A workspace that cannot be prepared shows as an empty editor, which saves nothing.
    info.loadWorkspace();
    if (const std::unique_ptr<pugi::xml_document> document = info.getXMLFromWorkspace())
        loadPrivateSetting(document->document_element());

    if (!std::exchange(m_isConnected, true)) {
        connectFields();
        connectButtons();
        setUpTable();
    }
    addDragDetection();
    refreshEditInfo();
}

void PrivateView::loadPrivateSetting(const pugi::xml_node &element)
{
    findOutlets();
    m_loaded = LinkListDocument::read(element);
    if (m_loaded.titleContent)
        Field::putText(m_titleContent, *m_loaded.titleContent);
    if (m_loaded.titleFontSize)
        showFontSize(m_titleSize, *m_loaded.titleFontSize);
    if (m_loaded.bodyFontSize)
        showFontSize(m_bodySize, *m_loaded.bodyFontSize);
    if (m_titleColor && m_loaded.titleColor)
        m_titleColor->setBackgroundColor(m_loaded.titleColor);
    if (m_bodyColor && m_loaded.bodyColor)
        m_bodyColor->setBackgroundColor(m_loaded.bodyColor);
    m_model->append(m_loaded.items);
}

LinkListSettings PrivateView::settings() const
{
    LinkListSettings settings = m_loaded;
    if (m_titleContent)
        settings.titleContent = m_titleContent->text();
    if (m_titleSize.field)
        settings.titleFontSize = m_titleSize.field->text();
    if (m_bodySize.field)
        settings.bodyFontSize = m_bodySize.field->text();
    if (m_titleColor)
        settings.titleColor = m_titleColor->backgroundColor();
    if (m_bodyColor)
        settings.bodyColor = m_bodyColor->backgroundColor();
    settings.items = m_model->items();
    return settings;
}

bool PrivateView::savePrivateSetting(const pugi::xml_node &element) const
{
    return LinkListDocument::write(element, settings());
}

bool PrivateView::onSave(QObject *)
{
    if (!m_isEditable || !File::isFolder(m_workSpace))
        return false;
    const auto result = LinkListDocument::save(settings(), settingFileInWorkspace(), settingFileInApp());
    if (result == LinkListDocument::SaveResult::NoDocument)
        return false;
    try {
        if (m_ower)
            m_ower->saveGlobalSettings();
    } catch (...) {
        // The list is saved all the same, and nothing may leave an event handler.
    }
    return result == LinkListDocument::SaveResult::Saved;
}

QString PrivateView::settingFileInWorkspace() const
{
    return File::joined(m_workSpace, LinkListDocument::fileName());
}

QString PrivateView::settingFileInApp() const
{
    const Bundle bundle = File::exists(m_bundlePath) ? Bundle(m_bundlePath) : Bundle::mainBundle();
    return File::joined(bundle.resourcePath(), QStringLiteral("data/") + LinkListDocument::fileName());
}

bool PrivateView::saveFile2Workspace(const QString &path)
{
    return m_isEditable && LinkListDocument::saveFile2Workspace(path, m_workSpace);
}

void PrivateView::paintEvent(QPaintEvent *)
{
    constexpr qreal cornerRadius = 4;
    constexpr qreal lineWidth = 2;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::gray, lineWidth));
    constexpr qreal inset = lineWidth / 2;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), cornerRadius,
                            cornerRadius);
}
