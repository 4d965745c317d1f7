#pragma once

#include "benchmarks/Comparison.h"

#include <QtGlobal>
#include <optional>

// How much memory one run of a side takes beyond what its input holds. Each is measured in a process of its
// own, which runs that side once: in a process that ran before, freed memory would hide it.
namespace PeakMemory
{

// Starts this program again for one side; bytes, or 0 where the system does not tell.
qint64 ofChild(const Comparison &comparison, bool isOurs);

// In the child: when the arguments ask for it, runs the side, prints the bytes and answers the exit status.
std::optional<int> runAsChild(int argc, char **argv, const std::vector<Comparison> &comparisons);

} // namespace PeakMemory
