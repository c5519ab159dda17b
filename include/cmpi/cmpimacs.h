/* SPDX-License-Identifier: Apache-2.0 */
/** @file
 * CMPI 2.0 convenience macros (DMTF/The Open Group, Common Manageability Programming Interface).
 *
 * CMNew* go to the broker's table of encapsulated objects, CB* to the broker's own table, the other CM* to
 * the table of the object they name first. Such a macro evaluates its first argument twice.
 *
 * Values (value, type): simple values are passed by address, CMPI_chars by the char * itself, encapsulated
 * objects and arrays by the address of their pointer.
 */
#ifndef CMPI_CMPIMACS_H
#define CMPI_CMPIMACS_H

#include "cmpidt.h"
#include "cmpift.h"

#ifdef __cplusplus
#define CMPI_EXTERN_C extern "C"
#else
#define CMPI_EXTERN_C extern
#endif

/** The hook of a factory that has nothing to do. */
#define CMNoHook

/* Statuses */

/** Sets a status. Does nothing where the status is null; msg may be null. */
static inline void cmpiSetStatus(CMPIStatus *st, CMPIrc rc, CMPIString *msg)
{
    if (st != NULL) {
        st->rc = rc;
        st->msg = msg;
    }
}

/** A status with a message that the broker makes of chars; without one where it cannot. */
static inline CMPIStatus cmpiStatusWithChars(const CMPIBroker *mb, CMPIrc rc, const char *chars)
{
    CMPIStatus st = {rc, NULL};
    st.msg = mb->eft->newString(mb, chars, NULL);
    return st;
}

/** Sets the code of a status, and no message. */
#define CMSetStatus(st, rcValue) cmpiSetStatus((st), (rcValue), NULL)
/** Sets the code of a status, and a CMPIString * as the message. */
#define CMSetStatusWithString(st, rcValue, string) cmpiSetStatus((st), (rcValue), (string))
/** Sets the code of a status, and the message from characters. */
#define CMSetStatusWithChars(mb, st, rcValue, chars)                                                         \
    do {                                                                                                     \
        const CMPIStatus cmpiStatus_ = cmpiStatusWithChars((mb), (rcValue), (chars));                        \
        cmpiSetStatus((st), cmpiStatus_.rc, cmpiStatus_.msg);                                                \
    } while (0)

/** Leaves the function with a status that has a code alone. */
#define CMReturn(rcValue)                                                                                    \
    do {                                                                                                     \
        const CMPIStatus cmpiStatus_ = {(rcValue), NULL};                                                    \
        return cmpiStatus_;                                                                                  \
    } while (0)
/** Leaves the function with a status of a code and a CMPIString *. */
#define CMReturnWithString(rcValue, string)                                                                  \
    do {                                                                                                     \
        const CMPIStatus cmpiStatus_ = {(rcValue), (string)};                                                \
        return cmpiStatus_;                                                                                  \
    } while (0)
/** Leaves the function with a status of a code and a message from characters. */
#define CMReturnWithChars(mb, rcValue, chars)                                                                \
    do {                                                                                                     \
        return cmpiStatusWithChars((mb), (rcValue), (chars));                                                \
    } while (0)

/* Nothing there */

/** True where an object pointer or the handle of the object is null. */
#define CMIsNullObject(obj) ((obj) == NULL || (obj)->hdl == NULL)
/** True where CMPIData holds no value. */
#define CMIsNullValue(data) (((data).state & CMPI_nullValue) != 0)

/* Broker: making encapsulated objects. rc: CMPIStatus *, may be null; null object on failure. */
#define CMNewInstance(mb, op, rc) ((mb)->eft->newInstance((mb), (op), (rc)))
#define CMNewObjectPath(mb, ns, cn, rc) ((mb)->eft->newObjectPath((mb), (ns), (cn), (rc)))
#define CMNewArgs(mb, rc) ((mb)->eft->newArgs((mb), (rc)))
#define CMNewString(mb, chars, rc) ((mb)->eft->newString((mb), (chars), (rc)))
#define CMNewArray(mb, size, type, rc) ((mb)->eft->newArray((mb), (size), (type), (rc)))
/** The current time. */
#define CMNewDateTime(mb, rc) ((mb)->eft->newDateTime((mb), (rc)))
/** usec: microseconds since 1970-01-01 00:00:00 UTC, or of the interval. */
#define CMNewDateTimeFromBinary(mb, usec, interval, rc)                                                      \
    ((mb)->eft->newDateTimeFromBinary((mb), (usec), (interval), (rc)))
