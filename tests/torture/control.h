// SPDX-License-Identifier: Apache-2.0
// The page of memory by which a test tells failing_calls.so, in another process, which call fails, and is
// told what happened.
#ifndef TESTS_TORTURE_CONTROL_H
#define TESTS_TORTURE_CONTROL_H

#include <atomic>
#include <cstdint>

namespace torture
{

enum Kind {
    noCalls = 0,
    memoryCalls = 1,
    fileCalls = 2,
    socketCalls = 4, // and what waits for them, and threads
    writeCalls = 8,  // of the files: what changes them
};

enum Action {
    fail = 0,
    killBefore = 1, // the process is killed instead of the call
    killAfter = 2,  // it is killed behind the call; of a write half is done
};

inline constexpr int mostPlaces = 16384;

struct Control {
    std::atomic<int> kind;    // calls of these kinds are counted
    std::atomic<long> nth;    // this one fails; 0: none
    std::atomic<int> forever; // and all after it
    std::atomic<int> error;   // errno of the failure
    std::atomic<int> action;
    std::atomic<long> count;
    std::atomic<long> struck;
    char name[64]; // of the function that failed
    // With isSurvey set nothing fails, and the numbers of the calls are kept that come from a place from
    // which none has come before, in this run or in an earlier one.
    std::atomic<int> isSurvey;
    std::atomic<int> placeCount;
    long places[mostPlaces];
    uint64_t knownPlaces[4 * mostPlaces]; // by their remainders, the next ones where one is taken
};

/** The name of the environment variable with the file of the page. */
inline constexpr char controlVariable[] = "FAILING_CALLS";

} // namespace torture

#endif
