// SPDX-License-Identifier: Apache-2.0
// The operations of a class as CMPI names them, stamped over its ProviderClass or AssociationClass in one
// line, and their declarations, for the header of its room.
#ifndef FRAME_STAMP_H
#define FRAME_STAMP_H

#include "frame/association.h"
#include "frame/provider.h"

// ---- declarations ----

#define DECLARE_FACTORY(Class, Kind)                                                                         \
    extern "C" __attribute__((visibility("default"))) CMPI##Kind##MI *Class##_Create_##Kind##MI(             \
        const CMPIBroker *broker, const CMPIContext *context, CMPIStatus *status)

#define DECLARE_BUILDERS(Class, ...)                                                                         \
    CMPIObjectPath *_makePath_##Class(const CMPIObjectPath *reference __VA_OPT__(, ) __VA_ARGS__,            \
                                      CMPIStatus *status);                                                   \
    CMPIInstance *_makeInst_##Class(const CMPIObjectPath *reference __VA_OPT__(, ) __VA_ARGS__,              \
                                    CMPIStatus *status)

#define DECLARE_READ(Class, Operation, ...)                                                                  \
    CMPIStatus Class##Operation(CMPIInstanceMI *mi, const CMPIContext *context, const CMPIResult *result,    \
                                const CMPIObjectPath *reference __VA_OPT__(, ) __VA_ARGS__)

#define DECLARE_INSTANCE_PROVIDER(Class)                                                                     \
    CMPIStatus Class##Cleanup(CMPIInstanceMI *mi, const CMPIContext *context, CMPIBoolean terminating);      \
    DECLARE_READ(Class, EnumInstanceNames);                                                                  \
    DECLARE_READ(Class, EnumInstances, const char **properties);                                             \
    DECLARE_READ(Class, GetInstance, const char **properties);                                               \
    DECLARE_READ(Class, CreateInstance, const CMPIInstance *instance);                                       \
    DECLARE_READ(Class, ModifyInstance, const CMPIInstance *instance, const char **properties);              \
    DECLARE_READ(Class, DeleteInstance);                                                                     \
    DECLARE_READ(Class, ExecQuery, const char *query, const char *language);                                 \
    DECLARE_FACTORY(Class, Instance)

#define DECLARE_METHOD_PROVIDER(Class)                                                                       \
    DECLARE_INSTANCE_PROVIDER(Class);                                                                        \
    CMPIStatus Class##MethodCleanup(CMPIMethodMI *mi, const CMPIContext *context, CMPIBoolean terminating);  \
    CMPIStatus Class##InvokeMethod(CMPIMethodMI *mi, const CMPIContext *context, const CMPIResult *result,   \
                                   const CMPIObjectPath *reference, const char *methodName,                  \
                                   const CMPIArgs *in, CMPIArgs *out);                                       \
    DECLARE_FACTORY(Class, Method)

#define DECLARE_FOLLOWING(Class, Operation, ...)                                                             \
    CMPIStatus Class##Operation(CMPIAssociationMI *mi, const CMPIContext *context, const CMPIResult *result, \
                                const CMPIObjectPath *source, __VA_ARGS__)

#define DECLARE_ASSOCIATION_PROVIDER(Class)                                                                  \
    DECLARE_INSTANCE_PROVIDER(Class);                                                                        \
    CMPIStatus Class##AssociationCleanup(CMPIAssociationMI *mi, const CMPIContext *context,                  \
                                         CMPIBoolean terminating);                                           \
    DECLARE_FOLLOWING(Class, Associators, const char *associationClass, const char *resultClass,             \
                      const char *role, const char *resultRole, const char **properties);                    \
    DECLARE_FOLLOWING(Class, AssociatorNames, const char *associationClass, const char *resultClass,         \
                      const char *role, const char *resultRole);                                             \
    DECLARE_FOLLOWING(Class, References, const char *resultClass, const char *role,                          \
                      const char **properties);                                                              \
    DECLARE_FOLLOWING(Class, ReferenceNames, const char *resultClass, const char *role);                     \
    DECLARE_FACTORY(Class, Association)

// ---- setting functions ----
// Each writes one register of an information group. The last arguments are its ChannelTexts: the text of a
// missing reply, and what else differs from the usual ones.

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

// ---- the stamped skeleton ----
// The operations of class `Class` and its factories. A module that has an operation of its own stamps the
// others one by one.

#define STAMP_CLEANUP(Class, Kind, Operation)                                                                \
    CMPIStatus Class##Operation(Kind *, const CMPIContext *, CMPIBoolean)                                    \
    {                                                                                                        \
        return frame::cleanedUp();                                                                           \
    }

