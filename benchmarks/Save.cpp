// All that one keystroke in the editor writes, against writing the same files when their bytes are known.
#include "benchmarks/Comparison.h"

#include "Classes/Delegate/PluginSettingsInfo.h"
#include "benchmarks/Documents.h"
#include "platform/File.h"

#include <QTemporaryDir>
#include <memory>

namespace
{

// A workspace and the person's hand in it.
class Session
{
public:
    explicit Session(qint64 items)
    {
        if (!m_folder.isValid())
            qFatal("no temporary folder: %s", qPrintable(m_folder.errorString()));
        m_info.setWorkSpace(m_folder.path());
        m_info.setIdentifier(QStringLiteral("linklist"));
        const QByteArray document = Documents::withLinks(Documents::links(items));
        const bool isReady = File::write(in(LinkListDocument::fileName()), document)
            && File::copy(bundled(QStringLiteral("html/index.html")), in(QStringLiteral("index.html")));
        const auto parsed = m_info.getXMLFromWorkspace();
        if (!isReady || !parsed)
            qFatal("the workspace cannot be prepared");
        m_settings = LinkListDocument::read(parsed->document_element());
        m_rect.setLeft(10);
        m_rect.setRight(60);
    }

    // One more letter in the heading.
    void type()
    {
        m_settings.titleContent = QStringLiteral("Further reading ") + QString::number(m_letters++ % 10);
    }

    // What the editor and the settings window do together when a field changed.
    void save()
    {
        const QString page = QStringLiteral("html/index.html");
        const bool isSaved
            = LinkListDocument::save(m_settings, in(LinkListDocument::fileName()),
                                     bundled(QStringLiteral("data/") + LinkListDocument::fileName()))
                == LinkListDocument::SaveResult::Saved
            && m_rect.saveToFile(in(QStringLiteral("settings.dat")))
            && File::exists(in(QStringLiteral("index.html")))
            && File::readText(bundled(page)) == File::readText(in(QStringLiteral("index.html")))
            && m_info.generateJSConfig(QString());
        if (!isSaved)
            qFatal("the workspace cannot be saved");
    }

    // The files that a save writes, as they are now.
    void keep()
    {
        m_files.clear();
        for (const QString &name :
             {LinkListDocument::fileName(), QStringLiteral("settings.dat"), QStringLiteral("config.js")})
            m_files.append({in(name), File::readBytes(in(name)).value_or(QByteArray())});
    }

    void writeKept() const
    {
        for (const auto &[path, content] : m_files) {
            if (content.isEmpty() || !File::write(path, content))
                qFatal("%s cannot be written", qPrintable(path));
        }
    }

private:
    QString in(const QString &name) const { return File::joined(m_folder.path(), name); }
    static QString bundled(const QString &name) { return File::joined(Documents::resources(), name); }

    QTemporaryDir m_folder;
    PluginSettingsInfo m_info;
    LinkListSettings m_settings;
    PositionRect m_rect;
    QList<std::pair<QString, QByteArray>> m_files;
    int m_letters = 0;
};

Sides make(qint64 items)
{
    const auto session = std::make_shared<Session>(items);
    session->save();
    session->keep();
    Side ours;
    ours.prepare = [session] { session->type(); };
    ours.run = [session] { session->save(); };
    Side yardstick;
    yardstick.run = [session] { session->writeKept(); };
    return {ours, yardstick};
}

} // namespace

std::vector<Comparison> saveComparisons()
{
    constexpr double limit = 3;
    constexpr double none = 0;
    const std::string name = "Save";
    return {
        {name, 10, none, 101, 5, [] { return make(10); }},
        {name, 1'000, limit, 101, 5, [] { return make(1'000); }},
        {name, 100'000, none, 11, 1, [] { return make(100'000); }},
    };
}
