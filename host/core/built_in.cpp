// SPDX-License-Identifier: Apache-2.0
#include "core/built_in.h"

#include "cmpi/call.h"

#include <cmpi/cmpimacs.h>

namespace host
{

/** The functions of the interfaces. The class travels in the handle. */
struct BuiltInFunctions {
    template <typename Interface>
    static const BuiltInClass &classOf(const Interface *mi)
    {
        return *static_cast<const BuiltInClass *>(mi->hdl);
    }

    static Arena &arena()
    {
        return *currentCall()->arena;
    }

    static CMPIStatus failure(CMPIrc code, const char *text)
    {
        CMPIStatus status = {};
        setStatus(&status, code, &arena(), text);
        return status;
    }

    static CMPIStatus make(const BuiltInClass &self, const CMPIContext *context,
                           const CMPIObjectPath *reference, bool isSource, ArenaList<Instance *> &instances)
    {
        const Path *path = behind<Path>(reference);
        return self.make_({arena(), context, textOf(path->nameSpace), isSource ? path : nullptr, instances});
    }

    template <typename Interface>
    static CMPIStatus cleanup(Interface *, const CMPIContext *, CMPIBoolean)
    {
        return makeStatus(CMPI_RC_OK); // the object manager owns the class
    }

    // ------------------------------------------------------------------------------------------- instances

    static CMPIStatus enumerateInstanceNames(CMPIInstanceMI *mi, const CMPIContext *context,
                                             const CMPIResult *result, const CMPIObjectPath *reference)
    {
        ArenaList<Instance *> instances(arena());
        CMPIStatus status = make(classOf(mi), context, reference, false, instances);
        for (std::size_t i = 0; i < instances.size() && status.rc == CMPI_RC_OK; ++i) {
            status = CMReturnObjectPath(result, &instances[i]->path->cmpi);
        }
        return status;
    }

    static CMPIStatus enumerateInstances(CMPIInstanceMI *mi, const CMPIContext *context,
                                         const CMPIResult *result, const CMPIObjectPath *reference,
                                         const char **)
    {
        ArenaList<Instance *> instances(arena());
        CMPIStatus status = make(classOf(mi), context, reference, false, instances);
        for (std::size_t i = 0; i < instances.size() && status.rc == CMPI_RC_OK; ++i) {
            status = CMReturnInstance(result, &instances[i]->cmpi);
        }
        return status;
    }

    static CMPIStatus getInstance(CMPIInstanceMI *mi, const CMPIContext *context, const CMPIResult *result,
                                  const CMPIObjectPath *reference, const char **)
    {
        ArenaList<Instance *> instances(arena());
        const CMPIStatus status = make(classOf(mi), context, reference, false, instances);
        for (std::size_t i = 0; i < instances.size() && status.rc == CMPI_RC_OK; ++i) {
            if (samePath(*instances[i]->path, *behind<Path>(reference))) {
                return CMReturnInstance(result, &instances[i]->cmpi);
            }
        }
        return status.rc != CMPI_RC_OK
                   ? status
                   : failure(CMPI_RC_ERR_NOT_FOUND, "There is no instance with these keys.");
    }

    template <typename... Arguments>
    static CMPIStatus refuse(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *, Arguments...)
    {
        return failure(CMPI_RC_ERR_NOT_SUPPORTED,
                       "The object manager makes these instances itself; they cannot be changed.");
    }

    // ---------------------------------------------------------------------------------------- associations

    /** What an association is followed with. */
    struct Traversal {
        const BuiltInClass &self;
        const CMPIContext *context;
        const CMPIObjectPath *source;
        const char *role;
    };

    static bool isNamed(const cim::Property &property, const char *name)
    {
        return name == nullptr || cim::sameName(property.name, name);
    }

    /** Calls found(instance, place of the reference) for each association instance that the source is in. */
    template <typename Function>
    static CMPIStatus follow(const Traversal &traversal, Function found)
    {
        ArenaList<Instance *> instances(arena());
        CMPIStatus status = make(traversal.self, traversal.context, traversal.source, true, instances);
        for (Instance *instance : instances) {
            for (std::size_t i = 0; i < instance->klass->properties.size() && status.rc == CMPI_RC_OK; ++i) {
                const Path *end = pathOf(instance->values[i]);
                if (end != nullptr && isNamed(instance->klass->properties[i], traversal.role) &&
                    samePath(*end, *behind<Path>(traversal.source))) {
                    status = found(*instance, i);
                }
            }
        }
        return status;
    }

    static bool isOfClass(const cim::NameSpaces &nameSpaces, const Path &path, const char *className)
    {
        const cim::NameSpace *nameSpace = nameSpaces.find(textOf(path.nameSpace));
        return className == nullptr ||
               (nameSpace != nullptr && nameSpace->classes->isA(path.className->view(), className));
    }

    /** The same for each object at the other end. */
    template <typename Function>
    static CMPIStatus followToTheEnd(const Traversal &traversal, const char *resultClass,
                                     const char *resultRole, Function found)
    {
        return follow(traversal, [&](const Instance &instance, std::size_t here) {
            CMPIStatus status = {};
            for (std::size_t i = 0; i < instance.klass->properties.size() && status.rc == CMPI_RC_OK; ++i) {
                const Path *end = i != here ? pathOf(instance.values[i]) : nullptr;
                if (end != nullptr && isNamed(instance.klass->properties[i], resultRole) &&
                    isOfClass(traversal.self.nameSpaces_, *end, resultClass)) {
                    status = found(*end);
                }
            }
            return status;
        });
    }

