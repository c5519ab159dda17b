// SPDX-License-Identifier: Apache-2.0
#include "cases.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <vector>

namespace bench
{
namespace
{

bool allRight = true;

void measure(benchmark::State &state, const Case &what)
{
    while (state.KeepRunning()) {
        if (!what.once()) {
            allRight = false;
            state.SkipWithError("the answer is wrong");
            return;
        }
    }
}

int repeat(std::span<const Case> cases, const char *name, long count)
{
    for (const Case &each : cases) {
        if (std::strcmp(each.name, name) != 0) {
            continue;
        }
        for (long i = 0; i < count; ++i) {
            if (!each.once()) {
                std::fprintf(stderr, "%s: the answer is wrong\n", name);
                return 1;
            }
        }
        return 0;
    }
    std::fprintf(stderr, "%s: there is no such call\n", name);
    return 2;
}

} // namespace

int run(int argc, char **argv, std::span<const Case> cases)
{
    if (argc == 4 && std::strcmp(argv[1], "--calls") == 0) {
        return repeat(cases, argv[2], std::strtol(argv[3], nullptr, 10));
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    for (const Case &each : cases) {
        // Time as it passes: much of it is spent in other processes. The fastest of several runs is the one
        // that other work on the machine has disturbed least.
        benchmark::RegisterBenchmark(each.name, measure, each)
            ->UseRealTime()
            ->ComputeStatistics("fastest", [](const std::vector<double> &times) {
                return *std::min_element(times.begin(), times.end());
            });
    }
    // Standard output is the providers', who print what they do.
    benchmark::ConsoleReporter reporter;
    reporter.SetOutputStream(&std::cerr);
    const bool someRan = benchmark::RunSpecifiedBenchmarks(&reporter) != 0;
    return someRan && allRight ? 0 : 1;
}

} // namespace bench
