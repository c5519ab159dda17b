// SPDX-License-Identifier: Apache-2.0
// The operations of a class as CMPI names them, stamped over its ProviderClass or AssociationClass in one
// line, and their declarations, for the header of its room.
#ifndef FRAME_STAMP_H
#define FRAME_STAMP_H

#include "frame/association.h"
#include "frame/provider.h"

// ---- heads of operations ----
// With what CMPI hands to each; a parameter that no operation of the kind looks at has no name.

#define INSTANCE_OPERATION(Class, Operation, ...)                                                            \
    CMPIStatus Class##Operation(CMPIInstanceMI *, [[maybe_unused]] const CMPIContext *context,               \
                                [[maybe_unused]] const CMPIResult *result,                                   \
                                [[maybe_unused]] const CMPIObjectPath *reference __VA_OPT__(, ) __VA_ARGS__)

#define METHOD_OPERATION(Class)                                                                              \
    CMPIStatus Class##InvokeMethod(CMPIMethodMI *, [[maybe_unused]] const CMPIContext *context,              \
                                   const CMPIResult *result, const CMPIObjectPath *reference,                \
                                   const char *methodName, [[maybe_unused]] const CMPIArgs *in, CMPIArgs *)

#define ASSOCIATORS_OPERATION(Class, Operation, ...)                                                         \
    CMPIStatus Class##Operation(CMPIAssociationMI *, const CMPIContext *context, const CMPIResult *result,   \
                                const CMPIObjectPath *source, const char *associationClass,                  \
                                const char *resultClass, const char *role,                                   \
                                const char *resultRole __VA_OPT__(, ) __VA_ARGS__)

#define REFERENCES_OPERATION(Class, Operation, ...)                                                          \
    CMPIStatus Class##Operation(CMPIAssociationMI *, const CMPIContext *context, const CMPIResult *result,   \
                                const CMPIObjectPath *source, const char *resultClass,                       \
                                const char *role __VA_OPT__(, ) __VA_ARGS__)

#define CLEANUP_OPERATION(Class, Operation, Kind)                                                            \
    CMPIStatus Class##Operation(CMPI##Kind##MI *, const CMPIContext *, CMPIBoolean)

#define FACTORY(Class, Kind)                                                                                 \
    CMPI##Kind##MI *Class##_Create_##Kind##MI(const CMPIBroker *broker, const CMPIContext *, CMPIStatus *)

// ---- declarations ----

#define DECLARE_FACTORY(Class, Kind) extern "C" __attribute__((visibility("default"))) FACTORY(Class, Kind)

#define DECLARE_INSTANCE_PROVIDER(Class)                                                                     \
    INSTANCE_OPERATION(Class, EnumInstanceNames);                                                            \
    INSTANCE_OPERATION(Class, EnumInstances, const char **);                                                 \
    INSTANCE_OPERATION(Class, GetInstance, const char **);                                                   \
    INSTANCE_OPERATION(Class, CreateInstance, const CMPIInstance *);                                         \
    INSTANCE_OPERATION(Class, ModifyInstance, const CMPIInstance *instance, const char **);                  \
    INSTANCE_OPERATION(Class, DeleteInstance);                                                               \
    INSTANCE_OPERATION(Class, ExecQuery, const char *, const char *);                                        \
    CLEANUP_OPERATION(Class, Cleanup, Instance);                                                             \
    DECLARE_FACTORY(Class, Instance)

/** Of a class; the further argument is what its builders are told of the object beside the reference. */
#define DECLARE_METHOD_PROVIDER(Class, ...)                                                                  \
    [[nodiscard]] CMPIObjectPath *_makePath_##Class(                                                         \
        const CMPIObjectPath *reference __VA_OPT__(, ) __VA_ARGS__, CMPIStatus *status);                     \
    [[nodiscard]] CMPIInstance *_makeInst_##Class(                                                           \
        const CMPIObjectPath *reference __VA_OPT__(, ) __VA_ARGS__, CMPIStatus *status);                     \
    DECLARE_INSTANCE_PROVIDER(Class);                                                                        \
    METHOD_OPERATION(Class);                                                                                 \
    CLEANUP_OPERATION(Class, MethodCleanup, Method);                                                         \
    DECLARE_FACTORY(Class, Method)

#define DECLARE_ASSOCIATION_PROVIDER(Class)                                                                  \
    DECLARE_INSTANCE_PROVIDER(Class);                                                                        \
    ASSOCIATORS_OPERATION(Class, Associators, const char **);                                                \
    ASSOCIATORS_OPERATION(Class, AssociatorNames);                                                           \
    REFERENCES_OPERATION(Class, References, const char **);                                                  \
    REFERENCES_OPERATION(Class, ReferenceNames);                                                             \
    CLEANUP_OPERATION(Class, AssociationCleanup, Association);                                               \
    DECLARE_FACTORY(Class, Association)

