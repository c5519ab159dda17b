// SPDX-License-Identifier: Apache-2.0
// What the benchmark programs share: calls by name, and the two ways to run them.
#ifndef BENCH_CASES_H
#define BENCH_CASES_H

#include <span>

namespace bench
{

/** A call that is measured. */
struct Case {
    const char *name;
    bool (*once)(); // makes the call; true when its answer is right
};

/** The main function of a benchmark program:
 *
 *      PROGRAM [--benchmark_...]     measures the time of each call; reports on standard error
 *      PROGRAM --calls NAME COUNT    makes one call so many times, for a counter of instructions
 *
 *  Standard output is what the providers print: send it to /dev/null. Returns the exit code: 0 only when
 * every answer was right. */
int run(int argc, char **argv, std::span<const Case> cases);

} // namespace bench

#endif
