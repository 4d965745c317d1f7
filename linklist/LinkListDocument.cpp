#include "linklist/LinkListDocument.h"

#include "Classes/Mode/LastDocument.h"
#include "Classes/Mode/UtilityFunction.h"
#include "Classes/Mode/Xml.h"
#include "platform/File.h"

#include <QFileInfo>
#include <algorithm>
#include <array>

namespace LinkListDocument
{

namespace
{
pugi::xml_node extendedOf(const pugi::xml_node &root)
{
    return Xml::lastChild(Xml::lastChild(root, "properties"), "extended");
}

std::optional<QString> textOf(const pugi::xml_node &parent, const char *name)
{
    const pugi::xml_node child = Xml::lastChild(parent, name);
    return child ? std::optional(Xml::text(child)) : std::nullopt;
}

std::optional<Color> colorOf(const pugi::xml_node &parent)
{
    const std::optional<QString> text = textOf(parent, "color");
    return text ? std::optional(MyColorOper::colorFromHexRGB(*text)) : std::nullopt;
}

QString colorText(const std::optional<Color> &color)
{
    return UtilityFunction::colorToHexRGB(color.value_or(Color()));
}

void update(const pugi::xml_node &parent, const char *name, const QString &text)
{
    if (const pugi::xml_node child = Xml::lastChild(parent, name))
        Xml::setText(child, text);
}

void writeTitle(pugi::xml_node extended, const LinkListSettings &settings)
{
    const QString content = settings.titleContent.value_or(QString());
    const QString fontSize = settings.titleFontSize.value_or(QString());
    const QString color = colorText(settings.titleColor);
    if (const pugi::xml_node title = Xml::lastChild(extended, "title")) {
        update(title, "content", content);
        update(title, "fontSize", fontSize);
        update(title, "color", color);
        return;
    }
    const pugi::xml_node title = extended.append_child("title");
    generateXmlWithType(title, "content", content, "text");
    generateXmlWithType(title, "fontSize", fontSize, "number");
    generateXmlWithType(title, "color", color, "color");
}

// Answers the element that takes the items; a null node when there is none.
pugi::xml_node writeBody(pugi::xml_node extended, const LinkListSettings &settings)
{
    const QString fontSize = settings.bodyFontSize.value_or(QString());
    const QString color = colorText(settings.bodyColor);
    if (const pugi::xml_node body = Xml::lastChild(extended, "body")) {
        update(body, "fontSize", fontSize);
        update(body, "color", color);
        return Xml::lastChild(body, "content");
    }
    pugi::xml_node body = extended.append_child("body");
    generateXmlWithType(body, "fontSize", fontSize, "number");
    generateXmlWithType(body, "color", color, "color");
    return body.append_child("content");
}
// Whether the node is what generateXmlWithType would make.
bool isTextLeaf(const pugi::xml_node &node, std::string_view name, const QString &text)
{
    const pugi::xml_attribute type = node.first_attribute();
    const pugi::xml_node child = node.first_child();
    const bool isInOnePiece
        = child ? child.type() == pugi::node_pcdata && !child.next_sibling() && *node.value() == '\0' : true;
    return node.name() == name && std::string_view(type.name()) == "type"
        && std::string_view(type.value()) == "text" && !type.next_attribute() && isInOnePiece
        && QAnyStringView(Xml::cleaned(text)) == QUtf8StringView(child ? child.value() : node.value());
}

bool isItem(const pugi::xml_node &node, const LinkItem &item)
{
    const pugi::xml_node link = node.first_child();
    const pugi::xml_node title = link.next_sibling();
    return std::string_view(node.name()) == "item" && !node.first_attribute() && *node.value() == '\0'
        && isTextLeaf(link, "link", item.link) && isTextLeaf(title, "title", item.title)
        && !title.next_sibling();
}

// Makes the items all that is in the element. An edit nearly always leaves most of them as they are: those
// that come before the first difference stay.
void writeItems(pugi::xml_node content, const QList<LinkItem> &items)
{
    pugi::xml_node node = *content.value() == '\0' ? content.first_child() : pugi::xml_node();
    auto item = items.begin();
    for (; item != items.end() && node && isItem(node, *item); ++item)
        node = node.next_sibling();
    if (item == items.begin()) {
        Xml::removeContent(content);
    } else {
        while (node) {
            const pugi::xml_node after = node.next_sibling();
            content.remove_child(node);
            node = after;
        }
    }
    for (; item != items.end(); ++item) {
        const pugi::xml_node element = content.append_child("item");
        generateXmlWithType(element, "link", item->link, "text");
        generateXmlWithType(element, "title", item->title, "text");
    }
}
} // namespace

QString fileName()
{
    return QStringLiteral("linklist.xml");
}

LinkListSettings read(const pugi::xml_node &root)
{
    LinkListSettings settings;
    const pugi::xml_node extended = extendedOf(root);
    const pugi::xml_node title = Xml::lastChild(extended, "title");
    settings.titleContent = textOf(title, "content");
    settings.titleFontSize = textOf(title, "fontSize");
    settings.titleColor = colorOf(title);
    const pugi::xml_node body = Xml::lastChild(extended, "body");
    settings.bodyFontSize = textOf(body, "fontSize");
    settings.bodyColor = colorOf(body);
    const pugi::xml_node content = Xml::lastChild(body, "content");
    for (const pugi::xml_node &item : content.children("item")) {
        if (item.type() == pugi::node_element)
            settings.items.append(
                {textOf(item, "title").value_or(QString()), textOf(item, "link").value_or(QString())});
    }
    return settings;
}

bool write(const pugi::xml_node &root, const LinkListSettings &settings)
{
    const pugi::xml_node extended = extendedOf(root);
    if (!extended)
        return false;
    writeTitle(extended, settings);
    pugi::xml_node content = writeBody(extended, settings);
    if (!content)
        return true;
    writeItems(content, settings.items);
    return true;
}

SaveResult save(const LinkListSettings &settings, const QString &path, const QString &defaultPath)
{
    Xml::ParseResult parsed;
    for (const QString &source : {path, defaultPath}) {
        const std::optional<QByteArray> bytes = parsed ? std::nullopt : Xml::readFile(source);
        if (bytes)
            parsed = Xml::checked(LastDocument::take(*bytes));
    }
    if (!parsed)
        return SaveResult::NoDocument;
    // A document without a place for the list is written back as it is.
    const pugi::xml_node root = parsed.document->document_element();
    // Blank text beside a new heading or body would count no longer when it is read again.
    const bool isReadAlike
        = Xml::lastChild(extendedOf(root), "title") && Xml::lastChild(extendedOf(root), "body");
    write(root, settings);
    const QByteArray utf8 = Xml::serialize(root);
    if (!File::write(path, utf8))
        return SaveResult::NotWritten;
    if (isReadAlike)
        LastDocument::keep(utf8, std::move(parsed.document));
    return SaveResult::Saved;
}

bool saveFile2Workspace(const QString &path, const QString &workSpace)
{
    if (!File::isUsableFolderPath(workSpace))
        return false;
    if (path.contains(workSpace))
        return true;
    const QString destination = File::joined(workSpace, QFileInfo(path).fileName());
    const QString backup = File::joined(workSpace, File::timeStamp());
    if (!QFileInfo(path).isFile())
        return false;
    const bool hasBackup = File::exists(destination) && QFile::rename(destination, backup);
    if (File::copy(path, destination))
        return true;
    if (hasBackup) {
        File::removeAll(destination);
        QFile::rename(backup, destination);
    }
    return false;
}

QString convertHttpFormat(const QString &link)
{
    static const std::array<QString, 3> schemes
        = {QStringLiteral("http:/"), QStringLiteral("https:/"), QStringLiteral("ftp:/")};
    const bool hasScheme = std::any_of(schemes.begin(), schemes.end(),
                                       [&link](const QString &scheme) { return link.contains(scheme); });
    return UtilityFunction::escapedUrlString(hasScheme ? link : QStringLiteral("http://") + link);
}

} // namespace LinkListDocument
