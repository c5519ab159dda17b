// SPDX-License-Identifier: Apache-2.0
#include "core/projection.h"

namespace host
{

void Projection::apply(Instance &instance)
{
    const bool limited = limit_ != nullptr && limit_ != instance.klass;
    if (request_.propertyList == nullptr && !request_.localOnly && !limited) {
        return;
    }
    if (instance.klass != lastClass_) {
        lastClass_ = instance.klass;
        lastSet_ = makeSet(*instance.klass, limited);
    }
    instance.visible = lastSet_;
}

const PropertySet *Projection::makeSet(const cim::Class &klass, bool limited)
{
    const PropertySet *listed =
        request_.propertyList != nullptr ? makePropertySet(arena_, klass, request_.propertyList) : nullptr;
    PropertySet *set = makePropertySet(arena_, klass);
    for (std::size_t i = 0; i < klass.properties.size(); ++i) {
        if ((listed == nullptr || listed->contains(i)) &&
            (!request_.localOnly || !klass.properties[i].propagated) &&
            (!limited || limit_->placeOf(klass.properties[i].name) != cim::noProperty)) {
            set->insert(i);
        }
    }
    return set;
}

std::size_t Deduplication::Hash::operator()(const Path *path) const
{
    return static_cast<std::size_t>(hashPath(*path));
}

bool Deduplication::Equal::operator()(const Path *left, const Path *right) const
{
    return samePath(*left, *right);
}

template <typename T, typename GetPath>
void Deduplication::keepNew(ArenaList<T *> &objects, std::size_t first, GetPath getPath)
{
    std::size_t kept = first;
    for (std::size_t i = first; i < objects.size(); ++i) {
        if (seen_.insert(getPath(objects[i])).second) {
            objects[kept++] = objects[i];
        }
    }
    objects.truncate(kept);
}

void Deduplication::apply(ArenaList<Instance *> &instances, std::size_t first)
{
    keepNew(instances, first, [](const Instance *instance) { return instance->path; });
}

void Deduplication::apply(ArenaList<Path *> &paths, std::size_t first)
{
    keepNew(paths, first, [](const Path *path) { return path; });
}

} // namespace host
