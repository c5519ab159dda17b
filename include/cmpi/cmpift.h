/* SPDX-License-Identifier: Apache-2.0 */
/** @file
 * CMPI 2.0 function tables (DMTF/The Open Group, Common Manageability Programming Interface).
 *
 * The order of the members is binary interface: a broker and a provider that were built apart meet here.
 * ftVersion in a table is the version that its maker implements; nobody reads members that came later.
 * Status pointers (rc) may be null. Objects that a broker hands out belong to it until the call returns.
 */
#ifndef CMPI_CMPIFT_H
#define CMPI_CMPIFT_H

#include "cmpidt.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Tables of the broker */

/** Broker services: capabilities, threads and operations on the objects of other providers. */
struct _CMPIBrokerFT {
    unsigned int brokerCapabilities;
    CMPIVersion brokerVersion;
    const char *brokerName;
    CMPIContext *(*prepareAttachThread)(const CMPIBroker *mb, const CMPIContext *ctx);
    CMPIStatus (*attachThread)(const CMPIBroker *mb, const CMPIContext *ctx);
    CMPIStatus (*detachThread)(const CMPIBroker *mb, const CMPIContext *ctx);
    CMPIStatus (*deliverIndication)(const CMPIBroker *mb, const CMPIContext *ctx, const char *ns,
                                    const CMPIInstance *ind);
    CMPIEnumeration *(*enumerateInstanceNames)(const CMPIBroker *mb, const CMPIContext *ctx,
                                               const CMPIObjectPath *op, CMPIStatus *rc);
    CMPIInstance *(*getInstance)(const CMPIBroker *mb, const CMPIContext *ctx, const CMPIObjectPath *op,
                                 const char **properties, CMPIStatus *rc);
    CMPIObjectPath *(*createInstance)(const CMPIBroker *mb, const CMPIContext *ctx, const CMPIObjectPath *op,
                                      const CMPIInstance *inst, CMPIStatus *rc);
    CMPIStatus (*modifyInstance)(const CMPIBroker *mb, const CMPIContext *ctx, const CMPIObjectPath *op,
                                 const CMPIInstance *inst, const char **properties);
    CMPIStatus (*deleteInstance)(const CMPIBroker *mb, const CMPIContext *ctx, const CMPIObjectPath *op);
    CMPIEnumeration *(*execQuery)(const CMPIBroker *mb, const CMPIContext *ctx, const CMPIObjectPath *op,
                                  const char *query, const char *lang, CMPIStatus *rc);
    CMPIEnumeration *(*enumerateInstances)(const CMPIBroker *mb, const CMPIContext *ctx,
                                           const CMPIObjectPath *op, const char **properties, CMPIStatus *rc);
    CMPIEnumeration *(*associators)(const CMPIBroker *mb, const CMPIContext *ctx, const CMPIObjectPath *op,
                                    const char *assocClass, const char *resultClass, const char *role,
                                    const char *resultRole, const char **properties, CMPIStatus *rc);
    CMPIEnumeration *(*associatorNames)(const CMPIBroker *mb, const CMPIContext *ctx,
                                        const CMPIObjectPath *op, const char *assocClass,
                                        const char *resultClass, const char *role, const char *resultRole,
                                        CMPIStatus *rc);
    CMPIEnumeration *(*references)(const CMPIBroker *mb, const CMPIContext *ctx, const CMPIObjectPath *op,
                                   const char *resultClass, const char *role, const char **properties,
                                   CMPIStatus *rc);
    CMPIEnumeration *(*referenceNames)(const CMPIBroker *mb, const CMPIContext *ctx, const CMPIObjectPath *op,
                                       const char *resultClass, const char *role, CMPIStatus *rc);
    CMPIData (*invokeMethod)(const CMPIBroker *mb, const CMPIContext *ctx, const CMPIObjectPath *op,
                             const char *method, const CMPIArgs *in, CMPIArgs *out, CMPIStatus *rc);
    CMPIStatus (*setProperty)(const CMPIBroker *mb, const CMPIContext *ctx, const CMPIObjectPath *op,
                              const char *name, const CMPIValue *value, CMPIType type);
    CMPIData (*getProperty)(const CMPIBroker *mb, const CMPIContext *ctx, const CMPIObjectPath *op,
                            const char *name, CMPIStatus *rc);
};

