// The benchmarks' program: prints the table of ratios; exit status 1 when a limit is exceeded.
#include "benchmarks/Comparison.h"
#include "benchmarks/PeakMemory.h"
#include "benchmarks/TableReporter.h"

#include <malloc.h>

int main(int argc, char **argv)
{
    // Freed memory stays in the process. Else the allocator's own thresholds, which move with what was freed
    // last, decide which of the two sides is given fresh pages and pays for them.
    constexpr int largestThreshold = 32 << 20; // more is refused
    constexpr int never = 1 << 30;
    mallopt(M_MMAP_THRESHOLD, largestThreshold);
    mallopt(M_TRIM_THRESHOLD, never);

    std::vector<Comparison> comparisons = configurationComparisons();
    for (const auto &more : {scrambleComparisons(), saveComparisons()})
        comparisons.insert(comparisons.end(), more.begin(), more.end());
    if (const std::optional<int> status = PeakMemory::runAsChild(argc, argv, comparisons))
        return *status;

    for (const Comparison &comparison : comparisons)
        registerComparison(comparison);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return EXIT_FAILURE;
    TableReporter table;
    benchmark::RunSpecifiedBenchmarks(&table);
    return table.isGood() ? EXIT_SUCCESS : EXIT_FAILURE;
}
