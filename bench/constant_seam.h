// SPDX-License-Identifier: Apache-2.0
// The monitor's support library with constant answers: a monitor whose first colour space is active, and an
// engine that takes every message.
#ifndef BENCH_CONSTANT_SEAM_H
#define BENCH_CONSTANT_SEAM_H

namespace bench
{

/** Messages sent to the engine so far. */
extern long messagesSent;

} // namespace bench

#endif