/** Broker services that make encapsulated objects and tell their types. */
struct _CMPIBrokerEncFT {
    CMPIVersion ftVersion;
    CMPIInstance *(*newInstance)(const CMPIBroker *mb, const CMPIObjectPath *op, CMPIStatus *rc);
    CMPIObjectPath *(*newObjectPath)(const CMPIBroker *mb, const char *ns, const char *className,
                                     CMPIStatus *rc);
    CMPIArgs *(*newArgs)(const CMPIBroker *mb, CMPIStatus *rc);
    CMPIString *(*newString)(const CMPIBroker *mb, const char *chars, CMPIStatus *rc);
    CMPIArray *(*newArray)(const CMPIBroker *mb, CMPICount size, CMPIType type, CMPIStatus *rc);
    CMPIDateTime *(*newDateTime)(const CMPIBroker *mb, CMPIStatus *rc);
    CMPIDateTime *(*newDateTimeFromBinary)(const CMPIBroker *mb, CMPIUint64 usec, CMPIBoolean isInterval,
                                           CMPIStatus *rc);
    CMPIDateTime *(*newDateTimeFromChars)(const CMPIBroker *mb, const char *utf8, CMPIStatus *rc);
    CMPISelectExp *(*newSelectExp)(const CMPIBroker *mb, const char *query, const char *lang,
                                   CMPIArray **projection, CMPIStatus *rc);
    CMPIBoolean (*classPathIsA)(const CMPIBroker *mb, const CMPIObjectPath *op, const char *className,
                                CMPIStatus *rc);
    CMPIString *(*toString)(const CMPIBroker *mb, const void *object, CMPIStatus *rc);
    CMPIBoolean (*isOfType)(const CMPIBroker *mb, const void *object, const char *type, CMPIStatus *rc);
    CMPIString *(*getType)(const CMPIBroker *mb, const void *object, CMPIStatus *rc);
    CMPIString *(*getMessage)(const CMPIBroker *mb, const char *msgId, const char *defMsg, CMPIStatus *rc,
                              CMPICount count, ...);
    CMPIStatus (*logMessage)(const CMPIBroker *mb, CMPISeverity severity, const char *id, const char *text,
                             const CMPIString *string);
    CMPIStatus (*trace)(const CMPIBroker *mb, CMPILevel level, const char *component, const char *text,
                        const CMPIString *string);
    CMPIError *(*newCMPIError)(const CMPIBroker *mb, const char *owner, const char *msgId, const char *msg,
                               const CMPIErrorSeverity severity, const CMPIErrorProbableCause cause,
                               const CMPIrc cimStatusCode, CMPIStatus *rc);
    CMPIStatus (*openMessageFile)(const CMPIBroker *mb, const char *msgFile, CMPIMsgFileHandle *handle);
    CMPIStatus (*closeMessageFile)(const CMPIBroker *mb, const CMPIMsgFileHandle handle);
    CMPIString *(*getMessage2)(const CMPIBroker *mb, const char *msgId, const CMPIMsgFileHandle handle,
                               const char *defMsg, CMPIStatus *rc, CMPICount count, ...);
};

