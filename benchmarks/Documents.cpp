#include "benchmarks/Documents.h"

#include "Classes/Delegate/PluginSettingsInfo.h"
#include "Classes/Mode/Xml.h"
#include "platform/File.h"

namespace Documents
{

namespace
{
QString titleOf(qint64 number)
{
    const QString count = QString::number(number);
    switch (number % 5) {
    case 0:
        return QStringLiteral("Chapter ") + count + QStringLiteral(": \"Notes & Queries\" <draft>");
    case 1:
        return QStringLiteral("Über die Gärten von Kyōto (京都), Teil ") + count;
    default:
        return QStringLiteral("Further reading on the subject of page ") + count;
    }
}

QString linkOf(qint64 number)
{
    const QString count = QString::number(number);
    const QString address = QStringLiteral("https://www.example.com/books/reading-list/") + count;
    return number % 2 == 0 ? address : address + QStringLiteral("?edition=2&lang=en");
}
} // namespace

QList<LinkItem> links(qint64 count)
{
    QList<LinkItem> result;
    result.reserve(count);
    for (qint64 number = 0; number < count; ++number)
        result.append({titleOf(number), linkOf(number)});
    return result;
}

QByteArray withLinks(const QList<LinkItem> &links)
{
    const Xml::ParseResult parsed
        = Xml::parseFile(File::joined(resources(), QStringLiteral("data/") + LinkListDocument::fileName()));
    if (!parsed)
        qFatal("the starting document: %s", qPrintable(parsed.reason));
    const pugi::xml_node root = parsed.document->document_element();
    LinkListSettings settings = LinkListDocument::read(root);
    settings.items = links;
    LinkListDocument::write(root, settings);
    return Xml::serialize(root);
}

QByteArray configurationOf(QByteArrayView document)
{
    return PluginSettingsInfo().jsonFromDocument(document, QString()).value();
}

QString resources()
{
    return QStringLiteral(LINKLIST_RESOURCES_DIR);
}

} // namespace Documents
