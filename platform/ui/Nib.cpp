#include "platform/ui/Nib.h"

#include "Classes/Mode/Locale.h"
#include "platform/Utf8.h"
#include "platform/ui/Matrix.h"
#include "platform/ui/Slider.h"
#include "platform/ui/Stepper.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QUiLoader>
#include <pugixml.hpp>

namespace
{
constexpr qint64 largestFile = 16 * 1024 * 1024;
constexpr int deepestElement = 256;

template <typename T>
QWidget *make(QWidget *parent)
{
    return new T(parent);
}

QHash<QString, Nib::Maker> &makers()
{
    static QHash<QString, Nib::Maker> registry{{QStringLiteral("Slider"), make<Slider>},
                                               {QStringLiteral("Stepper"), make<Stepper>},
                                               {QStringLiteral("Matrix"), make<Matrix>}};
    return registry;
}

class Loader : public QUiLoader
{
public:
    QWidget *createWidget(const QString &className, QWidget *parent, const QString &name) override
    {
        const Nib::Maker maker = makers().value(className);
        if (!maker)
            return QUiLoader::createWidget(className, parent, name);
        QWidget *widget = maker(parent);
        widget->setObjectName(name);
        return widget;
    }
};

// A loader under construction loads every Designer plug-in that it finds, the web engine's included. None is
// needed here.
std::unique_ptr<Loader> makeLoader()
{
    const QStringList paths = QCoreApplication::libraryPaths();
    QCoreApplication::setLibraryPaths({});
    auto loader = std::make_unique<Loader>();
    QCoreApplication::setLibraryPaths(paths);
    return loader;
}

bool isTranslatable(const pugi::xml_node &string)
{
    const pugi::xml_node owner = string.parent();
    const std::string_view property = owner.attribute("name").value();
    return std::string_view(string.name()) == "string" && !string.attribute("notr").as_bool()
        && !owner.attribute("notr").as_bool() && property != "objectName" && property != "styleSheet";
}

void translate(pugi::xml_node string)
{
    QByteArray source;
    for (const pugi::xml_node part : string) {
        if (part.type() == pugi::node_pcdata || part.type() == pugi::node_cdata)
            source += part.value();
    }
    const QString text = Utf8::decoded(source);
    if (text.isEmpty())
        return;
    string.text().set(loadAppString(text, text).toUtf8().constData());
    // The host's translators are not asked a second time.
    string.remove_attribute("notr");
    string.append_attribute("notr") = true;
    for (pugi::xml_node part = string.first_child().next_sibling(); part;) {
        const pugi::xml_node next = part.next_sibling();
        string.remove_child(part);
        part = next;
    }
}

struct Translator : pugi::xml_tree_walker {
    bool for_each(pugi::xml_node &node) override
    {
        if (depth() >= deepestElement)
            return false;
        if (isTranslatable(node))
            translate(node);
        return true;
    }
};

struct Writer : pugi::xml_writer {
    void write(const void *data, size_t size) override
    {
        bytes.append(static_cast<const char *>(data), qsizetype(size));
    }
    QByteArray bytes;
};

// The file with its texts translated, or an empty array and the reason.
QByteArray translated(const QByteArray &data, QString &error)
{
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_buffer(
        data.constData(), size_t(data.size()), pugi::parse_default | pugi::parse_ws_pcdata_single);
    if (!parsed) {
        error = QStringLiteral("not well-formed at byte %1: %2")
                    .arg(QString::number(parsed.offset), QString::fromLatin1(parsed.description()));
        return {};
    }
    Translator translator;
    if (!document.child("ui") || !document.traverse(translator)) {
        error = document.child("ui") ? QStringLiteral("nested too deep")
                                     : QStringLiteral("not an interface file");
        return {};
    }
    Writer writer;
    document.save(writer, "", pugi::format_raw, pugi::encoding_utf8);
    return writer.bytes;
}
} // namespace

Nib Nib::fromFile(const QString &path)
{
    QFile file(path);
    const bool isOpen = QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly);
    // One byte more than is allowed tells a file that is too large without reading the rest.
    Nib nib(isOpen ? file.read(largestFile + 1) : QByteArray());
    nib.m_path = path;
    return nib;
}

QWidget *Nib::instantiate(QWidget *parent)
{
    m_error.clear();
    QByteArray data;
    if (m_data.isEmpty())
        m_error = QStringLiteral("empty or unreadable");
    else if (m_data.size() > largestFile)
        m_error = QStringLiteral("larger than 16 MiB");
    else
        data = translated(m_data, m_error);

    QWidget *widget = nullptr;
    if (m_error.isEmpty()) {
        QBuffer buffer(&data);
        const std::unique_ptr<Loader> loader = makeLoader();
        widget = buffer.open(QIODevice::ReadOnly) ? loader->load(&buffer, parent) : nullptr;
        if (!widget)
            m_error = loader->errorString();
    }
    if (!widget && !m_path.isEmpty())
        m_error = m_path + QStringLiteral(": ") + m_error;
    return widget;
}

void Nib::registerMaker(const QString &className, const Maker &maker)
{
    makers().insert(className, maker);
}