/** Operating system encapsulation: file names, threads, thread keys, mutexes, conditions. */
struct _CMPIBrokerExtFT {
    CMPIVersion ftVersion;
    char *(*resolveFileName)(const char *fileName);
    void *(*newThread)(CMPIThreadFunc start, void *parm, int detached);
    int (*joinThread)(void *thread, void **returnCode);
    int (*exitThread)(void *returnCode);
    int (*cancelThread)(void *thread);
    int (*threadSleep)(CMPIUint32 msec);
    int (*threadOnce)(int *once, CMPIThreadOnceFunc init);
    int (*createThreadKey)(unsigned int *key, CMPIThreadKeyCleanupFunc cleanup);
    int (*destroyThreadKey)(unsigned int key);
    void *(*getThreadSpecific)(unsigned int key);
    int (*setThreadSpecific)(unsigned int key, void *value);
    void *(*newMutex)(int opt);
    void (*destroyMutex)(void *mutex);
    void (*lockMutex)(void *mutex);
    void (*unlockMutex)(void *mutex);
    void *(*newCondition)(int opt);
    void (*destroyCondition)(void *cond);
    int (*condWait)(void *cond, void *mutex);
    int (*timedCondWait)(void *cond, void *mutex, struct timespec *wait);
    int (*signalCondition)(void *cond);
};

/** Memory services: marks of the garbage collection, allocation, release of encapsulated objects. */
struct _CMPIBrokerMemFT {
    CMPIVersion ftVersion;
    CMPIGcStat *(*mark)(const CMPIBroker *mb, CMPIStatus *rc);
    CMPIStatus (*release)(const CMPIBroker *mb, const CMPIGcStat *gc);
    void *(*cmpiMalloc)(const CMPIBroker *mb, size_t size);
    void *(*cmpiCalloc)(const CMPIBroker *mb, size_t count, size_t size);
    void *(*cmpiRealloc)(const CMPIBroker *mb, void *ptr, size_t size);
    char *(*cmpiStrDup)(const CMPIBroker *mb, const char *chars);
    void (*cmpiFree)(const CMPIBroker *mb, void *ptr);
    void (*freeInstance)(const CMPIBroker *mb, CMPIInstance *inst);
    void (*freeObjectPath)(const CMPIBroker *mb, CMPIObjectPath *op);
    void (*freeArgs)(const CMPIBroker *mb, CMPIArgs *args);
    void (*freeString)(const CMPIBroker *mb, CMPIString *string);
    void (*freeArray)(const CMPIBroker *mb, CMPIArray *array);
    void (*freeDateTime)(const CMPIBroker *mb, CMPIDateTime *dt);
    void (*freeSelectExp)(const CMPIBroker *mb, CMPISelectExp *exp);
};

/* Tables of the encapsulated objects */

/** Invocation context: the named entries that accompany a request. */
struct _CMPIContextFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIContext *ctx);
    CMPIContext *(*clone)(const CMPIContext *ctx, CMPIStatus *rc);
    CMPIData (*getEntry)(const CMPIContext *ctx, const char *name, CMPIStatus *rc);
    CMPIData (*getEntryAt)(const CMPIContext *ctx, CMPICount index, CMPIString **name, CMPIStatus *rc);
    CMPICount (*getEntryCount)(const CMPIContext *ctx, CMPIStatus *rc);
    CMPIStatus (*addEntry)(const CMPIContext *ctx, const char *name, const CMPIValue *value,
                           const CMPIType type);
};

/** Result of an operation: what a provider returns goes through here. */
struct _CMPIResultFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIResult *rslt);
    CMPIResult *(*clone)(const CMPIResult *rslt, CMPIStatus *rc);
    CMPIStatus (*returnData)(const CMPIResult *rslt, const CMPIValue *value, const CMPIType type);
    CMPIStatus (*returnInstance)(const CMPIResult *rslt, const CMPIInstance *inst);
    CMPIStatus (*returnObjectPath)(const CMPIResult *rslt, const CMPIObjectPath *op);
    CMPIStatus (*returnDone)(const CMPIResult *rslt);
    CMPIStatus (*returnError)(const CMPIResult *rslt, const CMPIError *error);
};

/** Text. */
struct _CMPIStringFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIString *string);
    CMPIString *(*clone)(const CMPIString *string, CMPIStatus *rc);
    const char *(*getCharPtr)(const CMPIString *string, CMPIStatus *rc);
};

