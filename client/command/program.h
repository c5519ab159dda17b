// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace displayctl {

/** Runs displayctl with the arguments of main, and gives its exit code. */
[[nodiscard]] int runProgram(int argc, const char *const *argv);

} // namespace displayctl
