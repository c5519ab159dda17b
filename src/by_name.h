// SPDX-License-Identifier: Apache-2.0
// Functions that are told of a class by its name: thin wrappers of what the rooms have as data, for callers
// that know the library by these forms. Nothing in the library calls them, and nothing else looks a class up
// by its name. What they do stands with what they wrap; `rc` is the status of the operation.
#ifndef BY_NAME_H
#define BY_NAME_H

#include "frame/association.h"
#include "frame/system_keys.h"

/** frame::checkSystemKeys; a class that is none of the five keyed so is expected to have an empty name. */
void Check_System_key_value_pairs(const CMPIBroker *broker, const CMPIObjectPath *objectPath,
                                  const char *className, CMPIStatus *status);

// Object managers load other providers with an engine of the same origin, whose functions have these names
// and other parameters. Neither library may ever be bound to the other's.
#pragma GCC visibility push(hidden)

/** frame::farEndClass. */
[[nodiscard]] const char *_assoc_targetClass_Name(const CMPIBroker *broker, const CMPIObjectPath *ref,
                                                  const char *leftClass, const char *rightClass,
                                                  CMPIStatus *rc);

/** frame::farEndPath. */
[[nodiscard]] CMPIObjectPath *_assoc_targetClass_OP(const CMPIBroker *broker, const CMPIObjectPath *ref,
                                                    const char *leftClass, const char *rightClass,
                                                    CMPIStatus *rc);

/** frame::admits: 1 or 0. */
int _assoc_check_parameter_const(const CMPIBroker *broker, const CMPIObjectPath *cop, const char *refLeft,
                                 const char *refRight, const char *leftClass, const char *rightClass,
                                 const char *resultClass, const char *role, const char *resultRole,
                                 CMPIStatus *rc);

/** frame::walkFrom: 0, or -1 with `rc` set. `inst` 1 gives instances, 0 object paths; `associators` 1 gives
 * the objects at the far end, 0 the association's own. */
using AssocCreateRefs = int(const CMPIBroker *broker, const CMPIContext *ctx, const CMPIResult *rslt,
                            const CMPIObjectPath *ref, const char *className, const char *leftClass,
                            const char *rightClass, const char *refLeft, const char *refRight, int inst,
                            int associators, CMPIStatus *rc);
/** For every candidate; for those that match; for the settings of the network connection by its mode. */
[[nodiscard]] AssocCreateRefs _assoc_create_refs_1toN, _assoc_create_refs_1toN_ProvideEndpoint,
    _assoc_create_refs_1toN_ElementSetting;

/** frame::walkFromAll, from the left end if `left`, else from the right one: -1 when the sources cannot be
 * listed, else what the last one gave. */
[[nodiscard]] int _assoc_create_inst_1toN(const CMPIBroker *broker, const CMPIContext *ctx,
                                          const CMPIResult *rslt, const CMPIObjectPath *cop,
                                          const char *className, const char *leftClass,
                                          const char *rightClass, const char *refLeft, const char *refRight,
                                          int left, int inst, CMPIStatus *rc);

/** frame::associationAt. */
[[nodiscard]] CMPIInstance *_assoc_get_inst(const CMPIBroker *broker, const CMPIContext *ctx,
                                            const CMPIObjectPath *cop, const char *className,
                                            const char *refLeft, const char *refRight, CMPIStatus *rc);

/** associations::matchEndpoint. Always 0. */
int match_instance(const char *key1, const char *key2, int *match, int direction);

/** associations::matchSetting. Always 0. */
int match_instance_elementsetting(const char *key1, const char *key2, int *match, int direction,
                                  int *ipConfigCount, int ipMode);

/** frame::matchCandidate, by the rule of the association class: 0, or -1 with `status` set. */
[[nodiscard]] int get_instance_from_key(const CMPIObjectPath *source, const CMPIInstance *targetInstance,
                                        const CMPIObjectPath *targetPath, const CMPIBroker *broker,
                                        CMPIStatus *status, int *match, const char *assocClass,
                                        int *ipConfigCount, int ipMode, char *isCurrent);

#pragma GCC visibility pop

#endif
