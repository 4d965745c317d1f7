#pragma once

#include <benchmark/benchmark.h>

// Prints one line for each comparison, with its limit and what became of it.
class TableReporter : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context &context) override;
    void ReportRuns(const std::vector<Run> &runs) override;

    // Whether nothing failed and every limit was kept.
    bool isGood() const { return m_isGood; }

private:
    bool m_isGood = true;
};
