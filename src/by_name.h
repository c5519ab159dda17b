// SPDX-License-Identifier: Apache-2.0
// Functions that are told of a class by its name: thin wrappers of what the rooms have as data, for callers
// that know the library by these forms. Nothing in the library calls them, and nothing else looks a class up
// by its name.
#ifndef BY_NAME_H
#define BY_NAME_H

#include "frame/association.h"
#include "frame/system_keys.h"

/** Checks the keys of a singleton that is keyed to the monitor's system name: `Name` (not the monitor's),
 *  `SystemName`, `SystemCreationClassName`, `CreationClassName`, without regard to case. The first key that
 * is missing or wrong sets `status` to CMPI_RC_ERR_NOT_FOUND; success leaves it as it was. */
void Check_System_key_value_pairs(const CMPIBroker *broker, const CMPIObjectPath *objectPath,
                                  const char *className, CMPIStatus *status);

// Object managers load other providers with an engine of the same origin, whose functions have these names
// and other parameters. Neither library may ever be bound to the other's.
#pragma GCC visibility push(hidden)

// Flags: `left` enumerates the left end as sources, else the right end; `inst` 1 gives instances, 0 object
// paths; `associators` 1 gives the far-end objects, 0 the association's own. `rc` is the status of the
// operation.

/** The class at the far end from `ref`, one of the two given pointers; where both ends fit, `ref` is the left
 *  one. Null, with `rc` set, on failure. */
const char *_assoc_targetClass_Name(const CMPIBroker *broker, const CMPIObjectPath *ref,
                                    const char *leftClass, const char *rightClass, CMPIStatus *rc);

/** A new path of the far-end class in the namespace of `ref`. Null, or a path without a handle, with `rc`
 * set, on failure. */
CMPIObjectPath *_assoc_targetClass_OP(const CMPIBroker *broker, const CMPIObjectPath *ref,
                                      const char *leftClass, const char *rightClass, CMPIStatus *rc);

/** Whether the filters of a request (each may be null) admit this association for the source `cop`: 1 or 0.
 */
int _assoc_check_parameter_const(const CMPIBroker *broker, const CMPIObjectPath *cop, const char *refLeft,
                                 const char *refRight, const char *leftClass, const char *rightClass,
                                 const char *resultClass, const char *role, const char *resultRole,
                                 CMPIStatus *rc);

/** Answers a request for one source object. Returns 0, also when nothing was found, or -1 with `rc` set. */
int _assoc_create_refs_1toN(const CMPIBroker *broker, const CMPIContext *ctx, const CMPIResult *rslt,
                            const CMPIObjectPath *ref, const char *className, const char *leftClass,
                            const char *rightClass, const char *refLeft, const char *refRight, int inst,
                            int associators, CMPIStatus *rc);
/** The same for the candidates that match alone. */
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

#pragma GCC visibility pop

#endif
