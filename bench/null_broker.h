// SPDX-License-Identifier: Apache-2.0
// A CMPI broker that does as little as can be done: its objects are fixed, it allocates and records nothing.
// What a provider costs with it is what the provider itself costs.
#ifndef BENCH_NULL_BROKER_H
#define BENCH_NULL_BROKER_H

#include <cmpi/cmpidt.h>
#include <cmpi/cmpift.h>

#include <initializer_list>
#include <string_view>

namespace bench
{

extern const CMPIBroker broker;
extern const CMPIContext context;

struct Key {
    const char *name;
    const char *value;
};

/** A path of a request, of the namespace root/cimv2. */
class Path
{
  public:
    Path(const char *className, std::initializer_list<Key> keys);
    Path(const Path &) = delete;
    Path &operator=(const Path &) = delete;

    operator const CMPIObjectPath *() const
    {
        return &path_;
    }

    const CMPIString className;
    Key keys[4] = {};
    int keyCount = 0;

  private:
    CMPIObjectPath path_;
};

/** The arguments of a method: one, a string. */
class Argument
{
  public:
    explicit Argument(const char *value);
    Argument(const Argument &) = delete;
    Argument &operator=(const Argument &) = delete;

    operator const CMPIArgs *() const
    {
        return &args_;
    }

  private:
    CMPIString value_;
    CMPIArgs args_;
};

/** What a provider hands back: how many of each, and the last data. */
struct Result {
    Result();
    Result(const Result &) = delete;
    Result &operator=(const Result &) = delete;

    operator const CMPIResult *() const
    {
        return &result;
    }

    int instances = 0;
    int paths = 0;
    int done = 0;
    CMPIValue data = {};
    CMPIType dataType = CMPI_null;
    CMPIResult result;
};

/** The text of a status; empty when there is none. */
std::string_view messageOf(const CMPIStatus &status);

} // namespace bench

#endif
