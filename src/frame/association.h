// SPDX-License-Identifier: Apache-2.0
// The association engine, and the frame of the association modules.
//
// An association class owns no data: its objects are found by asking the object manager for the objects at
// the far end. The engine serves one-to-many associations: to one source it ties every object of the other
// end's class.
//
// An association module holds five constants (the last a list, for there may be several right ends), one
// AssociationClass made of them, and one STAMP line.
#ifndef ZT_MAROVELTON_ASSOCIATION_H
#define ZT_MAROVELTON_ASSOCIATION_H

#include "frame/provider.h"
#include <string_view>

// Object managers load other providers with an engine of the same origin, whose functions have these names
// and other parameters. Neither library may ever be bound to the other's.
#pragma GCC visibility push(hidden)

// ---- the engine ----
// Flags: `left` enumerates the left end as sources, else the right end; `inst` 1 gives instances, 0 object
// paths; `associators` 1 gives the far-end objects, 0 the association's own.

/** In which direction an association is followed. */
enum ASSOC_TYPE {
    ASSOC_RIGHT_LEFT = 1,
    ASSOC_LEFT_RIGHT = 2,
};
using ASSOC_TYPE_E = ASSOC_TYPE;

/** The class at the far end from `ref`, one of the two given pointers; where both ends fit, `ref` is the left
 *  one. Null, with `rc` set, on failure. */
const char *_assoc_targetClass_Name(const CMPIBroker *broker, const CMPIObjectPath *ref,
                                    const char *leftClass, const char *rightClass, CMPIStatus *rc);

/** A new path of the far-end class in the namespace of `ref`. Null, or a path without a handle, with `rc`
 * set, on failure. */
CMPIObjectPath *_assoc_targetClass_OP(const CMPIBroker *broker, const CMPIObjectPath *ref,
                                      const char *leftClass, const char *rightClass, CMPIStatus *rc);

/** Whether the filters of a request (each may be null) admit this association for the source `cop`: 1 or 0.
 *  Names are compared without regard to case. `rc` is set only where that cannot be told. */
int _assoc_check_parameter_const(const CMPIBroker *broker, const CMPIObjectPath *cop, const char *refLeft,
                                 const char *refRight, const char *leftClass, const char *rightClass,
                                 const char *resultClass, const char *role, const char *resultRole,
                                 CMPIStatus *rc);

/** Answers a request for one source object. Returns 0, also when nothing was found, or -1 with `rc` set. */
int _assoc_create_refs_1toN(const CMPIBroker *broker, const CMPIContext *ctx, const CMPIResult *rslt,
                            const CMPIObjectPath *ref, const char *className, const char *leftClass,
                            const char *rightClass, const char *refLeft, const char *refRight, int inst,
                            int associators, CMPIStatus *rc);

/** Enumerates the association itself: the references of every source object. Returns -1 when the sources
 *  cannot be listed, else what the last source's references gave. */
int _assoc_create_inst_1toN(const CMPIBroker *broker, const CMPIContext *ctx, const CMPIResult *rslt,
                            const CMPIObjectPath *cop, const char *className, const char *leftClass,
                            const char *rightClass, const char *refLeft, const char *refRight, int left,
                            int inst, CMPIStatus *rc);

/** The association instance that `cop` names, once both its ends are found to exist. Null, with `rc` set, on
 *  failure; without a right end in `cop` the left end's instance, with `rc` set. */
CMPIInstance *_assoc_get_inst(const CMPIBroker *broker, const CMPIContext *ctx, const CMPIObjectPath *cop,
                              const char *className, const char *refLeft, const char *refRight,
                              CMPIStatus *rc);

// ---- associations of the network objects: candidates are matched by their keys ----

/** Sets `match` where the endpoint among the two keys is that of the management interface; never clears it.
 *  Always 0. */
int match_instance(const char *key1, const char *key2, int *match, int direction);

/** Sets `match` for a setting: the one that belongs to the mode once in a request, every other one always.
 *  Always 0. */
int match_instance_elementsetting(const char *key1, const char *key2, int *match, int direction,
                                  int *ipConfigCount, int ipMode);

/** Reads the keys of the source and of a candidate, an instance or a path, and matches them by the rule of
 * the association class. Returns 0, or -1 with `status` set. */
int get_instance_from_key(const CMPIObjectPath *source, const CMPIInstance *targetInstance,
                          const CMPIObjectPath *targetPath, const CMPIBroker *broker, CMPIStatus *status,
                          int *match, const char *assocClass, int *ipConfigCount, int ipMode,
                          char *isCurrent);

/** _assoc_create_refs_1toN for the candidates that match alone. */
int _assoc_create_refs_1toN_ProvideEndpoint(const CMPIBroker *broker, const CMPIContext *ctx,
                                            const CMPIResult *rslt, const CMPIObjectPath *ref,
                                            const char *className, const char *leftClass,
                                            const char *rightClass, const char *refLeft, const char *refRight,
                                            int inst, int associators, CMPIStatus *rc);

/** The same for the settings of the network connection, with the configuration mode taken into account. */
int _assoc_create_refs_1toN_ElementSetting(const CMPIBroker *broker, const CMPIContext *ctx,
                                           const CMPIResult *rslt, const CMPIObjectPath *ref,
                                           const char *className, const char *leftClass,
                                           const char *rightClass, const char *refLeft, const char *refRight,
                                           int inst, int associators, CMPIStatus *rc);

// ---- the frame of the association modules ----