// ---- setting functions ----
// Each writes one register of a group; last its ChannelTexts: that of a missing reply, and what else differs.

#define SETTING(function, groupId, registerId, ...)                                                          \
    int function(int value, char *errorText)                                                                 \
    {                                                                                                        \
        return engine::sendSetting(groupId, {{registerId, value}}, {__VA_ARGS__}, errorText);                \
    }

/** For a register on whose mention alone the engine acts. */
#define COMMAND(function, groupId, registerId, ...)                                                          \
    int function(char *errorText)                                                                            \
    {                                                                                                        \
        return engine::sendSetting(groupId, {{registerId, 0}}, {__VA_ARGS__}, errorText);                    \
    }

// ---- path builders ----

#define STAMP_PATH_BY_INSTANCE_ID(Class)                                                                     \
    CMPIObjectPath *_makePath_##Class(const CMPIObjectPath *reference, CMPIStatus *status)                   \
    {                                                                                                        \
        return frame::makePathByInstanceID(_broker, _ClassName, reference, _InstanceID, status);             \
    }

/** For a class with numbered instances. */
#define STAMP_PATH_BY_NUMBER(Class)                                                                          \
    CMPIObjectPath *_makePath_##Class(const CMPIObjectPath *reference, int index, CMPIStatus *status)        \
    {                                                                                                        \
        return frame::makePathByInstanceID(_broker, _ClassName, reference,                                   \
                                           frame::InstanceID(_InstanceID, index).text, status);              \
    }

// ---- the stamped skeleton ----
// The operations of class `Class` and its factories; beside an operation of a module's own, one by one.

#define STAMP_REFUSAL(Class, Operation, ...)                                                                 \
    INSTANCE_OPERATION(Class, Operation, __VA_ARGS__)                                                        \
    {                                                                                                        \
        return frame::notSupported(_broker);                                                                 \
    }

#define STAMP_MODIFY_NOT_SUPPORTED(Class, Operation)                                                         \
    STAMP_REFUSAL(Class, Operation, const CMPIInstance *, const char **)

#define STAMP_NOT_SUPPORTED(Class)                                                                           \
    STAMP_REFUSAL(Class, CreateInstance, const CMPIInstance *)                                               \
    STAMP_REFUSAL(Class, DeleteInstance)                                                                     \
    STAMP_REFUSAL(Class, ExecQuery, const char *, const char *)

// The factory of one kind, with the table of its operations; `kind` is in the name that the provider gives
// itself. The factories are all that the library exports.
#define STAMP_FACTORY(Class, Kind, kind, Cleanup, ...)                                                       \
    CLEANUP_OPERATION(Class, Cleanup, Kind)                                                                  \
    {                                                                                                        \
        return {CMPI_RC_OK, nullptr};                                                                        \
    }                                                                                                        \
    FACTORY(Class, Kind)                                                                                     \
    {                                                                                                        \
        static constexpr CMPI##Kind##MIFT table =                                                            \
            cmpi::operationTable<CMPI##Kind##MIFT, Class##Cleanup, __VA_ARGS__>(kind #Class);                \
        static CMPI##Kind##MI mi = {nullptr, cmpi::as<decltype(CMPI##Kind##MI::ft)>(&table)};                \
        _broker = broker;                                                                                    \
        return &mi;                                                                                          \
    }