#define STAMP_READS(Class, provider)                                                                         \
    CMPIStatus Class##EnumInstanceNames(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,     \
                                        const CMPIObjectPath *reference)                                     \
    {                                                                                                        \
        return frame::enumInstanceNames(provider, _broker, result, reference);                               \
    }                                                                                                        \
    CMPIStatus Class##EnumInstances(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,         \
                                    const CMPIObjectPath *reference, const char **)                          \
    {                                                                                                        \
        return frame::enumInstances(provider, _broker, result, reference);                                   \
    }                                                                                                        \
    CMPIStatus Class##GetInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,           \
                                  const CMPIObjectPath *reference, const char **)                            \
    {                                                                                                        \
        return frame::getInstance(provider, _broker, result, reference);                                     \
    }

#define STAMP_MODIFY_NOT_SUPPORTED(Class, Operation)                                                         \
    CMPIStatus Class##Operation(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,                   \
                                const CMPIObjectPath *, const CMPIInstance *, const char **)                 \
    {                                                                                                        \
        return frame::notSupported(_broker);                                                                 \
    }

#define STAMP_NOT_SUPPORTED(Class)                                                                           \
    CMPIStatus Class##CreateInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,              \
                                     const CMPIObjectPath *, const CMPIInstance *)                           \
    {                                                                                                        \
        return frame::notSupported(_broker);                                                                 \
    }                                                                                                        \
    CMPIStatus Class##DeleteInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,              \
                                     const CMPIObjectPath *)                                                 \
    {                                                                                                        \
        return frame::notSupported(_broker);                                                                 \
    }                                                                                                        \
    CMPIStatus Class##ExecQuery(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,                   \
                                const CMPIObjectPath *, const char *, const char *)                          \
    {                                                                                                        \
        return frame::notSupported(_broker);                                                                 \
    }

#define STAMP_METHODS(Class, provider)                                                                       \
    CMPIStatus Class##InvokeMethod(CMPIMethodMI *, const CMPIContext *context, const CMPIResult *result,     \
                                   const CMPIObjectPath *reference, const char *methodName,                  \
                                   const CMPIArgs *in, CMPIArgs *)                                           \
    {                                                                                                        \
        return frame::invokeMethod(provider, _broker, context, result, reference, methodName, in);           \
    }

#define STAMP_PLACEHOLDER_METHOD(Class, unknownCode)                                                         \
    CMPIStatus Class##InvokeMethod(CMPIMethodMI *, const CMPIContext *, const CMPIResult *result,            \
                                   const CMPIObjectPath *reference, const char *methodName,                  \
                                   const CMPIArgs *, CMPIArgs *)                                             \
    {                                                                                                        \
        return frame::invokePlaceholder(_broker, _ClassName, unknownCode, result, reference, methodName);    \
    }

// The factory of one kind, with the table of its operations; `kind` is in the name that the provider gives
// itself. The factories are all that the library exports.
#define STAMP_FACTORY(Class, Kind, kind, ...)                                                                \
    CMPI##Kind##MI *Class##_Create_##Kind##MI(const CMPIBroker *broker, const CMPIContext *, CMPIStatus *)   \
    {                                                                                                        \
        static constexpr CMPI##Kind##MIFT table =                                                            \
            cmpi::operationTable<CMPI##Kind##MIFT, __VA_ARGS__>(kind #Class);                                \
        static CMPI##Kind##MI mi = {nullptr, cmpi::as<decltype(CMPI##Kind##MI::ft)>(&table)};                \
        _broker = broker;                                                                                    \
        return &mi;                                                                                          \
    }

