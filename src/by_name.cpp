// SPDX-License-Identifier: Apache-2.0
#include "by_name.h"
#include "associations/matchers.h"

using namespace associations;
using namespace frame;

// ---- objects that are keyed to the system name ----

void Check_System_key_value_pairs(const CMPIBroker *broker, const CMPIObjectPath *objectPath,
                                  const char *className, CMPIStatus *status)
{
    static constexpr SystemKeyed objects[] = {
        {"ZT_Marovelton_IPNetworkConnection", "%s-IPNetworkConnection"},
        {"ZT_Marovelton_RemoteManagementService", "%s-RemoteManagementService"},
        {"ZT_Marovelton_WSManagementService", "%s-WSManagementService"},
        {"ZT_Marovelton_IPConfigurationService", "%s-IPConfigurationService"},
        {"ZT_Marovelton_Monitor", nullptr},
    };
    SystemKeyed asked = {className, ""};
    for (const SystemKeyed &object : objects) {
        if (same(object.className, className)) {
            asked = object;
        }
    }
    static_cast<void>(checkSystemKeys(broker, objectPath, asked, status)); // the status tells
}

// ---- associations ----

constexpr Matcher matchesNothing = {};

namespace
{

/** What an association has of its own. */
struct Named {
    const char *className;
    const Matcher *matcher = &matchesNothing;
    const OwnProperties *own = nullptr;
};

} // namespace

static Named named(const char *className)
{
    static constexpr Named all[] = {
        {"ZT_Marovelton_ElementSettingData", &settingsOfConnection, &currentByEnds},
        {"ZT_Marovelton_OrderedComponent", &matchesNothing, &sequence},
        {"ZT_Marovelton_ProvidesEndpoint", &endpointOfServices},
        {"ZT_Marovelton_SAPSAPDependency", &endpointOfConnection},
    };
    for (const Named &each : all) {
        if (same(each.className, className)) {
            return each;
        }
    }
    return {className};
}

static WalkKind kindOf(int inst, int associators)
{
    if (!associators) {
        return inst ? WalkKind::references : WalkKind::referenceNames;
    }
    if (inst == 1 && associators == 1) {
        return WalkKind::associators;
    }
    return inst ? WalkKind::nothing : WalkKind::associatorNames;
}

constexpr WalkTraces settingTraces = {
    "--- _assoc_create_refs_1toN_ElementSetting() called \n---",
    "--- _assoc_create_refs_1toN_ElementSetting() leave \n---",
};

const char *_assoc_targetClass_Name(const CMPIBroker *broker, const CMPIObjectPath *ref,
                                    const char *leftClass, const char *rightClass, CMPIStatus *rc)
{
    return farEndClass(broker, ref, leftClass, rightClass, rc);
}

CMPIObjectPath *_assoc_targetClass_OP(const CMPIBroker *broker, const CMPIObjectPath *ref,
                                      const char *leftClass, const char *rightClass, CMPIStatus *rc)
{
    return farEndPath(broker, ref, leftClass, rightClass, rc);
}

int _assoc_check_parameter_const(const CMPIBroker *broker, const CMPIObjectPath *cop, const char *refLeft,
                                 const char *refRight, const char *leftClass, const char *rightClass,
                                 const char *resultClass, const char *role, const char *resultRole,
                                 CMPIStatus *rc)
{
    return admits(broker, cop, {nullptr, leftClass, rightClass, refLeft, refRight},
                  {nullptr, resultClass, role, resultRole}, rc);
}

int _assoc_create_refs_1toN(const CMPIBroker *broker, const CMPIContext *ctx, const CMPIResult *rslt,
                            const CMPIObjectPath *ref, const char *className, const char *leftClass,
                            const char *rightClass, const char *refLeft, const char *refRight, int inst,
                            int associators, CMPIStatus *rc)
{
    const Walk walk = {.ends = {className, leftClass, rightClass, refLeft, refRight},
                       .kind = kindOf(inst, associators),
                       .own = named(className).own};
    return walkFrom(ref, walk, {broker, ctx, rslt, rc}) ? 0 : -1;
}

int _assoc_create_refs_1toN_ProvideEndpoint(const CMPIBroker *broker, const CMPIContext *ctx,
                                            const CMPIResult *rslt, const CMPIObjectPath *ref,
                                            const char *className, const char *leftClass,
                                            const char *rightClass, const char *refLeft, const char *refRight,
                                            int inst, int associators, CMPIStatus *rc)
{
    const Named association = named(className);
    const Walk walk = {.ends = {className, leftClass, rightClass, refLeft, refRight},
                       .kind = kindOf(inst, associators),
                       .matcher = association.matcher,
                       .own = association.own,
                       .traces = &endpointTraces};
    return walkFrom(ref, walk, {broker, ctx, rslt, rc}) ? 0 : -1;
}

int _assoc_create_refs_1toN_ElementSetting(const CMPIBroker *broker, const CMPIContext *ctx,
                                           const CMPIResult *rslt, const CMPIObjectPath *ref,
                                           const char *className, const char *leftClass,
                                           const char *rightClass, const char *refLeft, const char *refRight,
                                           int inst, int associators, CMPIStatus *rc)
{
    const Walk walk = {.ends = {className, leftClass, rightClass, refLeft, refRight},
                       .kind = kindOf(inst, associators),
                       .matcher = named(className).matcher,
                       .own = &currentByKeys,
                       .traces = &settingTraces};
    return walkFrom(ref, walk, {broker, ctx, rslt, rc}) ? 0 : -1;
}

int _assoc_create_inst_1toN(const CMPIBroker *broker, const CMPIContext *ctx, const CMPIResult *rslt,
                            const CMPIObjectPath *cop, const char *className, const char *leftClass,
                            const char *rightClass, const char *refLeft, const char *refRight, int left,
                            int inst, CMPIStatus *rc)
{
    const Walk walk = {.ends = {className, leftClass, rightClass, refLeft, refRight},
                       .kind = kindOf(inst, 0),
                       .own = named(className).own};
    return walkFromAll(cop, left ? leftClass : rightClass, walk, {broker, ctx, rslt, rc}) ? 0 : -1;
}

CMPIInstance *_assoc_get_inst(const CMPIBroker *broker, const CMPIContext *ctx, const CMPIObjectPath *cop,
                              const char *className, const char *refLeft, const char *refRight,
                              CMPIStatus *rc)
{
    return associationAt(cop, className, refLeft, refRight, {broker, ctx, nullptr, rc});
}

int match_instance(const char *key1, const char *key2, int *match, int direction)
{
    matchEndpoint(key1, key2, direction, match);
    return 0;
}

int match_instance_elementsetting(const char *key1, const char *key2, int *match, int direction,
                                  int *ipConfigCount, int ipMode)
{
    matchSetting(key1, key2, direction, ipMode, match, ipConfigCount);
    return 0;
}

int get_instance_from_key(const CMPIObjectPath *source, const CMPIInstance *targetInstance,
                          const CMPIObjectPath *targetPath, const CMPIBroker *broker, CMPIStatus *status,
                          int *match, const char *assocClass, int *ipConfigCount, int ipMode, char *isCurrent)
{
    Notes notes = {*match, *ipConfigCount, ipMode, *isCurrent};
    const bool done =
        matchCandidate(*named(assocClass).matcher, broker, source, targetInstance, targetPath, status, notes);
    *match = notes.match;
    *ipConfigCount = notes.count;
    *isCurrent = notes.current;
    return done ? 0 : -1;
}