    static CMPIStatus associators(CMPIAssociationMI *mi, const CMPIContext *context, const CMPIResult *result,
                                  const CMPIObjectPath *source, const char *, const char *resultClass,
                                  const char *role, const char *resultRole, const char **properties)
    {
        const BuiltInClass &self = classOf(mi);
        return followToTheEnd({self, context, source, role}, resultClass, resultRole, [&](const Path &end) {
            CMPIStatus status = {};
            const CMPIInstance *instance =
                self.broker_.bft->getInstance(&self.broker_, context, &end.cmpi, properties, &status);
            return instance != nullptr ? CMReturnInstance(result, instance) : status;
        });
    }

    static CMPIStatus associatorNames(CMPIAssociationMI *mi, const CMPIContext *context,
                                      const CMPIResult *result, const CMPIObjectPath *source, const char *,
                                      const char *resultClass, const char *role, const char *resultRole)
    {
        return followToTheEnd({classOf(mi), context, source, role}, resultClass, resultRole,
                              [&](const Path &end) { return CMReturnObjectPath(result, &end.cmpi); });
    }

    static CMPIStatus references(CMPIAssociationMI *mi, const CMPIContext *context, const CMPIResult *result,
                                 const CMPIObjectPath *source, const char *, const char *role, const char **)
    {
        return follow({classOf(mi), context, source, role}, [&](const Instance &instance, std::size_t) {
            return CMReturnInstance(result, &instance.cmpi);
        });
    }

    static CMPIStatus referenceNames(CMPIAssociationMI *mi, const CMPIContext *context,
                                     const CMPIResult *result, const CMPIObjectPath *source, const char *,
                                     const char *role)
    {
        return follow({classOf(mi), context, source, role}, [&](const Instance &instance, std::size_t) {
            return CMReturnObjectPath(result, &instance.path->cmpi);
        });
    }

    // --------------------------------------------------------------------------------------------- methods

    static CMPIStatus invokeMethod(CMPIMethodMI *mi, const CMPIContext *context, const CMPIResult *result,
                                   const CMPIObjectPath *reference, const char *method, const CMPIArgs *,
                                   CMPIArgs *out)
    {
        ArenaList<Instance *> none(arena());
        const Path &target = *behind<Path>(reference);
        const CMPIStatus status = classOf(mi).method_(
            {arena(), context, textOf(target.nameSpace), nullptr, none}, target, method, *behind<Args>(out));
        const CMPIUint32 success = 0;
        return status.rc != CMPI_RC_OK
                   ? status
                   : CMReturnData(result, reinterpret_cast<const CMPIValue *>(&success), CMPI_uint32);
    }

    static const CMPIInstanceMIFT instanceFunctions;
    static const CMPIAssociationMIFT associationFunctions;
    static const CMPIMethodMIFT methodFunctions;
};

const CMPIInstanceMIFT BuiltInFunctions::instanceFunctions = {
    tableVersion,
    tableVersion,
    "instance of the object manager",
    cleanup<CMPIInstanceMI>,
    enumerateInstanceNames,
    enumerateInstances,
    getInstance,
    refuse,
    refuse,
    refuse,
    refuse,
};

const CMPIAssociationMIFT BuiltInFunctions::associationFunctions = {
    tableVersion,
    tableVersion,
    "association of the object manager",
    cleanup<CMPIAssociationMI>,
    associators,
    associatorNames,
    references,
    referenceNames,
};

const CMPIMethodMIFT BuiltInFunctions::methodFunctions = {
    tableVersion, tableVersion, "method of the object manager", cleanup<CMPIMethodMI>, invokeMethod,
};

BuiltInClass::BuiltInClass(const CMPIBroker &broker, const cim::NameSpaces &nameSpaces, std::string name,
                           Maker make, Method method)
    : broker_(broker), nameSpaces_(nameSpaces), name_(std::move(name)), make_(std::move(make)),
      method_(std::move(method)), instance_{this, &BuiltInFunctions::instanceFunctions},
      association_{this, &BuiltInFunctions::associationFunctions}, methodInterface_{
                                                                       this,
                                                                       &BuiltInFunctions::methodFunctions}
{
}

// --------------------------------------------------------------------------------------------------- builder

InstanceBuilder &InstanceBuilder::set(std::string_view name, const CMPIData &data)
{
    if (const std::size_t place = instance_->klass->placeOf(name); place != cim::noProperty) {
        setProperty(*instance_, place, data);
    }
    return *this;
}

InstanceBuilder &InstanceBuilder::text(std::string_view name, std::string_view value)
{
    return set(name, stringData(makeString(arena_, value)));
}

InstanceBuilder &InstanceBuilder::number(std::string_view name, std::uint16_t value)
{
    CMPIData data = {};
    data.type = CMPI_uint16;
    data.value.uint16 = value;
    return set(name, data);
}

InstanceBuilder &InstanceBuilder::onlyNumber(std::string_view name, std::uint16_t value)
{
    Array *array = makeArray(arena_, CMPI_uint16, 1);
    array->elements[0] = {};
    array->elements[0].type = CMPI_uint16;
    array->elements[0].value.uint16 = value;
    CMPIData data = {};
    data.type = CMPI_uint16A;
    data.value.array = &array->cmpi;
    return set(name, data);
}

InstanceBuilder &InstanceBuilder::flag(std::string_view name, bool value)
{
    CMPIData data = {};
    data.type = CMPI_boolean;
    data.value.boolean = value ? 1 : 0;
    return set(name, data);
}

InstanceBuilder &InstanceBuilder::reference(std::string_view name, const Path &path)
{
    CMPIData data = {};
    data.type = CMPI_ref;
    data.value.ref = &copyObject(arena_, path)->cmpi;
    return set(name, data);
}

} // namespace host
