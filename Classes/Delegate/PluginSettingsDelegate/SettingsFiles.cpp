// The half of PluginSettingsDelegate that keeps controls, rectangle and workspace files in step.
#include "Classes/Delegate/PluginSettingsDelegate/PluginSettingsDelegate.h"

#include "Classes/Delegate/EditView/OZEditView.h"
#include "Classes/Delegate/PluginSettingsInfo.h"
#include "Classes/Mode/UtilityFunction.h"
#include "platform/Bundle.h"
#include "platform/File.h"
#include "platform/Number.h"
#include "platform/ui/Field.h"
#include "platform/ui/Matrix.h"
#include "platform/ui/Slider.h"

#include <QLineEdit>

namespace
{

// How every number is shown in a field.
QString shown(double value)
{
    return QString::fromLatin1(Number::fixed(value, 1));
}

} // namespace

const std::array<PluginSettingsDelegate::MarginField, 4> PluginSettingsDelegate::marginFields = {{
    {"txtLeft", &PositionRect::left, &PositionRect::setLeft},
    {"txtTop", &PositionRect::top, &PositionRect::setTop},
    {"txtRight", &PositionRect::right, &PositionRect::setRight},
    {"txtBottom", &PositionRect::bottom, &PositionRect::setBottom},
}};

void PluginSettingsDelegate::loadSettings()
{
    if (m_workSpace.isNull())
        return;
    const QString settings = inWorkspace("settings.dat");
    loadSettingFromFile(File::isFolder(m_workSpace) && File::exists(settings)
                            ? settings
                            : inWorkspace("defaultsettings.dat"));
}

bool PluginSettingsDelegate::loadSettingFromFile(const QString &path)
{
    const std::optional<PositionRect> rect
        = File::isUsableFolderPath(path) ? PositionRect::readFromFile(path) : std::nullopt;
    m_ptRect = rect.value_or(PositionRect());
    loadPositionView();
    showInPositionView();
    onChangePositionView();
    if (m_sldTrans)
        m_sldTrans->setDoubleValue(m_ptRect.transparency());
    Field::putText(m_txtTransparency, shown(m_ptRect.transparency()));
    if (m_matLayer)
        m_matLayer->selectCellWithTag(m_ptRect.layer());
    return rect.has_value();
}

// Once in a session.
void PluginSettingsDelegate::loadPositionView()
{
    if (m_positionView)
        return;
    m_positionView = new PositionView;
    replacePlaceholder("positionDrawView", m_positionView);
    m_positionView->setOwer(this);
}

void PluginSettingsDelegate::showInPositionView()
{
    if (!m_positionView)
        return;
    m_positionView->setPositionRect(m_ptRect);
    // The frame joins the window with its first box; Tab reaches it between the margins that surround it.
    QWidget *frame = m_positionView->objectView();
    QWidget *before = m_margins[0];
    if (before && frame->window() == before->window())
        QWidget::setTabOrder(before, frame);
}

// While the frame is dragged the fields follow it live; the save comes when it is let go.
void PluginSettingsDelegate::onChangePositionView()
{
    if (m_positionView)
        m_ptRect = m_positionView->getPositionRect();
    showMargins();
}

void PluginSettingsDelegate::didChangedPositionView()
{
    saveGlobalSettings();
}

void PluginSettingsDelegate::showMargins()
{
    for (size_t i = 0; i < marginFields.size(); ++i)
        Field::putText(m_margins[i], shown((m_ptRect.*marginFields[i].margin)()));
}

void PluginSettingsDelegate::saveGlobalSettings()
{
    if (m_isEnding)
        return;
    if (File::isFolder(m_workSpace)) {
        // A layer that no cell stands for was selected by nobody and stays.
        if (m_matLayer)
            m_ptRect.setLayer(m_matLayer->selectedTag().value_or(m_ptRect.layer()));
        m_ptRect.saveToFile(inWorkspace("settings.dat"));
        savePreviewPage();
        PluginSettingsInfo info;
        info.setWorkSpace(m_workSpace);
        info.setIdentifier(QStringLiteral("linklist"));
        info.setBundlePath(m_bundlePath);
        info.generateJSConfig(QString());
    }
    m_isChange = true;
}

// Brings the workspace's preview page up to the bundle's; a bundle without one leaves it alone.
bool PluginSettingsDelegate::savePreviewPage() const
{
    const QString source
        = File::joined(Bundle(m_bundlePath).resourcePath(), QStringLiteral("html/index.html"));
    const QString destination = inWorkspace("index.html");
    if (!File::exists(destination))
        return File::copy(source, destination);
    const std::optional<QString> page = File::readText(source);
    if (!page || page == File::readText(destination))
        return page.has_value();
    return File::write(destination, page->toUtf8());
}

void PluginSettingsDelegate::controlTextDidChange(QWidget *field)
{
    if (!field || m_isEnding)
        return;
    const auto corrected = [](QLineEdit *edit) {
        Field::putText(edit, checkStringFrom(edit->text()));
        return edit->text();
    };
    for (size_t i = 0; i < marginFields.size(); ++i) {
        if (field == m_margins[i]) {
            (m_ptRect.*marginFields[i].setMargin)(Number::toSingle(corrected(m_margins[i])));
            showInPositionView();
            saveGlobalSettings();
            return;
        }
    }
    if (field == m_txtTransparency) {
        const QString text = corrected(m_txtTransparency);
        m_ptRect.setTransparency(Number::toSingle(text));
        showInPositionView();
        if (m_sldTrans)
            m_sldTrans->setDoubleValue(Number::toDouble(text));
        saveGlobalSettings();
    }
}

QString PluginSettingsDelegate::checkStringFrom(const QString &text)
{
    return UtilityFunction::checkFloatValueStringFrom(text);
}

void PluginSettingsDelegate::onTransparency(QObject *)
{
    if (!m_sldTrans || m_isEnding)
        return;
    Field::putText(m_txtTransparency, shown(m_sldTrans->doubleValue()));
    m_ptRect.setTransparency(double(float(m_sldTrans->doubleValue())));
    showInPositionView();
    saveGlobalSettings();
}
