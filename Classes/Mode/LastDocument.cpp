#include "Classes/Mode/LastDocument.h"

#include <utility>

namespace LastDocument
{

namespace
{
constexpr qsizetype largestKept = qsizetype(32) << 20;

struct Kept {
    QByteArray utf8;
    std::unique_ptr<pugi::xml_document> document;
};

Kept &kept()
{
    static Kept last;
    return last;
}
} // namespace

Xml::Draft take(const QByteArray &utf8)
{
    if (!kept().document || kept().utf8 != utf8)
        return Xml::draft(utf8);
    Kept last = std::exchange(kept(), Kept());
    return {{std::move(last.document), 0, QString()}};
}

void keep(const QByteArray &utf8, std::unique_ptr<pugi::xml_document> document)
{
    if (utf8.size() <= largestKept)
        kept() = {utf8, std::move(document)};
    else
        forget();
}

void forget()
{
    kept() = Kept();
}

} // namespace LastDocument
