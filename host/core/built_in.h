// SPDX-License-Identifier: Apache-2.0
// Classes whose instances the object manager makes itself: few, and not to be changed. Each is a provider
// like others; what it has to say is a function that makes all its instances.
#ifndef HOST_CORE_BUILT_IN_H
#define HOST_CORE_BUILT_IN_H

#include "cmpi/objects.h"

#include <functional>
#include <string>
#include <string_view>

namespace host
{

/** What the instances of a class are made for. */
struct Making {
    Arena &arena;
    const CMPIContext *context;
    /** Of the request. */
    std::string_view nameSpace;
    /** The object that associations are followed from; null when all instances are wanted. What has nothing
     * to do with it may be left out. */
    const Path *source;
    ArenaList<Instance *> &instances;
};

class BuiltInClass
{
  public:
    using Maker = std::function<CMPIStatus(const Making &)>;
    /** Answers a method call; the return value is 0 when it succeeds. */
    using Method =
        std::function<CMPIStatus(const Making &, const Path &target, std::string_view name, Args &out)>;

    /** method: empty when the class has none. */
    BuiltInClass(const CMPIBroker &broker, const cim::NameSpaces &nameSpaces, std::string name, Maker make,
                 Method method = {});
    BuiltInClass(const BuiltInClass &) = delete;
    BuiltInClass &operator=(const BuiltInClass &) = delete;

    const std::string &name() const
    {
        return name_;
    }

    CMPIInstanceMI *instanceInterface()
    {
        return &instance_;
    }

    CMPIAssociationMI *associationInterface()
    {
        return &association_;
    }

    /** Null when the class has no methods. */
    CMPIMethodMI *methodInterface()
    {
        return method_ ? &methodInterface_ : nullptr;
    }

  private:
    friend struct BuiltInFunctions;

    const CMPIBroker &broker_;
    const cim::NameSpaces &nameSpaces_;
    const std::string name_;
    const Maker make_;
    const Method method_;
    CMPIInstanceMI instance_;
    CMPIAssociationMI association_;
    CMPIMethodMI methodInterface_;
};

/** Sets properties by their names; names that the class has not are passed over, for which superclasses there
 * are is settled elsewhere. */
class InstanceBuilder
{
  public:
    InstanceBuilder(Arena &arena, const cim::NameSpaces &nameSpaces, std::string_view nameSpace,
                    std::string_view className)
        : arena_(arena), instance_(makeInstance(arena, *makePath(arena, nameSpaces, nameSpace, className)))
    {
    }

    InstanceBuilder &text(std::string_view name, std::string_view value);
    InstanceBuilder &number(std::string_view name, std::uint16_t value);
    /** An array with one element. */
    InstanceBuilder &onlyNumber(std::string_view name, std::uint16_t value);
    InstanceBuilder &flag(std::string_view name, bool value);
    InstanceBuilder &reference(std::string_view name, const Path &path);

    Instance *instance()
    {
        completeKeys(*instance_);
        return instance_;
    }

  private:
    InstanceBuilder &set(std::string_view name, const CMPIData &data);

    Arena &arena_;
    Instance *instance_;
};

} // namespace host

#endif