/** utf8: the 25 characters of a CIM datetime (DSP0004). */
#define CMNewDateTimeFromChars(mb, utf8, rc) ((mb)->eft->newDateTimeFromChars((mb), (utf8), (rc)))
#define CMNewSelectExp(mb, query, lang, proj, rc)                                                            \
    ((mb)->eft->newSelectExp((mb), (query), (lang), (proj), (rc)))
#define CMNewCMPIError(mb, owner, msgId, msg, sev, pc, cimStatusCode, rc)                                    \
    ((mb)->eft->newCMPIError((mb), (owner), (msgId), (msg), (sev), (pc), (cimStatusCode), (rc)))

/* Broker: types, messages, log and trace */
#define CMClassPathIsA(mb, op, cn, rc) ((mb)->eft->classPathIsA((mb), (op), (cn), (rc)))
#define CMObjectToString(mb, obj, rc) ((mb)->eft->toString((mb), (obj), (rc)))
#define CMIsOfType(mb, obj, type, rc) ((mb)->eft->isOfType((mb), (obj), (type), (rc)))
#define CMGetType(mb, obj, rc) ((mb)->eft->getType((mb), (obj), (rc)))
#define CMLogMessage(mb, sev, id, text, string) ((mb)->eft->logMessage((mb), (sev), (id), (text), (string)))
#define CMTraceMessage(mb, level, component, text, string)                                                   \
    ((mb)->eft->trace((mb), (level), (component), (text), (string)))
#define CMOpenMessageFile(mb, msgFile, handle) ((mb)->eft->openMessageFile((mb), (msgFile), (handle)))
#define CMCloseMessageFile(mb, handle) ((mb)->eft->closeMessageFile((mb), (handle)))
#define CMGetMessage(mb, msgId, defMsg, rc, ...)                                                             \
    ((mb)->eft->getMessage((mb), (msgId), (defMsg), (rc), __VA_ARGS__))
#define CMGetMessage2(mb, msgId, handle, defMsg, rc, ...)                                                    \
    ((mb)->eft->getMessage2((mb), (msgId), (handle), (defMsg), (rc), __VA_ARGS__))

/* Broker: capabilities and threads */
#define CBBrokerCapabilities(mb) ((mb)->bft->brokerCapabilities)
#define CBBrokerVersion(mb) ((mb)->bft->brokerVersion)
#define CBBrokerName(mb) ((mb)->bft->brokerName)
#define CBPrepareAttachThread(mb, ctx) ((mb)->bft->prepareAttachThread((mb), (ctx)))
#define CBAttachThread(mb, ctx) ((mb)->bft->attachThread((mb), (ctx)))
#define CBDetachThread(mb, ctx) ((mb)->bft->detachThread((mb), (ctx)))

/* Broker: operations on the objects of other providers */
#define CBDeliverIndication(mb, ctx, ns, ind) ((mb)->bft->deliverIndication((mb), (ctx), (ns), (ind)))
#define CBEnumInstanceNames(mb, ctx, op, rc) ((mb)->bft->enumerateInstanceNames((mb), (ctx), (op), (rc)))
#define CBGetInstance(mb, ctx, op, props, rc) ((mb)->bft->getInstance((mb), (ctx), (op), (props), (rc)))
#define CBCreateInstance(mb, ctx, op, inst, rc) ((mb)->bft->createInstance((mb), (ctx), (op), (inst), (rc)))
#define CBModifyInstance(mb, ctx, op, inst, props)                                                           \
    ((mb)->bft->modifyInstance((mb), (ctx), (op), (inst), (props)))
#define CBDeleteInstance(mb, ctx, op) ((mb)->bft->deleteInstance((mb), (ctx), (op)))
#define CBExecQuery(mb, ctx, op, query, lang, rc)                                                            \
    ((mb)->bft->execQuery((mb), (ctx), (op), (query), (lang), (rc)))
#define CBEnumInstances(mb, ctx, op, props, rc)                                                              \
    ((mb)->bft->enumerateInstances((mb), (ctx), (op), (props), (rc)))
