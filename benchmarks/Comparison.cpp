#include "benchmarks/Comparison.h"

#include "benchmarks/PeakMemory.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>

namespace
{

// Seconds for one run, from the sum over a turn.
double turn(const Side &side, int runs)
{
    using Clock = std::chrono::steady_clock;
    Clock::duration sum{};
    for (int i = 0; i < runs; ++i) {
        if (side.prepare)
            side.prepare();
        const Clock::time_point start = Clock::now();
        side.run();
        sum += Clock::now() - start;
    }
    return std::chrono::duration<double>(sum).count() / runs;
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void measure(benchmark::State &state, const Comparison &comparison)
{
    const Sides sides = comparison.make();
    turn(sides.ours, 1);
    turn(sides.yardstick, 1);

    std::vector<double> ours;
    std::vector<double> yardstick;
    std::vector<double> ratios;
    bool isOursFirst = true;
    for ([[maybe_unused]] auto step : state) {
        // Whoever comes second finds warmer caches and a used heap: they swap places from pair to pair.
        if (isOursFirst)
            ours.push_back(turn(sides.ours, comparison.runs));
        yardstick.push_back(turn(sides.yardstick, comparison.runs));
        if (!isOursFirst)
            ours.push_back(turn(sides.ours, comparison.runs));
        isOursFirst = !isOursFirst;
        ratios.push_back(ours.back() / yardstick.back());
        state.SetIterationTime(ours.back());
    }
    const auto [least, most] = std::minmax_element(ratios.begin(), ratios.end());
    state.counters["min"] = *least;
    state.counters["max"] = *most;
    state.counters["ratio"] = median(ratios);
    state.counters["limit"] = comparison.limit;
    state.counters["ours"] = median(ours);
    state.counters["yardstick"] = median(yardstick);
    state.counters["ours_peak"] = double(PeakMemory::ofChild(comparison, true));
    state.counters["yardstick_peak"] = double(PeakMemory::ofChild(comparison, false));
}

} // namespace

void registerComparison(const Comparison &comparison)
{
    benchmark::RegisterBenchmark(comparison.title().c_str(),
                                 [comparison](benchmark::State &state) { measure(state, comparison); })
        ->UseManualTime()
        ->Iterations(comparison.pairs);
}
