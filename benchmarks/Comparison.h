#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// One way of doing the work. `prepare` runs before each run and is not timed; it may be empty.
struct Side {
    std::function<void()> prepare;
    std::function<void()> run;
};

// Two ways of doing the same work over the same data.
struct Sides {
    Side ours;
    Side yardstick;
};

// What is measured against what, on a machine where times by themselves say nothing: both sides take turns in
// one process, and what counts is how many times longer ours takes.
struct Comparison {
    std::string name; // "Configuration", "Scramble" or "Save"
    std::int64_t items; // links in the generated document
    double limit; // the largest ratio that is accepted; 0 for none
    int pairs; // how often the sides take turns
    int runs; // how often a side runs at its turn; a single run of a small document is too short to time
    std::function<Sides()> make;

    std::string title() const { return name + '/' + std::to_string(items); }
};

// The three subjects, each at every size that it is measured at.
std::vector<Comparison> configurationComparisons();
std::vector<Comparison> scrambleComparisons();
std::vector<Comparison> saveComparisons();

// Registers the comparison as a benchmark. Its counters are "ratio" (the median over the pairs), "min",
// "max", "limit", "ours" and "yardstick" (medians, seconds for one run) and "ours_peak" and "yardstick_peak"
// (bytes).
void registerComparison(const Comparison &comparison);
