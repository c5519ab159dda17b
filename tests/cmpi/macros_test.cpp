// SPDX-License-Identifier: Apache-2.0
// The convenience macros: each must reach its entry of the right function table, with its arguments in order.

#include "cmpimacs.h"

#include <array>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

namespace
{

// The entry that was called last, and its arguments.
struct Call {
    const void *entry;
    std::vector<std::uintptr_t> arguments;
};
Call last;

template <typename T>
std::uintptr_t asNumber(T value)
{
    if constexpr (std::is_pointer_v<T>) {
        return reinterpret_cast<std::uintptr_t>(value);
    } else {
        return static_cast<std::uintptr_t>(value);
    }
}

template <typename... A>
std::vector<std::uintptr_t> asNumbers(A... arguments)
{
    return {asNumber(arguments)...};
}

// A function for one entry of a table, which notes that it was called, and with what. identity is its
// address.
template <auto entry, typename Type>
struct Recorder;
template <auto entry, typename Table, typename R, typename... A>
struct Recorder<entry, R (*Table::*)(A...)> {
    static inline const char identity = 0;
    static R call(A... arguments)
    {
        last = {&identity, asNumbers(arguments...)};
        return R();
    }
};
template <auto entry, typename Table, typename R, typename... A>
struct Recorder<entry, R (*Table::*)(A..., ...)> {
    static inline const char identity = 0;
    static R call(A... arguments, ...)
    {
        last = {&identity, asNumbers(arguments...)};
        return R();
    }
};
template <auto entry>
using RecorderOf = Recorder<entry, decltype(entry)>;

// Evaluates a macro with one entry of the table recording and all others null: a macro that goes to another
// entry crashes, one that mixes up its arguments is seen.
#define EXPECT_REACHES(table, member, expression, ...)                                                       \
    do {                                                                                                     \
        using Entry = RecorderOf<&decltype(table)::member>;                                                  \
        SCOPED_TRACE(#expression);                                                                           \
        (table) = {};                                                                                        \
        (table).member = &Entry::call;                                                                       \
        last = {};                                                                                           \
        static_cast<void>(expression);                                                                       \
        EXPECT_EQ(last.entry, &Entry::identity);                                                             \
        EXPECT_EQ(last.arguments, asNumbers(__VA_ARGS__));                                                   \
    } while (false)

// Arguments: all of different addresses or values.
class CmpiMacros : public testing::Test
{
  public:
    CMPIBrokerFT bft{};
    CMPIBrokerEncFT eft{};
    CMPIBroker broker{nullptr, &bft, &eft, nullptr, nullptr};
    const CMPIBroker *mb = &broker;

    CMPIContextFT contextFt{};
    CMPIContext context{nullptr, &contextFt};
    CMPIContext *ctx = &context;
    CMPIResultFT resultFt{};
    CMPIResult result{nullptr, &resultFt};
    CMPIResult *rslt = &result;
    CMPIInstanceFT instanceFt{};
    CMPIInstance instance{nullptr, &instanceFt};
    CMPIInstance *inst = &instance;
    CMPIObjectPathFT objectPathFt{};
    CMPIObjectPath objectPath{nullptr, &objectPathFt};
    CMPIObjectPath *op = &objectPath;
    CMPIObjectPath *src = &otherPath;
    CMPIObjectPath otherPath{};
    CMPIArgsFT argsFt{};
    CMPIArgs arguments{nullptr, &argsFt};
    CMPIArgs *args = &arguments;
    CMPIArgs otherArguments{};
    CMPIArgs *out = &otherArguments;
    CMPIStringFT stringFt{};
    CMPIString text{nullptr, &stringFt};
    CMPIString *string = &text;
    CMPIArrayFT arrayFt{};
    CMPIArray values{nullptr, &arrayFt};
    CMPIArray *array = &values;
    CMPIEnumerationFT enumerationFt{};
    CMPIEnumeration enumeration{nullptr, &enumerationFt};
    CMPIEnumeration *en = &enumeration;
    CMPIDateTimeFT dateTimeFt{};
    CMPIDateTime dateTime{nullptr, &dateTimeFt};
    CMPIDateTime *dt = &dateTime;
    CMPISelectExpFT selectExpFt{};
    CMPISelectExp selectExp{nullptr, &selectExpFt};
    CMPISelectExp *exp = &selectExp;
    CMPISelectCondFT selectCondFt{};
    CMPISelectCond selectCond{nullptr, &selectCondFt};
    CMPISelectCond *cond = &selectCond;
    CMPISubCondFT subCondFt{};
    CMPISubCond subCondition{nullptr, &subCondFt};
    CMPISubCond *subCond = &subCondition;
    CMPIPredicateFT predicateFt{};
    CMPIPredicate predicate{nullptr, &predicateFt};
    CMPIPredicate *pred = &predicate;
    CMPIErrorFT errorFt{};
    CMPIError extendedError{nullptr, &errorFt};
    CMPIError *error = &extendedError;

    CMPIStatus status{CMPI_RC_OK, nullptr};
    CMPIStatus *rc = &status;
    CMPIUint32 number = 7;
    const CMPIUint32 *value = &number;
    CMPIString *name = nullptr;
    CMPIString **nameOut = &name;
    std::array<const char *, 2> list{"list", nullptr};
    std::array<const char *, 2> keyList{"keys", nullptr};
    const char **props = list.data();
    const char **keys = keyList.data();
    const char *const a = "a";
    const char *const b = "b";
    const char *const c = "c";
    const char *const d = "d";
    const CMPIType type = CMPI_uint32;
    const CMPICount index = 11;
};

TEST_F(CmpiMacros, BrokerEncapsulation)
{
    EXPECT_REACHES(eft, newInstance, CMNewInstance(mb, op, rc), mb, op, rc);
    EXPECT_REACHES(eft, newObjectPath, CMNewObjectPath(mb, a, b, rc), mb, a, b, rc);
    EXPECT_REACHES(eft, newArgs, CMNewArgs(mb, rc), mb, rc);
    EXPECT_REACHES(eft, newString, CMNewString(mb, a, rc), mb, a, rc);
    EXPECT_REACHES(eft, newArray, CMNewArray(mb, index, type, rc), mb, index, type, rc);
    EXPECT_REACHES(eft, newDateTime, CMNewDateTime(mb, rc), mb, rc);
    EXPECT_REACHES(eft, newDateTimeFromBinary, CMNewDateTimeFromBinary(mb, 123456789u, 1, rc), mb, 123456789u,
                   1, rc);
    EXPECT_REACHES(eft, newDateTimeFromChars, CMNewDateTimeFromChars(mb, a, rc), mb, a, rc);
    CMPIArray *projection = nullptr;
    EXPECT_REACHES(eft, newSelectExp, CMNewSelectExp(mb, a, b, &projection, rc), mb, a, b, &projection, rc);
    EXPECT_REACHES(eft, newCMPIError,
                   CMNewCMPIError(mb, a, b, c, ErrorSevHigh, Fan_Failure, CMPI_RC_ERR_FAILED, rc), mb, a, b,
                   c, ErrorSevHigh, Fan_Failure, CMPI_RC_ERR_FAILED, rc);
    EXPECT_REACHES(eft, classPathIsA, CMClassPathIsA(mb, op, a, rc), mb, op, a, rc);
    EXPECT_REACHES(eft, toString, CMObjectToString(mb, inst, rc), mb, inst, rc);
    EXPECT_REACHES(eft, isOfType, CMIsOfType(mb, inst, a, rc), mb, inst, a, rc);
    EXPECT_REACHES(eft, getType, CMGetType(mb, inst, rc), mb, inst, rc);
    EXPECT_REACHES(eft, logMessage, CMLogMessage(mb, CMPI_SEV_WARNING, a, b, string), mb, CMPI_SEV_WARNING, a,
                   b, string);
    EXPECT_REACHES(eft, trace, CMTraceMessage(mb, CMPI_LEV_VERBOSE, a, b, string), mb, CMPI_LEV_VERBOSE, a, b,
                   string);
    CMPIMsgFileHandle handle = &number;
    EXPECT_REACHES(eft, openMessageFile, CMOpenMessageFile(mb, a, &handle), mb, a, &handle);
    EXPECT_REACHES(eft, closeMessageFile, CMCloseMessageFile(mb, handle), mb, handle);
    EXPECT_REACHES(eft, getMessage, CMGetMessage(mb, a, b, rc, 1, CMPI_chars, c), mb, a, b, rc, 1);
    EXPECT_REACHES(eft, getMessage2, CMGetMessage2(mb, a, handle, b, rc, 1, CMPI_chars, c), mb, a, handle, b,
                   rc, 1);
}

TEST_F(CmpiMacros, BrokerServices)
{
    bft.brokerCapabilities = CMPI_MB_BasicRead | CMPI_MB_Logging;
    bft.brokerVersion = 200;
    bft.brokerName = "a broker";
    EXPECT_EQ(CBBrokerCapabilities(mb), 65537u);
    EXPECT_EQ(CBBrokerVersion(mb), 200);
    EXPECT_STREQ(CBBrokerName(mb), "a broker");
    EXPECT_REACHES(bft, prepareAttachThread, CBPrepareAttachThread(mb, ctx), mb, ctx);
    EXPECT_REACHES(bft, attachThread, CBAttachThread(mb, ctx), mb, ctx);
    EXPECT_REACHES(bft, detachThread, CBDetachThread(mb, ctx), mb, ctx);
    EXPECT_REACHES(bft, deliverIndication, CBDeliverIndication(mb, ctx, a, inst), mb, ctx, a, inst);
    EXPECT_REACHES(bft, enumerateInstanceNames, CBEnumInstanceNames(mb, ctx, op, rc), mb, ctx, op, rc);
    EXPECT_REACHES(bft, getInstance, CBGetInstance(mb, ctx, op, props, rc), mb, ctx, op, props, rc);
    EXPECT_REACHES(bft, createInstance, CBCreateInstance(mb, ctx, op, inst, rc), mb, ctx, op, inst, rc);
    EXPECT_REACHES(bft, modifyInstance, CBModifyInstance(mb, ctx, op, inst, props), mb, ctx, op, inst, props);
    EXPECT_REACHES(bft, deleteInstance, CBDeleteInstance(mb, ctx, op), mb, ctx, op);
    EXPECT_REACHES(bft, execQuery, CBExecQuery(mb, ctx, op, a, b, rc), mb, ctx, op, a, b, rc);
    EXPECT_REACHES(bft, enumerateInstances, CBEnumInstances(mb, ctx, op, props, rc), mb, ctx, op, props, rc);
    EXPECT_REACHES(bft, associators, CBAssociators(mb, ctx, op, a, b, c, d, props, rc), mb, ctx, op, a, b, c,
                   d, props, rc);
    EXPECT_REACHES(bft, associatorNames, CBAssociatorNames(mb, ctx, op, a, b, c, d, rc), mb, ctx, op, a, b, c,
                   d, rc);
    EXPECT_REACHES(bft, references, CBReferences(mb, ctx, op, a, b, props, rc), mb, ctx, op, a, b, props, rc);
    EXPECT_REACHES(bft, referenceNames, CBReferenceNames(mb, ctx, op, a, b, rc), mb, ctx, op, a, b, rc);
    EXPECT_REACHES(bft, invokeMethod, CBInvokeMethod(mb, ctx, op, a, args, out, rc), mb, ctx, op, a, args,
                   out, rc);
    EXPECT_REACHES(bft, setProperty, CBSetProperty(mb, ctx, op, a, value, type), mb, ctx, op, a, value, type);
    EXPECT_REACHES(bft, getProperty, CBGetProperty(mb, ctx, op, a, rc), mb, ctx, op, a, rc);
}

TEST_F(CmpiMacros, CloneAndRelease)
{
    EXPECT_REACHES(contextFt, clone, CMClone(ctx, rc), ctx, rc);
    EXPECT_REACHES(contextFt, release, CMRelease(ctx), ctx);
    EXPECT_REACHES(instanceFt, clone, CMClone(inst, rc), inst, rc);
    EXPECT_REACHES(instanceFt, release, CMRelease(inst), inst);
    EXPECT_REACHES(stringFt, clone, CMClone(string, rc), string, rc);
    EXPECT_REACHES(stringFt, release, CMRelease(string), string);
}

TEST_F(CmpiMacros, Instances)
{
    EXPECT_REACHES(instanceFt, getProperty, CMGetProperty(inst, a, rc), inst, a, rc);
    EXPECT_REACHES(instanceFt, setProperty, CMSetProperty(inst, a, value, type), inst, a, value, type);
    EXPECT_REACHES(instanceFt, setProperty, CMSetProperty(inst, a, b, CMPI_chars), inst, a, b, CMPI_chars);
    EXPECT_REACHES(instanceFt, setProperty, CMSetProperty(inst, a, NULL, CMPI_null), inst, a, 0, CMPI_null);
    EXPECT_REACHES(instanceFt, getPropertyAt, CMGetPropertyAt(inst, index, nameOut, rc), inst, index, nameOut,
                   rc);
    EXPECT_REACHES(instanceFt, getPropertyCount, CMGetPropertyCount(inst, rc), inst, rc);
    EXPECT_REACHES(instanceFt, getObjectPath, CMGetObjectPath(inst, rc), inst, rc);
    EXPECT_REACHES(instanceFt, setPropertyFilter, CMSetPropertyFilter(inst, props, keys), inst, props, keys);
    EXPECT_REACHES(instanceFt, setObjectPath, CMSetObjectPath(inst, op), inst, op);
    EXPECT_REACHES(instanceFt, setPropertyWithOrigin, CMSetPropertyWithOrigin(inst, a, value, type, b), inst,
                   a, value, type, b);
}

TEST_F(CmpiMacros, ObjectPaths)
{
    EXPECT_REACHES(objectPathFt, setNameSpace, CMSetNameSpace(op, a), op, a);
    EXPECT_REACHES(objectPathFt, getNameSpace, CMGetNameSpace(op, rc), op, rc);
    EXPECT_REACHES(objectPathFt, setHostname, CMSetHostname(op, a), op, a);
    EXPECT_REACHES(objectPathFt, getHostname, CMGetHostname(op, rc), op, rc);
    EXPECT_REACHES(objectPathFt, setClassName, CMSetClassName(op, a), op, a);
    EXPECT_REACHES(objectPathFt, getClassName, CMGetClassName(op, rc), op, rc);
    EXPECT_REACHES(objectPathFt, addKey, CMAddKey(op, a, value, type), op, a, value, type);
    EXPECT_REACHES(objectPathFt, getKey, CMGetKey(op, a, rc), op, a, rc);
    EXPECT_REACHES(objectPathFt, getKeyAt, CMGetKeyAt(op, index, nameOut, rc), op, index, nameOut, rc);
    EXPECT_REACHES(objectPathFt, getKeyCount, CMGetKeyCount(op, rc), op, rc);
    EXPECT_REACHES(objectPathFt, setNameSpaceFromObjectPath, CMSetNameSpaceFromObjectPath(op, src), op, src);
    EXPECT_REACHES(objectPathFt, setHostAndNameSpaceFromObjectPath,
                   CMSetHostAndNameSpaceFromObjectPath(op, src), op, src);
    EXPECT_REACHES(objectPathFt, getClassQualifier, CMGetClassQualifier(op, a, rc), op, a, rc);
    EXPECT_REACHES(objectPathFt, getPropertyQualifier, CMGetPropertyQualifier(op, a, b, rc), op, a, b, rc);
    EXPECT_REACHES(objectPathFt, getMethodQualifier, CMGetMethodQualifier(op, a, b, rc), op, a, b, rc);
    EXPECT_REACHES(objectPathFt, getParameterQualifier, CMGetParameterQualifier(op, a, b, c, rc), op, a, b, c,
                   rc);
    EXPECT_REACHES(objectPathFt, toString, CMObjectPathToString(op, rc), op, rc);
}

TEST_F(CmpiMacros, ArraysTextsEnumerations)
{
    EXPECT_REACHES(arrayFt, getSize, CMGetArrayCount(array, rc), array, rc);
    EXPECT_REACHES(arrayFt, getSimpleType, CMGetArrayType(array, rc), array, rc);
    EXPECT_REACHES(arrayFt, getElementAt, CMGetArrayElementAt(array, index, rc), array, index, rc);
    EXPECT_REACHES(arrayFt, setElementAt, CMSetArrayElementAt(array, index, value, type), array, index, value,
                   type);
    EXPECT_REACHES(stringFt, getCharPtr, CMGetCharsPtr(string, rc), string, rc);
    EXPECT_REACHES(stringFt, getCharPtr, CMGetCharPtr(string), string, 0);
    EXPECT_REACHES(enumerationFt, getNext, CMGetNext(en, rc), en, rc);
    EXPECT_REACHES(enumerationFt, hasNext, CMHasNext(en, rc), en, rc);
    EXPECT_REACHES(enumerationFt, toArray, CMToArray(en, rc), en, rc);
}

TEST_F(CmpiMacros, ArgumentsDatesContextsResults)
{
    EXPECT_REACHES(argsFt, addArg, CMAddArg(args, a, value, type), args, a, value, type);
    EXPECT_REACHES(argsFt, getArg, CMGetArg(args, a, rc), args, a, rc);
    EXPECT_REACHES(argsFt, getArgAt, CMGetArgAt(args, index, nameOut, rc), args, index, nameOut, rc);
    EXPECT_REACHES(argsFt, getArgCount, CMGetArgCount(args, rc), args, rc);
    EXPECT_REACHES(dateTimeFt, getBinaryFormat, CMGetBinaryFormat(dt, rc), dt, rc);
    EXPECT_REACHES(dateTimeFt, getStringFormat, CMGetStringFormat(dt, rc), dt, rc);
    EXPECT_REACHES(dateTimeFt, isInterval, CMIsInterval(dt, rc), dt, rc);
    EXPECT_REACHES(contextFt, getEntry, CMGetContextEntry(ctx, a, rc), ctx, a, rc);
    EXPECT_REACHES(contextFt, getEntryAt, CMGetContextEntryAt(ctx, index, nameOut, rc), ctx, index, nameOut,
                   rc);
    EXPECT_REACHES(contextFt, getEntryCount, CMGetContextEntryCount(ctx, rc), ctx, rc);
    EXPECT_REACHES(contextFt, addEntry, CMAddContextEntry(ctx, a, value, type), ctx, a, value, type);
    EXPECT_REACHES(resultFt, returnData, CMReturnData(rslt, value, type), rslt, value, type);
    EXPECT_REACHES(resultFt, returnInstance, CMReturnInstance(rslt, inst), rslt, inst);
    EXPECT_REACHES(resultFt, returnObjectPath, CMReturnObjectPath(rslt, op), rslt, op);
    EXPECT_REACHES(resultFt, returnDone, CMReturnDone(rslt), rslt);
    EXPECT_REACHES(resultFt, returnError, CMReturnError(rslt, error), rslt, error);
}

TEST_F(CmpiMacros, SelectExpressions)
{
    CMPIAccessor *const accessor = nullptr;
    void *const parm = &number;
    EXPECT_REACHES(selectExpFt, evaluate, CMEvaluateSelExp(exp, inst, rc), exp, inst, rc);
    EXPECT_REACHES(selectExpFt, evaluateUsingAccessor, CMEvaluateSelExpUsingAccessor(exp, accessor, parm, rc),
                   exp, accessor, parm, rc);
    EXPECT_REACHES(selectExpFt, getString, CMGetSelExpString(exp, rc), exp, rc);
    EXPECT_REACHES(selectExpFt, getDOC, CMGetDoc(exp, rc), exp, rc);
    EXPECT_REACHES(selectExpFt, getCOD, CMGetCod(exp, rc), exp, rc);
    int form = 0;
    EXPECT_REACHES(selectCondFt, getCountAndType, CMGetSubCondCountAndType(cond, &form, rc), cond, &form, rc);
    EXPECT_REACHES(selectCondFt, getSubCondAt, CMGetSubCondAt(cond, index, rc), cond, index, rc);
    EXPECT_REACHES(subCondFt, getCount, CMGetPredicateCount(subCond, rc), subCond, rc);
    EXPECT_REACHES(subCondFt, getPredicateAt, CMGetPredicateAt(subCond, index, rc), subCond, index, rc);
    EXPECT_REACHES(subCondFt, getPredicate, CMGetPredicate(subCond, a, rc), subCond, a, rc);
    CMPIType sideType = 0;
    CMPIPredOp operation = CMPI_PredOp_Equals;
    CMPIString *left = nullptr;
    EXPECT_REACHES(predicateFt, getData, CMGetPredicateData(pred, &sideType, &operation, &left, nameOut),
                   pred, &sideType, &operation, &left, nameOut);
    EXPECT_REACHES(predicateFt, evaluateUsingAccessor,
                   CMEvaluatePredicateUsingAccessor(pred, accessor, parm, rc), pred, accessor, parm, rc);
}

TEST_F(CmpiMacros, ExtendedErrors)
{
    EXPECT_REACHES(errorFt, getErrorType, CMGetErrorType(error, rc), error, rc);
    EXPECT_REACHES(errorFt, getOtherErrorType, CMGetOtherErrorType(error, rc), error, rc);
    EXPECT_REACHES(errorFt, getOwningEntity, CMGetOwningEntity(error, rc), error, rc);
    EXPECT_REACHES(errorFt, getMessageID, CMGetMessageID(error, rc), error, rc);
    EXPECT_REACHES(errorFt, getMessage, CMGetErrorMessage(error, rc), error, rc);
    EXPECT_REACHES(errorFt, getPerceivedSeverity, CMGetPerceivedSeverity(error, rc), error, rc);
    EXPECT_REACHES(errorFt, getProbableCause, CMGetProbableCause(error, rc), error, rc);
    EXPECT_REACHES(errorFt, getProbableCauseDescription, CMGetProbableCauseDescription(error, rc), error, rc);
    EXPECT_REACHES(errorFt, getRecommendedActions, CMGetRecommendedActions(error, rc), error, rc);
    EXPECT_REACHES(errorFt, getErrorSource, CMGetErrorSource(error, rc), error, rc);
    EXPECT_REACHES(errorFt, getErrorSourceFormat, CMGetErrorSourceFormat(error, rc), error, rc);
    EXPECT_REACHES(errorFt, getOtherErrorSourceFormat, CMGetOtherErrorSourceFormat(error, rc), error, rc);
    EXPECT_REACHES(errorFt, getCIMStatusCode, CMGetCIMStatusCode(error, rc), error, rc);
    EXPECT_REACHES(errorFt, getCIMStatusCodeDescription, CMGetCIMStatusCodeDescription(error, rc), error, rc);
    EXPECT_REACHES(errorFt, getMessageArguments, CMGetMessageArguments(error, rc), error, rc);
    EXPECT_REACHES(errorFt, setErrorType, CMSetErrorType(error, SecurityError), error, SecurityError);
    EXPECT_REACHES(errorFt, setOtherErrorType, CMSetOtherErrorType(error, a), error, a);
    EXPECT_REACHES(errorFt, setProbableCauseDescription, CMSetProbableCauseDescription(error, a), error, a);
    EXPECT_REACHES(errorFt, setRecommendedActions, CMSetRecommendedActions(error, array), error, array);
    EXPECT_REACHES(errorFt, setErrorSource, CMSetErrorSource(error, a), error, a);
    EXPECT_REACHES(errorFt, setErrorSourceFormat, CMSetErrorSourceFormat(error, CIMObjectHandle), error,
                   CIMObjectHandle);
    EXPECT_REACHES(errorFt, setOtherErrorSourceFormat, CMSetOtherErrorSourceFormat(error, a), error, a);
    EXPECT_REACHES(errorFt, setCIMStatusCodeDescription, CMSetCIMStatusCodeDescription(error, a), error, a);
    EXPECT_REACHES(errorFt, setMessageArguments, CMSetMessageArguments(error, array), error, array);
}

// A broker whose newString hands out one CMPIString and notes the characters.
CMPIString madeString;
std::string madeFrom;

CMPIString *makeString(const CMPIBroker *, const char *chars, CMPIStatus *)
{
    madeFrom = chars;
    return &madeString;
}

CMPIString *makeNoString(const CMPIBroker *, const char *, CMPIStatus *rc)
{
    if (rc != nullptr) {
        *rc = {CMPI_RC_ERR_FAILED, nullptr};
    }
    return nullptr;
}

CMPIStatus returnCode(bool early)
{
    if (early) {
        CMReturn(CMPI_RC_ERR_NOT_SUPPORTED);
    } else {
        CMReturn(CMPI_RC_OK);
    }
}

CMPIStatus returnString(CMPIString *string)
{
    CMReturnWithString(CMPI_RC_ERR_ACCESS_DENIED, string);
}

CMPIStatus returnChars(const CMPIBroker *mb)
{
    CMReturnWithChars(mb, CMPI_RC_ERR_INVALID_CLASS, "no such class");
}

TEST_F(CmpiMacros, StatusesAreSet)
{
    status = {CMPI_RC_NEVER_UNLOAD, string};
    CMSetStatus(&status, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(status.msg, nullptr);
    CMSetStatusWithString(rc, CMPI_RC_ERR_FAILED, string);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(status.msg, string);
    eft.newString = &makeString;
    CMSetStatusWithChars(mb, rc, CMPI_RC_ERR_INVALID_PARAMETER, "a message");
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(status.msg, &madeString);
    EXPECT_EQ(madeFrom, "a message");
    // The code stands also where the broker makes no message.
    eft.newString = &makeNoString;
    CMSetStatusWithChars(mb, rc, CMPI_RC_ERR_TYPE_MISMATCH, "a message");
    EXPECT_EQ(status.rc, CMPI_RC_ERR_TYPE_MISMATCH);
    EXPECT_EQ(status.msg, nullptr);
    // No status, nothing to set.
    CMPIStatus *const none = nullptr;
    CMSetStatus(none, CMPI_RC_ERR_FAILED);
    CMSetStatusWithString(none, CMPI_RC_ERR_FAILED, string);
    CMSetStatusWithChars(mb, none, CMPI_RC_ERR_FAILED, "a message");
}

TEST_F(CmpiMacros, StatusesAreReturned)
{
    EXPECT_EQ(returnCode(true).rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(returnCode(true).msg, nullptr);
    EXPECT_EQ(returnCode(false).rc, CMPI_RC_OK);
    EXPECT_EQ(returnString(string).rc, CMPI_RC_ERR_ACCESS_DENIED);
    EXPECT_EQ(returnString(string).msg, string);
    eft.newString = &makeString;
    madeFrom.clear();
    const CMPIStatus withChars = returnChars(mb);
    EXPECT_EQ(withChars.rc, CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(withChars.msg, &madeString);
    EXPECT_EQ(madeFrom, "no such class");
    eft.newString = &makeNoString;
    EXPECT_EQ(returnChars(mb).rc, CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(returnChars(mb).msg, nullptr);
}

TEST_F(CmpiMacros, NothingThere)
{
    CMPIInstance *const none = nullptr;
    EXPECT_TRUE(CMIsNullObject(none));
    EXPECT_TRUE(CMIsNullObject(inst)); // its handle is null
    instance.hdl = &number;
    EXPECT_FALSE(CMIsNullObject(inst));

    CMPIData data = {};
    data.type = CMPI_string;
    data.state = CMPI_goodValue;
    EXPECT_FALSE(CMIsNullValue(data));
    data.state = CMPI_keyValue;
    EXPECT_FALSE(CMIsNullValue(data));
    data.state = CMPI_nullValue;
    EXPECT_TRUE(CMIsNullValue(data));
    data.state = CMPI_keyValue | CMPI_nullValue;
    EXPECT_TRUE(CMIsNullValue(data));
    data.state = CMPI_notFound;
    EXPECT_FALSE(CMIsNullValue(data));
}

} // namespace