#define STAMP_INSTANCE_FACTORY(Class)                                                                        \
    STAMP_CLEANUP(Class, CMPIInstanceMI, Cleanup)                                                            \
    STAMP_FACTORY(Class, Instance, "instance", Class##Cleanup, Class##EnumInstanceNames,                     \
                  Class##EnumInstances, Class##GetInstance, Class##CreateInstance, Class##ModifyInstance,    \
                  Class##DeleteInstance, Class##ExecQuery)

#define STAMP_METHOD_FACTORY(Class)                                                                          \
    STAMP_CLEANUP(Class, CMPIMethodMI, MethodCleanup)                                                        \
    STAMP_FACTORY(Class, Method, "method", Class##MethodCleanup, Class##InvokeMethod)

// A whole instance and method provider over one ProviderClass.
#define STAMP_INSTANCE_AND_METHOD_PROVIDER(Class, provider)                                                  \
    static_assert(frame::methodsAreSound(provider.methods));                                                 \
    STAMP_READS(Class, provider)                                                                             \
    STAMP_MODIFY_NOT_SUPPORTED(Class, ModifyInstance)                                                        \
    STAMP_NOT_SUPPORTED(Class)                                                                               \
    STAMP_METHODS(Class, provider)                                                                           \
    STAMP_INSTANCE_FACTORY(Class)                                                                            \
    STAMP_METHOD_FACTORY(Class)

// The same for a class without methods, which answers the placeholder alone.
#define STAMP_INSTANCE_AND_PLACEHOLDER_PROVIDER(Class, provider, unknownCode)                                \
    STAMP_READS(Class, provider)                                                                             \
    STAMP_MODIFY_NOT_SUPPORTED(Class, ModifyInstance)                                                        \
    STAMP_NOT_SUPPORTED(Class)                                                                               \
    STAMP_PLACEHOLDER_METHOD(Class, unknownCode)                                                             \
    STAMP_INSTANCE_FACTORY(Class)                                                                            \
    STAMP_METHOD_FACTORY(Class)

#define STAMP_ASSOCIATION_READS(Class, association)                                                          \
    CMPIStatus Class##EnumInstanceNames(CMPIInstanceMI *, const CMPIContext *ctx, const CMPIResult *result,  \
                                        const CMPIObjectPath *reference)                                     \
    {                                                                                                        \
        return frame::enumAssociation(association, _broker, ctx, result, reference,                          \
                                      frame::WalkKind::referenceNames);                                      \
    }                                                                                                        \
    CMPIStatus Class##EnumInstances(CMPIInstanceMI *, const CMPIContext *ctx, const CMPIResult *result,      \
                                    const CMPIObjectPath *reference, const char **)                          \
    {                                                                                                        \
        return frame::enumAssociation(association, _broker, ctx, result, reference,                          \
                                      frame::WalkKind::references);                                          \
    }                                                                                                        \
    CMPIStatus Class##GetInstance(CMPIInstanceMI *, const CMPIContext *ctx, const CMPIResult *result,        \
                                  const CMPIObjectPath *reference, const char **)                            \
    {                                                                                                        \
        return frame::getAssociation(association, _broker, ctx, result, reference);                          \
    }

#define STAMP_ASSOCIATIONS(Class, association)                                                               \
    CMPIStatus Class##Associators(CMPIAssociationMI *, const CMPIContext *ctx, const CMPIResult *result,     \
                                  const CMPIObjectPath *source, const char *assocClass,                      \
                                  const char *resultClass, const char *role, const char *resultRole,         \
                                  const char **)                                                             \
    {                                                                                                        \
        return frame::followAssociation(association, _broker, ctx, result, source,                           \
                                        {assocClass, resultClass, role, resultRole},                         \
                                        frame::WalkKind::associators);                                       \
    }                                                                                                        \
    CMPIStatus Class##AssociatorNames(CMPIAssociationMI *, const CMPIContext *ctx, const CMPIResult *result, \
                                      const CMPIObjectPath *source, const char *assocClass,                  \
                                      const char *resultClass, const char *role, const char *resultRole)     \
    {                                                                                                        \
        return frame::followAssociation(association, _broker, ctx, result, source,                           \
                                        {assocClass, resultClass, role, resultRole},                         \
                                        frame::WalkKind::associatorNames);                                   \
    }                                                                                                        \
    CMPIStatus Class##References(CMPIAssociationMI *, const CMPIContext *ctx, const CMPIResult *result,      \
                                 const CMPIObjectPath *source, const char *resultClass, const char *role,    \
                                 const char **)                                                              \
    {                                                                                                        \
        return frame::followAssociation(association, _broker, ctx, result, source,                           \
                                        {resultClass, nullptr, role, nullptr}, frame::WalkKind::references); \
    }                                                                                                        \
    CMPIStatus Class##ReferenceNames(CMPIAssociationMI *, const CMPIContext *ctx, const CMPIResult *result,  \
                                     const CMPIObjectPath *source, const char *resultClass,                  \
                                     const char *role)                                                       \
    {                                                                                                        \
        return frame::followAssociation(association, _broker, ctx, result, source,                           \
                                        {resultClass, nullptr, role, nullptr},                               \
                                        frame::WalkKind::referenceNames);                                    \
    }

#define STAMP_ASSOCIATION_FACTORY(Class)                                                                     \
    STAMP_CLEANUP(Class, CMPIAssociationMI, AssociationCleanup)                                              \
    STAMP_FACTORY(Class, Association, "association", Class##AssociationCleanup, Class##Associators,          \
                  Class##AssociatorNames, Class##References, Class##ReferenceNames)

// A whole instance and association provider over one AssociationClass.
#define STAMP_INSTANCE_AND_ASSOCIATION_PROVIDER(Class, association)                                          \
    static_assert(frame::associationIsSound(association));                                                   \
    STAMP_ASSOCIATION_READS(Class, association)                                                              \
    STAMP_MODIFY_NOT_SUPPORTED(Class, ModifyInstance)                                                        \
    STAMP_NOT_SUPPORTED(Class)                                                                               \
    STAMP_ASSOCIATIONS(Class, association)                                                                   \
    STAMP_INSTANCE_FACTORY(Class)                                                                            \
    STAMP_ASSOCIATION_FACTORY(Class)

#endif