/** Array of values of one type. */
struct _CMPIArrayFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIArray *array);
    CMPIArray *(*clone)(const CMPIArray *array, CMPIStatus *rc);
    CMPICount (*getSize)(const CMPIArray *array, CMPIStatus *rc);
    CMPIType (*getSimpleType)(const CMPIArray *array, CMPIStatus *rc);
    CMPIData (*getElementAt)(const CMPIArray *array, CMPICount index, CMPIStatus *rc);
    CMPIStatus (*setElementAt)(const CMPIArray *array, CMPICount index, const CMPIValue *value,
                               CMPIType type);
};

/** Enumeration of what a broker operation delivered. */
struct _CMPIEnumerationFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIEnumeration *en);
    CMPIEnumeration *(*clone)(const CMPIEnumeration *en, CMPIStatus *rc);
    CMPIData (*getNext)(const CMPIEnumeration *en, CMPIStatus *rc);
    CMPIBoolean (*hasNext)(const CMPIEnumeration *en, CMPIStatus *rc);
    CMPIArray *(*toArray)(const CMPIEnumeration *en, CMPIStatus *rc);
};

/** Instance: its properties and its object path. */
struct _CMPIInstanceFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIInstance *inst);
    CMPIInstance *(*clone)(const CMPIInstance *inst, CMPIStatus *rc);
    CMPIData (*getProperty)(const CMPIInstance *inst, const char *name, CMPIStatus *rc);
    CMPIData (*getPropertyAt)(const CMPIInstance *inst, CMPICount index, CMPIString **name, CMPIStatus *rc);
    CMPICount (*getPropertyCount)(const CMPIInstance *inst, CMPIStatus *rc);
    CMPIStatus (*setProperty)(const CMPIInstance *inst, const char *name, const CMPIValue *value,
                              CMPIType type);
    CMPIObjectPath *(*getObjectPath)(const CMPIInstance *inst, CMPIStatus *rc);
    CMPIStatus (*setPropertyFilter)(const CMPIInstance *inst, const char **properties, const char **keys);
    CMPIStatus (*setObjectPath)(const CMPIInstance *inst, const CMPIObjectPath *op);
    CMPIStatus (*setPropertyWithOrigin)(const CMPIInstance *inst, const char *name, const CMPIValue *value,
                                        const CMPIType type, const char *origin);
};

/** Object path: host, namespace, class, keys and qualifiers. */
struct _CMPIObjectPathFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIObjectPath *op);
    CMPIObjectPath *(*clone)(const CMPIObjectPath *op, CMPIStatus *rc);
    CMPIStatus (*setNameSpace)(const CMPIObjectPath *op, const char *ns);
    CMPIString *(*getNameSpace)(const CMPIObjectPath *op, CMPIStatus *rc);
    CMPIStatus (*setHostname)(const CMPIObjectPath *op, const char *hostname);
    CMPIString *(*getHostname)(const CMPIObjectPath *op, CMPIStatus *rc);
    CMPIStatus (*setClassName)(const CMPIObjectPath *op, const char *className);
    CMPIString *(*getClassName)(const CMPIObjectPath *op, CMPIStatus *rc);
    CMPIStatus (*addKey)(const CMPIObjectPath *op, const char *name, const CMPIValue *value,
                         const CMPIType type);
    CMPIData (*getKey)(const CMPIObjectPath *op, const char *name, CMPIStatus *rc);
    CMPIData (*getKeyAt)(const CMPIObjectPath *op, CMPICount index, CMPIString **name, CMPIStatus *rc);
    CMPICount (*getKeyCount)(const CMPIObjectPath *op, CMPIStatus *rc);
    CMPIStatus (*setNameSpaceFromObjectPath)(const CMPIObjectPath *op, const CMPIObjectPath *src);
    CMPIStatus (*setHostAndNameSpaceFromObjectPath)(const CMPIObjectPath *op, const CMPIObjectPath *src);
    CMPIData (*getClassQualifier)(const CMPIObjectPath *op, const char *qualifier, CMPIStatus *rc);
    CMPIData (*getPropertyQualifier)(const CMPIObjectPath *op, const char *property, const char *qualifier,
                                     CMPIStatus *rc);
    CMPIData (*getMethodQualifier)(const CMPIObjectPath *op, const char *method, const char *qualifier,
                                   CMPIStatus *rc);
    CMPIData (*getParameterQualifier)(const CMPIObjectPath *op, const char *method, const char *parameter,
                                      const char *qualifier, CMPIStatus *rc);
    CMPIString *(*toString)(const CMPIObjectPath *op, CMPIStatus *rc);
};

