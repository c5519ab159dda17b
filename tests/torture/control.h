// SPDX-License-Identifier: Apache-2.0
// The page of memory by which a test tells failing_calls.so, in another process, which call fails, and is
// told what happened.
#ifndef TESTS_TORTURE_CONTROL_H
#define TESTS_TORTURE_CONTROL_H

#include <atomic>

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
    killAfter = 2,  // half of what a write was to write is there
};

struct Control {
    std::atomic<int> kind;    // calls of these kinds are counted
    std::atomic<long> nth;    // this one fails; 0: none
    std::atomic<int> forever; // and all after it
    std::atomic<int> error;   // errno of the failure
    std::atomic<int> action;
    std::atomic<long> count;
    std::atomic<long> struck;
    char name[64]; // of the function that failed
};

/** The name of the environment variable with the file of the page. */
inline constexpr char controlVariable[] = "FAILING_CALLS";

} // namespace torture

#endif