/** What the frame needs to know of an association class. */
struct AssociationClass {
    const char *name;
    const char *refLeft;
    const char *refRight;
    const char *leftClass;
    std::span<const char *const> rightClasses; // every operation runs once for each, in order
    decltype(&_assoc_create_refs_1toN) createRefs = _assoc_create_refs_1toN; // answers for one source
};

/** An association that the frame can serve: every name there, the ends told apart. */
constexpr bool associationIsSound(const AssociationClass &association)
{
    const auto empty = [](const char *text) { return !text || *text == '\0'; };
    for (const char *rightClass : association.rightClasses)
        if (empty(rightClass))
            return false;
    return !association.rightClasses.empty() && !empty(association.name) && !empty(association.leftClass) &&
           !empty(association.refLeft) && !empty(association.refRight) &&
           std::string_view(association.refLeft) != association.refRight;
}

/** The filters of a request for what a source is tied to; each may be null. */
struct AssociationFilters {
    const char *associationClass;
    const char *resultClass;
    const char *role;
    const char *resultRole;
};

CMPIStatus enumAssociation(const AssociationClass &association, const CMPIBroker *broker,
                           const CMPIContext *ctx, const CMPIResult *result, const CMPIObjectPath *reference,
                           int inst);
CMPIStatus getAssociation(const AssociationClass &association, const CMPIBroker *broker,
                          const CMPIContext *ctx, const CMPIResult *result, const CMPIObjectPath *reference);
CMPIStatus followAssociation(const AssociationClass &association, const CMPIBroker *broker,
                             const CMPIContext *ctx, const CMPIResult *result, const CMPIObjectPath *source,
                             const AssociationFilters &filters, int inst, int associators);

#pragma GCC visibility pop

#define STAMP_ASSOCIATION_READS(Class, association)                                                          \
    CMPIStatus Class##EnumInstanceNames(CMPIInstanceMI *, const CMPIContext *ctx, const CMPIResult *result,  \
                                        const CMPIObjectPath *reference)                                     \
    {                                                                                                        \
        return enumAssociation(association, _broker, ctx, result, reference, 0);                             \
    }                                                                                                        \
    CMPIStatus Class##EnumInstances(CMPIInstanceMI *, const CMPIContext *ctx, const CMPIResult *result,      \
                                    const CMPIObjectPath *reference, const char **)                          \
    {                                                                                                        \
        return enumAssociation(association, _broker, ctx, result, reference, 1);                             \
    }                                                                                                        \
    CMPIStatus Class##GetInstance(CMPIInstanceMI *, const CMPIContext *ctx, const CMPIResult *result,        \
                                  const CMPIObjectPath *reference, const char **)                            \
    {                                                                                                        \
        return getAssociation(association, _broker, ctx, result, reference);                                 \
    }

#define STAMP_ASSOCIATIONS(Class, association)                                                               \
    CMPIStatus Class##Associators(CMPIAssociationMI *, const CMPIContext *ctx, const CMPIResult *result,     \
                                  const CMPIObjectPath *source, const char *assocClass,                      \
                                  const char *resultClass, const char *role, const char *resultRole,         \
                                  const char **)                                                             \
    {                                                                                                        \
        return followAssociation(association, _broker, ctx, result, source,                                  \
                                 {assocClass, resultClass, role, resultRole}, 1, 1);                         \
    }                                                                                                        \
    CMPIStatus Class##AssociatorNames(CMPIAssociationMI *, const CMPIContext *ctx, const CMPIResult *result, \
                                      const CMPIObjectPath *source, const char *assocClass,                  \
                                      const char *resultClass, const char *role, const char *resultRole)     \
    {                                                                                                        \
        return followAssociation(association, _broker, ctx, result, source,                                  \
                                 {assocClass, resultClass, role, resultRole}, 0, 1);                         \
    }                                                                                                        \
    CMPIStatus Class##References(CMPIAssociationMI *, const CMPIContext *ctx, const CMPIResult *result,      \
                                 const CMPIObjectPath *source, const char *resultClass, const char *role,    \
                                 const char **)                                                              \
    {                                                                                                        \
        return followAssociation(association, _broker, ctx, result, source,                                  \
                                 {resultClass, nullptr, role, nullptr}, 1, 0);                               \
    }                                                                                                        \
    CMPIStatus Class##ReferenceNames(CMPIAssociationMI *, const CMPIContext *ctx, const CMPIResult *result,  \
                                     const CMPIObjectPath *source, const char *resultClass,                  \
                                     const char *role)                                                       \
    {                                                                                                        \
        return followAssociation(association, _broker, ctx, result, source,                                  \
                                 {resultClass, nullptr, role, nullptr}, 0, 0);                               \
    }

#define STAMP_ASSOCIATION_FACTORY(Class)                                                                     \
    STAMP_CLEANUP(Class, CMPIAssociationMI, AssociationCleanup)                                              \
    _Pragma("GCC visibility push(default)") CMAssociationMIStub(Class, Class, _broker, CMNoHook)             \
        _Pragma("GCC visibility pop")

// A whole instance and association provider over one AssociationClass.
#define STAMP_INSTANCE_AND_ASSOCIATION_PROVIDER(Class, association)                                          \
    static_assert(associationIsSound(association));                                                          \
    STAMP_ASSOCIATION_READS(Class, association)                                                              \
    STAMP_MODIFY_NOT_SUPPORTED(Class, ModifyInstance)                                                        \
    STAMP_NOT_SUPPORTED(Class)                                                                               \
    STAMP_ASSOCIATIONS(Class, association)                                                                   \
    STAMP_INSTANCE_FACTORY(Class)                                                                            \
    STAMP_ASSOCIATION_FACTORY(Class)

#endif