/** Arguments of a method, in or out. */
struct _CMPIArgsFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIArgs *args);
    CMPIArgs *(*clone)(const CMPIArgs *args, CMPIStatus *rc);
    CMPIStatus (*addArg)(const CMPIArgs *args, const char *name, const CMPIValue *value, const CMPIType type);
    CMPIData (*getArg)(const CMPIArgs *args, const char *name, CMPIStatus *rc);
    CMPIData (*getArgAt)(const CMPIArgs *args, CMPICount index, CMPIString **name, CMPIStatus *rc);
    CMPICount (*getArgCount)(const CMPIArgs *args, CMPIStatus *rc);
};

/** Point in time or interval, in microseconds. */
struct _CMPIDateTimeFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIDateTime *dt);
    CMPIDateTime *(*clone)(const CMPIDateTime *dt, CMPIStatus *rc);
    CMPIUint64 (*getBinaryFormat)(const CMPIDateTime *dt, CMPIStatus *rc);
    CMPIString *(*getStringFormat)(const CMPIDateTime *dt, CMPIStatus *rc);
    CMPIBoolean (*isInterval)(const CMPIDateTime *dt, CMPIStatus *rc);
};

/** Select expression of an indication filter. */
struct _CMPISelectExpFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPISelectExp *exp);
    CMPISelectExp *(*clone)(const CMPISelectExp *exp, CMPIStatus *rc);
    CMPIBoolean (*evaluate)(const CMPISelectExp *exp, const CMPIInstance *inst, CMPIStatus *rc);
    CMPIString *(*getString)(const CMPISelectExp *exp, CMPIStatus *rc);
    CMPISelectCond *(*getDOC)(const CMPISelectExp *exp, CMPIStatus *rc);
    CMPISelectCond *(*getCOD)(const CMPISelectExp *exp, CMPIStatus *rc);
    CMPIBoolean (*evaluateUsingAccessor)(const CMPISelectExp *exp, CMPIAccessor *accessor, void *parm,
                                         CMPIStatus *rc);
};

/** Condition of a select expression, in normal form. */
struct _CMPISelectCondFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPISelectCond *cond);
    CMPISelectCond *(*clone)(const CMPISelectCond *cond, CMPIStatus *rc);
    CMPICount (*getCountAndType)(const CMPISelectCond *cond, int *type, CMPIStatus *rc);
    CMPISubCond *(*getSubCondAt)(const CMPISelectCond *cond, CMPICount index, CMPIStatus *rc);
};

/** Subcondition of a select condition. */
struct _CMPISubCondFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPISubCond *subCond);
    CMPISubCond *(*clone)(const CMPISubCond *subCond, CMPIStatus *rc);
    CMPICount (*getCount)(const CMPISubCond *subCond, CMPIStatus *rc);
    CMPIPredicate *(*getPredicateAt)(const CMPISubCond *subCond, CMPICount index, CMPIStatus *rc);
    CMPIPredicate *(*getPredicate)(const CMPISubCond *subCond, const char *name, CMPIStatus *rc);
};

/** Predicate of a subcondition. */
struct _CMPIPredicateFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIPredicate *pred);
    CMPIPredicate *(*clone)(const CMPIPredicate *pred, CMPIStatus *rc);
    CMPIStatus (*getData)(const CMPIPredicate *pred, CMPIType *type, CMPIPredOp *op, CMPIString **lhs,
                          CMPIString **rhs);
    CMPIBoolean (*evaluateUsingAccessor)(const CMPIPredicate *pred, CMPIAccessor *accessor, void *parm,
                                         CMPIStatus *rc);
};

