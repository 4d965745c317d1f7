// The module's entry point: makes sessions for a host, and nothing else.
#include "Classes/Delegate/PluginSettingsDelegate/PluginSettingsDelegate.h"
#include "Classes/Delegate/PluginSettingsInfo.h"
#include "Classes/Mode/Locale.h"
#include "plugin/PluginSettingsInterface.h"

namespace
{

class Session : public PluginSettings
{
public:
    explicit Session(std::unique_ptr<PluginSettingsDelegate> controller)
        : m_controller(std::move(controller))
    {
    }

    void setWorkSpace(const QString &workSpace) override { m_controller->setWorkSpace(workSpace); }
    QString workSpace() const override { return m_controller->workSpace(); }
    void setModalMode(bool modal) override { m_controller->setModalMode(modal); }
    QWidget *window() override { return m_controller->window(); }
    void showWindow() override { m_controller->showWindow(); }
    qint64 runModal() override { return m_controller->runModal(); }
    qint64 closeMode() const override { return m_controller->closeMode(); }
    void setCloseMode(qint64 mode) override { m_controller->setCloseMode(mode); }
    bool isCloseBundle() const override { return m_controller->isCloseBundle(); }

private:
    std::unique_ptr<PluginSettingsDelegate> m_controller;
};

} // namespace

class LinkListPlugin : public QObject, public PluginSettingsInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID PluginSettingsInterface_iid FILE "linklist.json")
    Q_INTERFACES(PluginSettingsInterface)

public:
    std::unique_ptr<PluginSettings> initWithLanguageCode(const QString &languageCode,
                                                         const QString &bundlePath) override
    {
        auto controller = PluginSettingsDelegate::initWithLanguageCode(languageCode, bundlePath);
        if (!controller)
            return nullptr;
        return std::make_unique<Session>(std::move(controller));
    }

    QString getSavePluginPath() const override { return PluginSettingsInfo::getSavePluginPath(); }

    bool convertPluginToPath(const QString &workSpace, const QString &bundlePath,
                             const QString &destination) const override
    {
        PluginSettingsInfo info;
        info.setWorkSpace(workSpace);
        info.setBundlePath(bundlePath);
        return info.convertPluginToPath(destination);
    }
};

#include "LinkListPlugin.moc"
