// SPDX-License-Identifier: Apache-2.0
// What of the returned objects a client gets to see.
#ifndef HOST_CORE_PROJECTION_H
#define HOST_CORE_PROJECTION_H

#include "core/model.h"

#include <unordered_set>

namespace host
{

/** Shows only the properties that the request wants to see. */
class Projection
{
  public:
    /** limit: only properties that this class has too; null: all. */
    Projection(Arena &arena, const Request &request, const cim::Class *limit)
        : arena_(arena), request_(request), limit_(limit)
    {
    }

    void apply(Instance &instance);

  private:
    const PropertySet *makeSet(const cim::Class &klass, bool limited);

    Arena &arena_;
    const Request &request_;
    const cim::Class *limit_;
    const cim::Class *lastClass_ = nullptr;
    const PropertySet *lastSet_ = nullptr;
};

/** Leaves out objects that have been there before, beginning at a place. */
class Deduplication
{
  public:
    void apply(ArenaList<Instance *> &instances, std::size_t first);
    void apply(ArenaList<Path *> &paths, std::size_t first);

  private:
    struct Hash {
        std::size_t operator()(const Path *path) const;
    };
    struct Equal {
        bool operator()(const Path *left, const Path *right) const;
    };

    template <typename T, typename GetPath>
    void keepNew(ArenaList<T *> &objects, std::size_t first, GetPath getPath);

    std::unordered_set<const Path *, Hash, Equal> seen_;
};

} // namespace host

#endif