/** Extended error (CIM_Error). */
struct _CMPIErrorFT {
    CMPIVersion ftVersion;
    CMPIStatus (*release)(CMPIError *error);
    CMPIError *(*clone)(const CMPIError *error, CMPIStatus *rc);
    CMPIErrorType (*getErrorType)(const CMPIError *error, CMPIStatus *rc);
    CMPIString *(*getOtherErrorType)(const CMPIError *error, CMPIStatus *rc);
    CMPIString *(*getOwningEntity)(const CMPIError *error, CMPIStatus *rc);
    CMPIString *(*getMessageID)(const CMPIError *error, CMPIStatus *rc);
    CMPIString *(*getMessage)(const CMPIError *error, CMPIStatus *rc);
    CMPIErrorSeverity (*getPerceivedSeverity)(const CMPIError *error, CMPIStatus *rc);
    CMPIErrorProbableCause (*getProbableCause)(const CMPIError *error, CMPIStatus *rc);
    CMPIString *(*getProbableCauseDescription)(const CMPIError *error, CMPIStatus *rc);
    CMPIArray *(*getRecommendedActions)(const CMPIError *error, CMPIStatus *rc);
    CMPIString *(*getErrorSource)(const CMPIError *error, CMPIStatus *rc);
    CMPIErrorSrcFormat (*getErrorSourceFormat)(const CMPIError *error, CMPIStatus *rc);
    CMPIString *(*getOtherErrorSourceFormat)(const CMPIError *error, CMPIStatus *rc);
    CMPIrc (*getCIMStatusCode)(const CMPIError *error, CMPIStatus *rc);
    CMPIString *(*getCIMStatusCodeDescription)(const CMPIError *error, CMPIStatus *rc);
    CMPIArray *(*getMessageArguments)(const CMPIError *error, CMPIStatus *rc);
    CMPIStatus (*setErrorType)(const CMPIError *error, const CMPIErrorType type);
    CMPIStatus (*setOtherErrorType)(const CMPIError *error, const char *type);
    CMPIStatus (*setProbableCauseDescription)(const CMPIError *error, const char *description);
    CMPIStatus (*setRecommendedActions)(const CMPIError *error, const CMPIArray *actions);
    CMPIStatus (*setErrorSource)(const CMPIError *error, const char *source);
    CMPIStatus (*setErrorSourceFormat)(const CMPIError *error, const CMPIErrorSrcFormat format);
    CMPIStatus (*setOtherErrorSourceFormat)(const CMPIError *error, const char *format);
    CMPIStatus (*setCIMStatusCodeDescription)(const CMPIError *error, const char *description);
    CMPIStatus (*setMessageArguments)(const CMPIError *error, const CMPIArray *arguments);
};

/* Tables of the management instrumentation (the provider) */

/** Instance provider. */
struct _CMPIInstanceMIFT {
    CMPIVersion ftVersion;
    int miVersion;
    const char *miName;
    CMPIStatus (*cleanup)(CMPIInstanceMI *mi, const CMPIContext *ctx, CMPIBoolean terminating);
    CMPIStatus (*enumerateInstanceNames)(CMPIInstanceMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                                         const CMPIObjectPath *op);
    CMPIStatus (*enumerateInstances)(CMPIInstanceMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                                     const CMPIObjectPath *op, const char **properties);
    CMPIStatus (*getInstance)(CMPIInstanceMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                              const CMPIObjectPath *op, const char **properties);
    CMPIStatus (*createInstance)(CMPIInstanceMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                                 const CMPIObjectPath *op, const CMPIInstance *inst);
    CMPIStatus (*modifyInstance)(CMPIInstanceMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                                 const CMPIObjectPath *op, const CMPIInstance *inst, const char **properties);
    CMPIStatus (*deleteInstance)(CMPIInstanceMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                                 const CMPIObjectPath *op);
    CMPIStatus (*execQuery)(CMPIInstanceMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                            const CMPIObjectPath *op, const char *query, const char *lang);
};

