// The configuration text of a document, against the least that any generator must do: let the parser work in
// place, and copy every name and text once.
#include "benchmarks/Comparison.h"

#include "benchmarks/Documents.h"

#include <benchmark/benchmark.h>
#include <cstring>
#include <memory>

namespace
{

// Appends to a buffer that is large enough.
char *copied(char *out, const char *text)
{
    const size_t size = std::strlen(text);
    std::memcpy(out, text, size);
    return out + size;
}

char *copyNamesAndTexts(char *out, const pugi::xml_node &parent)
{
    for (pugi::xml_node child = parent.first_child(); child; child = child.next_sibling()) {
        out = copied(out, child.type() == pugi::node_element ? child.name() : child.value());
        out = copyNamesAndTexts(out, child);
    }
    return out;
}

Sides make(qint64 items)
{
    const QByteArray document = Documents::withLinks(Documents::links(items));

    Side ours;
    ours.run = [document] { benchmark::DoNotOptimize(Documents::configurationOf(document)); };

    Side yardstick;
    yardstick.run = [document] {
        // The parser overwrites its input. Both sides copy it once: ours does so inside jsonFromDocument.
        QByteArray fresh(document.constData(), document.size());
        pugi::xml_document parsed;
        if (!parsed.load_buffer_inplace(fresh.data(), size_t(fresh.size()), pugi::parse_default,
                                        pugi::encoding_utf8))
            qFatal("the document cannot be parsed");
        QByteArray out(fresh.size(), Qt::Uninitialized);
        benchmark::DoNotOptimize(copyNamesAndTexts(out.data(), parsed));
        benchmark::ClobberMemory();
    };
    return {ours, yardstick};
}

} // namespace

std::vector<Comparison> configurationComparisons()
{
    constexpr double limit = 1.25;
    const std::string name = "Configuration";
    return {
        {name, 10, limit, 101, 500, [] { return make(10); }},
        {name, 1'000, limit, 101, 10, [] { return make(1'000); }},
        {name, 100'000, limit, 21, 1, [] { return make(100'000); }},
    };
}