#define CBAssociators(mb, ctx, op, assocClass, resultClass, role, resultRole, props, rc)                     \
    ((mb)->bft->associators((mb), (ctx), (op), (assocClass), (resultClass), (role), (resultRole), (props),   \
                            (rc)))
#define CBAssociatorNames(mb, ctx, op, assocClass, resultClass, role, resultRole, rc)                        \
    ((mb)->bft->associatorNames((mb), (ctx), (op), (assocClass), (resultClass), (role), (resultRole), (rc)))
#define CBReferences(mb, ctx, op, resultClass, role, props, rc)                                              \
    ((mb)->bft->references((mb), (ctx), (op), (resultClass), (role), (props), (rc)))
#define CBReferenceNames(mb, ctx, op, resultClass, role, rc)                                                 \
    ((mb)->bft->referenceNames((mb), (ctx), (op), (resultClass), (role), (rc)))
#define CBInvokeMethod(mb, ctx, op, method, in, out, rc)                                                     \
    ((mb)->bft->invokeMethod((mb), (ctx), (op), (method), (in), (out), (rc)))
#define CBSetProperty(mb, ctx, op, name, value, type)                                                        \
    ((mb)->bft->setProperty((mb), (ctx), (op), (name), (const CMPIValue *)(const void *)(value), (type)))
#define CBGetProperty(mb, ctx, op, name, rc) ((mb)->bft->getProperty((mb), (ctx), (op), (name), (rc)))

/* Every encapsulated object */
/** A copy that belongs to the caller, who releases it. */
#define CMClone(obj, rc) ((obj)->ft->clone((obj), (rc)))
/** Gives back what CMClone made. */
#define CMRelease(obj) ((obj)->ft->release((obj)))

/* Instances */
#define CMGetProperty(inst, name, rc) ((inst)->ft->getProperty((inst), (name), (rc)))
#define CMSetProperty(inst, name, value, type)                                                               \
    ((inst)->ft->setProperty((inst), (name), (const CMPIValue *)(const void *)(value), (type)))
#define CMGetPropertyAt(inst, index, name, rc) ((inst)->ft->getPropertyAt((inst), (index), (name), (rc)))
#define CMGetPropertyCount(inst, rc) ((inst)->ft->getPropertyCount((inst), (rc)))
#define CMGetObjectPath(inst, rc) ((inst)->ft->getObjectPath((inst), (rc)))
#define CMSetPropertyFilter(inst, props, keys) ((inst)->ft->setPropertyFilter((inst), (props), (keys)))
#define CMSetObjectPath(inst, op) ((inst)->ft->setObjectPath((inst), (op)))
#define CMSetPropertyWithOrigin(inst, name, value, type, origin)                                             \
    ((inst)->ft->setPropertyWithOrigin((inst), (name), (const CMPIValue *)(const void *)(value), (type),     \
                                       (origin)))

/* Object paths */
#define CMSetNameSpace(op, ns) ((op)->ft->setNameSpace((op), (ns)))
#define CMGetNameSpace(op, rc) ((op)->ft->getNameSpace((op), (rc)))
#define CMSetHostname(op, hn) ((op)->ft->setHostname((op), (hn)))
#define CMGetHostname(op, rc) ((op)->ft->getHostname((op), (rc)))
#define CMSetClassName(op, cn) ((op)->ft->setClassName((op), (cn)))
#define CMGetClassName(op, rc) ((op)->ft->getClassName((op), (rc)))
#define CMAddKey(op, name, value, type)                                                                      \
    ((op)->ft->addKey((op), (name), (const CMPIValue *)(const void *)(value), (type)))
#define CMGetKey(op, name, rc) ((op)->ft->getKey((op), (name), (rc)))
#define CMGetKeyAt(op, index, name, rc) ((op)->ft->getKeyAt((op), (index), (name), (rc)))
#define CMGetKeyCount(op, rc) ((op)->ft->getKeyCount((op), (rc)))
#define CMSetNameSpaceFromObjectPath(op, src) ((op)->ft->setNameSpaceFromObjectPath((op), (src)))
#define CMSetHostAndNameSpaceFromObjectPath(op, src)                                                         \
    ((op)->ft->setHostAndNameSpaceFromObjectPath((op), (src)))
#define CMGetClassQualifier(op, qual, rc) ((op)->ft->getClassQualifier((op), (qual), (rc)))
#define CMGetPropertyQualifier(op, prop, qual, rc)                                                           \
    ((op)->ft->getPropertyQualifier((op), (prop), (qual), (rc)))