/** Association provider. */
struct _CMPIAssociationMIFT {
    CMPIVersion ftVersion;
    int miVersion;
    const char *miName;
    CMPIStatus (*cleanup)(CMPIAssociationMI *mi, const CMPIContext *ctx, CMPIBoolean terminating);
    CMPIStatus (*associators)(CMPIAssociationMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                              const CMPIObjectPath *op, const char *assocClass, const char *resultClass,
                              const char *role, const char *resultRole, const char **properties);
    CMPIStatus (*associatorNames)(CMPIAssociationMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                                  const CMPIObjectPath *op, const char *assocClass, const char *resultClass,
                                  const char *role, const char *resultRole);
    CMPIStatus (*references)(CMPIAssociationMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                             const CMPIObjectPath *op, const char *resultClass, const char *role,
                             const char **properties);
    CMPIStatus (*referenceNames)(CMPIAssociationMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                                 const CMPIObjectPath *op, const char *resultClass, const char *role);
};

/** Method provider. */
struct _CMPIMethodMIFT {
    CMPIVersion ftVersion;
    int miVersion;
    const char *miName;
    CMPIStatus (*cleanup)(CMPIMethodMI *mi, const CMPIContext *ctx, CMPIBoolean terminating);
    CMPIStatus (*invokeMethod)(CMPIMethodMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                               const CMPIObjectPath *op, const char *method, const CMPIArgs *in,
                               CMPIArgs *out);
};

/** Property provider. */
struct _CMPIPropertyMIFT {
    CMPIVersion ftVersion;
    int miVersion;
    const char *miName;
    CMPIStatus (*cleanup)(CMPIPropertyMI *mi, const CMPIContext *ctx, CMPIBoolean terminating);
    CMPIStatus (*setProperty)(CMPIPropertyMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                              const CMPIObjectPath *op, const char *name, const CMPIData data);
    CMPIStatus (*getProperty)(CMPIPropertyMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                              const CMPIObjectPath *op, const char *name);
    CMPIStatus (*setPropertyWithOrigin)(CMPIPropertyMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                                        CMPIObjectPath *op, const char *name, const CMPIData data,
                                        const char *origin);
};

/** Indication provider. */
struct _CMPIIndicationMIFT {
    CMPIVersion ftVersion;
    int miVersion;
    const char *miName;
    CMPIStatus (*cleanup)(CMPIIndicationMI *mi, const CMPIContext *ctx, CMPIBoolean terminating);
    CMPIStatus (*authorizeFilter)(CMPIIndicationMI *mi, const CMPIContext *ctx, const CMPISelectExp *filter,
                                  const char *className, const CMPIObjectPath *op, const char *owner);
    CMPIStatus (*mustPoll)(CMPIIndicationMI *mi, const CMPIContext *ctx, const CMPIResult *rslt,
                           const CMPISelectExp *filter, const char *className, const CMPIObjectPath *op);
    CMPIStatus (*activateFilter)(CMPIIndicationMI *mi, const CMPIContext *ctx, const CMPISelectExp *filter,
                                 const char *className, const CMPIObjectPath *op,
                                 CMPIBoolean firstActivation);
    CMPIStatus (*deActivateFilter)(CMPIIndicationMI *mi, const CMPIContext *ctx, const CMPISelectExp *filter,
                                   const char *className, const CMPIObjectPath *op,
                                   CMPIBoolean lastActivation);
    CMPIStatus (*enableIndications)(CMPIIndicationMI *mi, const CMPIContext *ctx);
    CMPIStatus (*disableIndications)(CMPIIndicationMI *mi, const CMPIContext *ctx);
};

#ifdef __cplusplus
}
#endif

#endif
