// Scrambling a configuration for publishing, against the cipher alone over the same bytes.
#include "benchmarks/Comparison.h"

#include "Classes/Mode/security.h"
#include "benchmarks/Documents.h"

#include <benchmark/benchmark.h>

namespace
{

Sides make(qint64 items)
{
    const QByteArray text = Documents::configurationOf(Documents::withLinks(Documents::links(items)));
    const QString key = QStringLiteral("9a3F07be");
    constexpr int fullState = 256;

    Side ours;
    ours.run = [text] { benchmark::DoNotOptimize(RC4C_EncodeString(text)); };
    Side yardstick;
    yardstick.run = [text, key] { benchmark::DoNotOptimize(RC4C_Crypt(text, key, fullState)); };
    return {ours, yardstick};
}

} // namespace

std::vector<Comparison> scrambleComparisons()
{
    constexpr double limit = 1.3;
    const std::string name = "Scramble";
    return {
        {name, 10, limit, 101, 500, [] { return make(10); }},
        {name, 1'000, limit, 101, 10, [] { return make(1'000); }},
        {name, 100'000, limit, 21, 1, [] { return make(100'000); }},
    };
}
