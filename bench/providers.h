// SPDX-License-Identifier: Apache-2.0
// The factories of the classes that the benchmarks call.
#ifndef BENCH_PROVIDERS_H
#define BENCH_PROVIDERS_H

#include <cmpi/cmpidt.h>
#include <cmpi/cmpift.h>

#define BENCH_FACTORY(Class, Kind)                                                                           \
    extern "C" CMPI##Kind##MI *ZT_Marovelton_##Class##_Create_##Kind##MI(const CMPIBroker *,                 \
                                                                         const CMPIContext *, CMPIStatus *)

BENCH_FACTORY(ColorSpace, Instance);
BENCH_FACTORY(ColorSpace, Method);
BENCH_FACTORY(Monitor, Instance);
BENCH_FACTORY(SystemDevice, Association);

#undef BENCH_FACTORY

#endif