#define CMGetMethodQualifier(op, method, qual, rc)                                                           \
    ((op)->ft->getMethodQualifier((op), (method), (qual), (rc)))
#define CMGetParameterQualifier(op, method, param, qual, rc)                                                 \
    ((op)->ft->getParameterQualifier((op), (method), (param), (qual), (rc)))
#define CMObjectPathToString(op, rc) ((op)->ft->toString((op), (rc)))

/* Arrays */
#define CMGetArrayCount(array, rc) ((array)->ft->getSize((array), (rc)))
#define CMGetArrayType(array, rc) ((array)->ft->getSimpleType((array), (rc)))
#define CMGetArrayElementAt(array, index, rc) ((array)->ft->getElementAt((array), (index), (rc)))
#define CMSetArrayElementAt(array, index, value, type)                                                       \
    ((array)->ft->setElementAt((array), (index), (const CMPIValue *)(const void *)(value), (type)))

/* Texts */
/** The characters, which belong to the CMPIString. */
#define CMGetCharsPtr(string, rc) ((string)->ft->getCharPtr((string), (rc)))
#define CMGetCharPtr(string) ((string)->ft->getCharPtr((string), NULL))

/* Enumerations */
#define CMGetNext(en, rc) ((en)->ft->getNext((en), (rc)))
#define CMHasNext(en, rc) ((en)->ft->hasNext((en), (rc)))
#define CMToArray(en, rc) ((en)->ft->toArray((en), (rc)))

/* Arguments of methods */
#define CMAddArg(args, name, value, type)                                                                    \
    ((args)->ft->addArg((args), (name), (const CMPIValue *)(const void *)(value), (type)))
#define CMGetArg(args, name, rc) ((args)->ft->getArg((args), (name), (rc)))
#define CMGetArgAt(args, index, name, rc) ((args)->ft->getArgAt((args), (index), (name), (rc)))
#define CMGetArgCount(args, rc) ((args)->ft->getArgCount((args), (rc)))

/* Dates, times and intervals */
/** Microseconds. */
#define CMGetBinaryFormat(dt, rc) ((dt)->ft->getBinaryFormat((dt), (rc)))
/** CIM datetime (DSP0004). */
#define CMGetStringFormat(dt, rc) ((dt)->ft->getStringFormat((dt), (rc)))
#define CMIsInterval(dt, rc) ((dt)->ft->isInterval((dt), (rc)))

/* Invocation contexts */
#define CMGetContextEntry(ctx, name, rc) ((ctx)->ft->getEntry((ctx), (name), (rc)))
#define CMGetContextEntryAt(ctx, index, name, rc) ((ctx)->ft->getEntryAt((ctx), (index), (name), (rc)))
#define CMGetContextEntryCount(ctx, rc) ((ctx)->ft->getEntryCount((ctx), (rc)))
#define CMAddContextEntry(ctx, name, value, type)                                                            \
    ((ctx)->ft->addEntry((ctx), (name), (const CMPIValue *)(const void *)(value), (type)))

/* Results */
#define CMReturnData(rslt, value, type)                                                                      \
    ((rslt)->ft->returnData((rslt), (const CMPIValue *)(const void *)(value), (type)))
#define CMReturnInstance(rslt, inst) ((rslt)->ft->returnInstance((rslt), (inst)))
#define CMReturnObjectPath(rslt, op) ((rslt)->ft->returnObjectPath((rslt), (op)))
#define CMReturnDone(rslt) ((rslt)->ft->returnDone((rslt)))
#define CMReturnError(rslt, error) ((rslt)->ft->returnError((rslt), (error)))

/* Select expressions and their parts */
#define CMEvaluateSelExp(exp, inst, rc) ((exp)->ft->evaluate((exp), (inst), (rc)))
#define CMEvaluateSelExpUsingAccessor(exp, accessor, parm, rc)                                               \
    ((exp)->ft->evaluateUsingAccessor((exp), (accessor), (parm), (rc)))