#define STAMP_INSTANCE_FACTORY(Class)                                                                        \
    STAMP_FACTORY(Class, Instance, "instance", Cleanup, Class##EnumInstanceNames, Class##EnumInstances,      \
                  Class##GetInstance, Class##CreateInstance, Class##ModifyInstance, Class##DeleteInstance,   \
                  Class##ExecQuery)

// What the frame needs to know of a class: its constants and builders, and the further arguments.
#define STAMP_CLASS(Class, ...)                                                                              \
    constexpr frame::ProviderClass provider = {                                                              \
        .name = _ClassName, .builders = {_makePath_##Class, _makeInst_##Class}, __VA_ARGS__};                \
    INSTANCE_OPERATION(Class, EnumInstanceNames)                                                             \
    {                                                                                                        \
        return frame::enumInstanceNames(provider, _broker, result, reference);                               \
    }                                                                                                        \
    INSTANCE_OPERATION(Class, EnumInstances, const char **)                                                  \
    {                                                                                                        \
        return frame::enumInstances(provider, _broker, result, reference);                                   \
    }                                                                                                        \
    INSTANCE_OPERATION(Class, GetInstance, const char **)                                                    \
    {                                                                                                        \
        return frame::getInstance(provider, _broker, result, reference);                                     \
    }                                                                                                        \
    STAMP_NOT_SUPPORTED(Class)                                                                               \
    STAMP_INSTANCE_FACTORY(Class)

#define STAMP_METHOD_PROVIDER(Class, answer)                                                                 \
    METHOD_OPERATION(Class)                                                                                  \
    {                                                                                                        \
        return frame::answer;                                                                                \
    }                                                                                                        \
    STAMP_FACTORY(Class, Method, "method", MethodCleanup, Class##InvokeMethod)

#define STAMP_PLACEHOLDER_METHOD(Class, unknownCode)                                                         \
    STAMP_METHOD_PROVIDER(                                                                                   \
        Class, invokePlaceholder(_broker, _ClassName, unknownCode, result, reference, methodName))

// A whole instance and method provider; the further arguments are what its ProviderClass has beside its name
// and its builders.
#define STAMP_INSTANCE_AND_METHOD_PROVIDER(Class, ...)                                                       \
    STAMP_CLASS(Class, __VA_ARGS__)                                                                          \
    static_assert(frame::methodsAreSound(provider.methods));                                                 \
    STAMP_MODIFY_NOT_SUPPORTED(Class, ModifyInstance)                                                        \
    STAMP_METHOD_PROVIDER(Class, invokeMethod(provider, _broker, context, result, reference, methodName, in))

// The same for a class without methods, which answers the placeholder alone.
#define STAMP_INSTANCE_AND_PLACEHOLDER_PROVIDER(Class, unknownCode, ...)                                     \
    STAMP_CLASS(Class, __VA_ARGS__)                                                                          \
    STAMP_MODIFY_NOT_SUPPORTED(Class, ModifyInstance)                                                        \
    STAMP_PLACEHOLDER_METHOD(Class, unknownCode)

// ---- associations ----

#define STAMP_ENUMERATION(Class, Operation, kind, ...)                                                       \
    INSTANCE_OPERATION(Class, Operation, __VA_ARGS__)                                                        \
    {                                                                                                        \
        return frame::enumAssociation(association, _broker, context, result, reference,                      \
                                      frame::WalkKind::kind);                                                \
    }

#define STAMP_ASSOCIATORS(Class, Operation, kind, ...)                                                       \
    ASSOCIATORS_OPERATION(Class, Operation, __VA_ARGS__)                                                     \
    {                                                                                                        \
        return frame::followAssociation(association, _broker, context, result, source,                       \
                                        {associationClass, resultClass, role, resultRole},                   \
                                        frame::WalkKind::kind);                                              \
    }

#define STAMP_REFERENCES(Class, Operation, kind, ...)                                                        \
    REFERENCES_OPERATION(Class, Operation, __VA_ARGS__)                                                      \
    {                                                                                                        \
        return frame::followAssociation(association, _broker, context, result, source,                       \
                                        {resultClass, nullptr, role, nullptr}, frame::WalkKind::kind);       \
    }

// A whole instance and association provider over the constants of a module; the further arguments are what
// the AssociationClass has beside them.
#define STAMP_INSTANCE_AND_ASSOCIATION_PROVIDER(Class, ...)                                                  \
    constexpr frame::AssociationClass association = {.name = _ClassName,                                     \
                                                     .refLeft = _RefLeft,                                    \
                                                     .refRight = _RefRight,                                  \
                                                     .leftClass = _RefLeftClass,                             \
                                                     .rightClasses = _RefRightClass,                         \
                                                     __VA_ARGS__};                                           \
    static_assert(frame::associationIsSound(association));                                                   \
    STAMP_ENUMERATION(Class, EnumInstanceNames, referenceNames)                                              \
    STAMP_ENUMERATION(Class, EnumInstances, references, const char **)                                       \
    INSTANCE_OPERATION(Class, GetInstance, const char **)                                                    \
    {                                                                                                        \
        return frame::getAssociation(association, _broker, context, result, reference);                      \
    }                                                                                                        \
    STAMP_MODIFY_NOT_SUPPORTED(Class, ModifyInstance)                                                        \
    STAMP_NOT_SUPPORTED(Class)                                                                               \
    STAMP_INSTANCE_FACTORY(Class)                                                                            \
    STAMP_ASSOCIATORS(Class, Associators, associators, const char **)                                        \
    STAMP_ASSOCIATORS(Class, AssociatorNames, associatorNames)                                               \
    STAMP_REFERENCES(Class, References, references, const char **)                                           \
    STAMP_REFERENCES(Class, ReferenceNames, referenceNames)                                                  \
    STAMP_FACTORY(Class, Association, "association", AssociationCleanup, Class##Associators,                 \
                  Class##AssociatorNames, Class##References, Class##ReferenceNames)

#endif
