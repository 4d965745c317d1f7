#include "benchmarks/TableReporter.h"

#include <cstdio>

bool TableReporter::ReportContext(const Context &)
{
    std::printf("%-22s %8s %15s %8s %10s %12s %12s %12s\n", "", "ratio", "min..max", "limit", "ours ms",
                "yardstick ms", "ours MiB", "yardst. MiB");
    return true;
}

void TableReporter::ReportRuns(const std::vector<Run> &runs)
{
    constexpr double milli = 1e3;
    constexpr double mebibyte = 1024 * 1024;
    for (const Run &run : runs) {
        const std::string name = run.run_name.function_name;
        if (run.error_occurred) {
            std::printf("%-22s %s\n", name.c_str(), run.error_message.c_str());
            m_isGood = false;
            continue;
        }
        const auto counter = [&run](const char *key) { return double(run.counters.at(key)); };
        const double limit = counter("limit");
        const bool isKept = limit == 0 || counter("ratio") <= limit;
        m_isGood = m_isGood && isKept;
        char limitText[16] = "-";
        if (limit != 0)
            std::snprintf(limitText, sizeof limitText, "%.2f", limit);
        std::printf("%-22s %8.2f %7.2f..%6.2f %8s %10.4f %12.4f %12.1f %12.1f%s\n", name.c_str(),
                    counter("ratio"), counter("min"), counter("max"), limitText, counter("ours") * milli,
                    counter("yardstick") * milli, counter("ours_peak") / mebibyte,
                    counter("yardstick_peak") / mebibyte, isKept ? "" : "  EXCEEDED");
        std::fflush(stdout);
    }
}