#define CMGetSelExpString(exp, rc) ((exp)->ft->getString((exp), (rc)))
#define CMGetDoc(exp, rc) ((exp)->ft->getDOC((exp), (rc)))
#define CMGetCod(exp, rc) ((exp)->ft->getCOD((exp), (rc)))
#define CMGetSubCondCountAndType(cond, type, rc) ((cond)->ft->getCountAndType((cond), (type), (rc)))
#define CMGetSubCondAt(cond, index, rc) ((cond)->ft->getSubCondAt((cond), (index), (rc)))
#define CMGetPredicateCount(subCond, rc) ((subCond)->ft->getCount((subCond), (rc)))
#define CMGetPredicateAt(subCond, index, rc) ((subCond)->ft->getPredicateAt((subCond), (index), (rc)))
#define CMGetPredicate(subCond, name, rc) ((subCond)->ft->getPredicate((subCond), (name), (rc)))
#define CMGetPredicateData(pred, type, op, lhs, rhs) ((pred)->ft->getData((pred), (type), (op), (lhs), (rhs)))
#define CMEvaluatePredicateUsingAccessor(pred, accessor, parm, rc)                                           \
    ((pred)->ft->evaluateUsingAccessor((pred), (accessor), (parm), (rc)))

/* Extended errors */
#define CMGetErrorType(error, rc) ((error)->ft->getErrorType((error), (rc)))
#define CMGetOtherErrorType(error, rc) ((error)->ft->getOtherErrorType((error), (rc)))
#define CMGetOwningEntity(error, rc) ((error)->ft->getOwningEntity((error), (rc)))
#define CMGetMessageID(error, rc) ((error)->ft->getMessageID((error), (rc)))
#define CMGetPerceivedSeverity(error, rc) ((error)->ft->getPerceivedSeverity((error), (rc)))
#define CMGetProbableCause(error, rc) ((error)->ft->getProbableCause((error), (rc)))
#define CMGetProbableCauseDescription(error, rc) ((error)->ft->getProbableCauseDescription((error), (rc)))
#define CMGetRecommendedActions(error, rc) ((error)->ft->getRecommendedActions((error), (rc)))
#define CMGetErrorSource(error, rc) ((error)->ft->getErrorSource((error), (rc)))
#define CMGetErrorSourceFormat(error, rc) ((error)->ft->getErrorSourceFormat((error), (rc)))
#define CMGetOtherErrorSourceFormat(error, rc) ((error)->ft->getOtherErrorSourceFormat((error), (rc)))
#define CMGetCIMStatusCodeDescription(error, rc) ((error)->ft->getCIMStatusCodeDescription((error), (rc)))
#define CMGetMessageArguments(error, rc) ((error)->ft->getMessageArguments((error), (rc)))
#define CMGetErrorMessage(error, rc) ((error)->ft->getMessage((error), (rc)))
#define CMGetCIMStatusCode(error, rc) ((error)->ft->getCIMStatusCode((error), (rc)))
#define CMSetErrorType(error, type) ((error)->ft->setErrorType((error), (type)))
#define CMSetOtherErrorType(error, text) ((error)->ft->setOtherErrorType((error), (text)))
#define CMSetProbableCauseDescription(error, text) ((error)->ft->setProbableCauseDescription((error), (text)))
#define CMSetRecommendedActions(error, array) ((error)->ft->setRecommendedActions((error), (array)))
#define CMSetErrorSource(error, text) ((error)->ft->setErrorSource((error), (text)))
#define CMSetErrorSourceFormat(error, format) ((error)->ft->setErrorSourceFormat((error), (format)))
#define CMSetOtherErrorSourceFormat(error, text) ((error)->ft->setOtherErrorSourceFormat((error), (text)))
#define CMSetCIMStatusCodeDescription(error, text) ((error)->ft->setCIMStatusCodeDescription((error), (text)))
#define CMSetMessageArguments(error, array) ((error)->ft->setMessageArguments((error), (array)))

/*
 * Factories. Each macro makes the factory <pn>_Create_<kind>MI of a provider whose operations are named
 * <pfx>..., with its function table and its MI object. The factory keeps the broker in the variable broker,
 * runs the hook and leaves the status as it is.
 */

/** Factory of an instance provider. */
#define CMInstanceMIStub(pfx, pn, broker, hook)                                                              \
    CMPI_EXTERN_C CMPIInstanceMI *pn##_Create_InstanceMI(const CMPIBroker *brkr, const CMPIContext *ctx,     \
                                                         CMPIStatus *rc)                                     \
    {                                                                                                        \
        static const CMPIInstanceMIFT miTable = {                                                            \
            CMPICurrentVersion,     CMPICurrentVersion,  "instance" #pn,   pfx##Cleanup,                     \
            pfx##EnumInstanceNames, pfx##EnumInstances,  pfx##GetInstance, pfx##CreateInstance,              \
            pfx##ModifyInstance,    pfx##DeleteInstance, pfx##ExecQuery};                                    \
        static CMPIInstanceMI mi = {NULL, &miTable};                                                         \
        (void)ctx;                                                                                           \
        (void)rc;                                                                                            \
        broker = brkr;                                                                                       \
        hook;                                                                                                \
        return &mi;                                                                                          \
    }

/** Factory of an association provider. */
#define CMAssociationMIStub(pfx, pn, broker, hook)                                                           \
    CMPI_EXTERN_C CMPIAssociationMI *pn##_Create_AssociationMI(const CMPIBroker *brkr,                       \
                                                               const CMPIContext *ctx, CMPIStatus *rc)       \
    {                                                                                                        \
        static const CMPIAssociationMIFT miTable = {                                                         \
            CMPICurrentVersion, CMPICurrentVersion,   "association" #pn, pfx##AssociationCleanup,            \
            pfx##Associators,   pfx##AssociatorNames, pfx##References,   pfx##ReferenceNames};               \
        static CMPIAssociationMI mi = {NULL, &miTable};                                                      \
        (void)ctx;                                                                                           \
        (void)rc;                                                                                            \
        broker = brkr;                                                                                       \
        hook;                                                                                                \
        return &mi;                                                                                          \
    }

/** Factory of a method provider. */
#define CMMethodMIStub(pfx, pn, broker, hook)                                                                \
    CMPI_EXTERN_C CMPIMethodMI *pn##_Create_MethodMI(const CMPIBroker *brkr, const CMPIContext *ctx,         \
                                                     CMPIStatus *rc)                                         \
    {                                                                                                        \
        static const CMPIMethodMIFT miTable = {CMPICurrentVersion, CMPICurrentVersion, "method" #pn,         \
                                               pfx##MethodCleanup, pfx##InvokeMethod};                       \
        static CMPIMethodMI mi = {NULL, &miTable};                                                           \
        (void)ctx;                                                                                           \
        (void)rc;                                                                                            \
        broker = brkr;                                                                                       \
        hook;                                                                                                \
        return &mi;                                                                                          \
    }

/** Factory of a property provider. */
#define CMPropertyMIStub(pfx, pn, broker, hook)                                                              \
    CMPI_EXTERN_C CMPIPropertyMI *pn##_Create_PropertyMI(const CMPIBroker *brkr, const CMPIContext *ctx,     \
                                                         CMPIStatus *rc)                                     \
    {                                                                                                        \
        static const CMPIPropertyMIFT miTable = {                                                            \
            CMPICurrentVersion,        CMPICurrentVersion, "property" #pn,                                   \
            pfx##PropertyCleanup,      pfx##SetProperty,   pfx##GetProperty,                                 \
            pfx##SetPropertyWithOrigin};                                                                     \
        static CMPIPropertyMI mi = {NULL, &miTable};                                                         \
        (void)ctx;                                                                                           \
        (void)rc;                                                                                            \
        broker = brkr;                                                                                       \
        hook;                                                                                                \
        return &mi;                                                                                          \
    }

/** Factory of an indication provider. */
#define CMIndicationMIStub(pfx, pn, broker, hook)                                                            \
    CMPI_EXTERN_C CMPIIndicationMI *pn##_Create_IndicationMI(const CMPIBroker *brkr, const CMPIContext *ctx, \
                                                             CMPIStatus *rc)                                 \
    {                                                                                                        \
        static const CMPIIndicationMIFT miTable = {                                                          \
            CMPICurrentVersion,     CMPICurrentVersion,     "indication" #pn,    pfx##IndicationCleanup,     \
            pfx##AuthorizeFilter,   pfx##MustPoll,          pfx##ActivateFilter, pfx##DeActivateFilter,      \
            pfx##EnableIndications, pfx##DisableIndications};                                                \
        static CMPIIndicationMI mi = {NULL, &miTable};                                                       \
        (void)ctx;                                                                                           \
        (void)rc;                                                                                            \
        broker = brkr;                                                                                       \
        hook;                                                                                                \
        return &mi;                                                                                          \
    }

#endif
