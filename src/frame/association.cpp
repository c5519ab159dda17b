// SPDX-License-Identifier: Apache-2.0
#include "frame/association.h"
#include "frame/provider.h"

#include <cstdio>

namespace frame
{

namespace
{

/** An object at the far end: an instance, its path, or both. */
struct Candidate {
    const CMPIInstance *instance = nullptr;
    const CMPIObjectPath *path = nullptr;
};

/** A walk on its way. */
struct Progress : Walk, Request {
    const CMPIObjectPath *ref;
    Notes notes = {};
};

enum class Verdict : uint8_t { handOver, passOver, fail };

struct MatchedKeys {
    char source[100];
    char target[100];
};

} // namespace

// ---- data from the object manager, none of which can be relied on ----

static bool sameIgnoringCase(const char *a, const char *b)
{
    return a && b && strcasecmp(a, b) == 0;
}

static const char *classNameOf(const CMPIObjectPath *path)
{
    return isNullObject(path) ? nullptr : textOf(cmpi::getClassName(path, nullptr));
}

/** Whether the class of `path` is `className` or derived from it. A class that the object manager does not
 * know is nobody's superclass, and no failure. */
static bool isA(const CMPIBroker *broker, const CMPIObjectPath *path, const char *className)
{
    CMPIStatus asked = {CMPI_RC_OK, nullptr};
    return !isNullObject(path) && className && cmpi::classPathIsA(broker, path, className, &asked) == 1;
}

/** Ends an operation with the code that most failures have; returns false. */
static bool failed(const CMPIBroker *broker, CMPIStatus *status, const char *text)
{
    return fail(broker, status, CMPI_RC_ERR_FAILED, text);
}

/** The object that a call brought, if it can be used; else null, with the status set. */
template <typename Object>
static Object *usable(Object *object, const CMPIBroker *broker, CMPIStatus *status, const char *text)
{
    if (isNullObject(object)) {
        failed(broker, status, text);
        return nullptr;
    }
    return object;
}

static CMPIEnumeration *listed(CMPIEnumeration *elements, const Request &request, const char *text)
{
    return usable(request.status->rc == CMPI_RC_OK ? elements : nullptr, request.broker, request.status,
                  text);
}

/** The names, or the instances, of the class of `path`; null, with the status set, on failure. */
static CMPIEnumeration *enumerate(const Request &request, const CMPIObjectPath *path, CMPIType type)
{
    const auto &[broker, context, result, status] = request;
    *status = {CMPI_RC_OK, nullptr};
    return type == CMPI_ref ? listed(cmpi::enumerateInstanceNames(broker, context, path, status), request,
                                     "CBEnumInstanceNames( _broker, ctx, op, rc)")
                            : listed(cmpi::enumerateInstances(broker, context, path, nullptr, status),
                                     request, "CBEnumInstances( _broker, ctx, op, rc)");
}

/** The next element of an enumeration, an instance or a path. True, without an object, at its end; false,
 * with the status set, when the element is empty. */
static bool next(const Request &request, const CMPIEnumeration *enumeration, CMPIType type,
                 Candidate *element)
{
    CMPIStatus asked = {CMPI_RC_OK, nullptr};
    *element = {};
    if (!cmpi::hasNext(enumeration, &asked) && asked.rc == CMPI_RC_OK) {
        return true;
    }
    // compat: some object managers mark each element as null and hand out its object all the same.
    const CMPIData data = asked.rc == CMPI_RC_OK ? cmpi::getNext(enumeration, &asked) : CMPIData{};
    if (asked.rc == CMPI_RC_OK && data.type == type && !(data.state & (CMPI_notFound | CMPI_badValue))) {
        if (type == CMPI_instance && !isNullObject(data.value.inst)) {
            element->instance = data.value.inst;
        }
        if (type == CMPI_ref && !isNullObject(data.value.ref)) {
            element->path = data.value.ref;
        }
    }
    return element->instance || element->path || failed(request.broker, request.status, "CMGetNext( en, rc)");
}

/** Fetches the instance at an end of the association. Null, with the status set, on failure; codes other than
 * the two that have a text reach the client as the object manager set them. */
static CMPIInstance *fetch(const Request &request, const CMPIObjectPath *path, const char *failed,
                           const char *notFound)
{
    const auto &[broker, context, result, status] = request;
    *status = {CMPI_RC_OK, nullptr};
    CMPIInstance *instance = cmpi::getInstance(broker, context, path, nullptr, status);
    if (status->rc == CMPI_RC_OK && !isNullObject(instance)) {
        return instance;
    }
    if (status->rc == CMPI_RC_ERR_NOT_FOUND) {
        fail(broker, status, CMPI_RC_ERR_NOT_FOUND, notFound);
    } else if (status->rc == CMPI_RC_ERR_FAILED || status->rc == CMPI_RC_OK) { // nothing is a failure, too
        fail(broker, status, CMPI_RC_ERR_FAILED, failed);
    }
    return nullptr;
}

/** Moves a path into the namespace of another; false, with the object manager's answer in the status. */
static bool moveToNameSpace(const CMPIObjectPath *path, const CMPIObjectPath *other, CMPIStatus *status)
{
    const char *nameSpace = textOf(cmpi::getNameSpace(other, nullptr));
    if (nameSpace) {
        *status = cmpi::setNameSpace(path, nameSpace);
    }
    return !nameSpace || status->rc == CMPI_RC_OK;
}

/** Sets a reference of an association instance. An association without its ends is none, so here the object
 * manager's refusal counts: false, with its answer in the status. */
static bool setReference(const CMPIInstance *association, const char *name, const CMPIObjectPath *end,
                         CMPIStatus *status)
{
    CMPIValue value = {};
    value.ref = const_cast<CMPIObjectPath *>(end); // the interface has no const references
    *status = cmpi::setProperty(association, name, &value, CMPI_ref);
    return status->rc == CMPI_RC_OK;
}

/** An empty instance of the association class; null, with the status set, on failure. */
static CMPIInstance *newAssociation(const Request &request, const CMPIObjectPath *path)
{
    return usable(cmpi::newInstance(request.broker, path, request.status), request.broker, request.status,
                  "Create CMPIInstance failed.");
}

// ---- the far end ----

const char *farEndClass(const CMPIBroker *broker, const CMPIObjectPath *ref, const char *leftClass,
                        const char *rightClass, CMPIStatus *rc)
{
    const char *className = classNameOf(ref);
    if (!className) {
        failed(broker, rc, "Could not get classname of source object path.");
        return nullptr;
    }
    if (same(className, leftClass) || (!same(className, rightClass) && isA(broker, ref, leftClass))) {
        return rightClass;
    }
    if (same(className, rightClass) || isA(broker, ref, rightClass)) {
        return leftClass;
    }
    failed(broker, rc, "referenced Class is not covered by this Association.");
    return nullptr;
}

CMPIObjectPath *farEndPath(const CMPIBroker *broker, const CMPIObjectPath *ref, const char *leftClass,
                           const char *rightClass, CMPIStatus *rc)
{
    const char *target = farEndClass(broker, ref, leftClass, rightClass, rc);
    if (!target) {
        return nullptr;
    }
    const char *nameSpace = textOf(cmpi::getNameSpace(ref, nullptr));
    CMPIObjectPath *path = cmpi::newObjectPath(broker, nameSpace ? nameSpace : "", target, rc);
    if (isNullObject(path)) {
        failed(broker, rc, "Create CMPIObjectPath failed.");
    }
    return path;
}

bool admits(const CMPIBroker *broker, const CMPIObjectPath *cop, const Ends &ends,
            const AssociationFilters &filters, CMPIStatus *rc)
{
    const char *source = classNameOf(cop);
    if (!source) {
        return failed(broker, rc, "Could not get classname of source object path.");
    }
    // Where a path cannot be made the names may still decide; it is a failure only if they do not.
    CMPIStatus made = {CMPI_RC_OK, nullptr};
    const auto refuse = [&](bool pathsMade) {
        return pathsMade ? false : failed(broker, rc, "Create CMPIObjectPath failed.");
    };
    const CMPIObjectPath *path = newPath(broker, source, cop, &made);
    const bool isLeft = sameIgnoringCase(source, ends.leftClass) || isA(broker, path, ends.leftClass);
    const bool isRight = sameIgnoringCase(source, ends.rightClass) || isA(broker, path, ends.rightClass);
    if (!isLeft && !isRight) {
        return refuse(path != nullptr);
    }

    if (filters.resultClass) {
        const CMPIObjectPath *farEnd = newPath(broker, isLeft ? ends.rightClass : ends.leftClass, cop, &made);
        const CMPIObjectPath *result = newPath(broker, filters.resultClass, cop, &made);
        if (!isA(broker, farEnd, filters.resultClass) && !(isLeft && isA(broker, result, ends.rightClass)) &&
            !(isRight && isA(broker, result, ends.leftClass))) {
            return refuse(farEnd && result);
        }
    }
    const auto names = [&](const char *given, const char *ofLeft, const char *ofRight) {
        return !given || (isLeft && sameIgnoringCase(given, ofLeft)) ||
               (isRight && sameIgnoringCase(given, ofRight));
    };
    return names(filters.role, ends.refLeft, ends.refRight) &&
           names(filters.resultRole, ends.refRight, ends.refLeft);
}

// ---- the walk from one source to the objects at its far end ----

static Verdict judge(Progress &walk, const Candidate &candidate, const char *announcement)
{
    if (!walk.matcher) {
        return Verdict::handOver;
    }
    if (!matchCandidate(*walk.matcher, walk.broker, walk.ref, candidate.instance, candidate.path, walk.status,
                        walk.notes)) {
        return Verdict::fail;
    }
    if (walk.notes.match != 1) {
        return Verdict::passOver;
    }
    walk.notes.match = 0;
    puts(announcement);
    return Verdict::handOver;
}

/** The path of an instance; null, with the status set, where it cannot be taken. */
static CMPIObjectPath *pathOf(const Progress &walk, const CMPIInstance *instance)
{
    return usable(cmpi::getObjectPath(instance, walk.status), walk.broker, walk.status,
                  "CMGetObjectPath(ci,rc)");
}

/** Associators and AssociatorNames: the candidate itself. */
static bool handOverFarEnd(Progress &walk, const Candidate &candidate)
{
    const Verdict verdict = judge(walk, candidate,
                                  candidate.instance ? "Returning instance here!!!.."
                                                     : "associatorNames(): Returning instance here!!!..");
    if (verdict == Verdict::handOver && candidate.instance) {
        cmpi::returnInstance(walk.result, candidate.instance);
    } else if (verdict == Verdict::handOver) {
        cmpi::returnObjectPath(walk.result, candidate.path);
    }
    return verdict != Verdict::fail;
}

/** The two references, the source at its own end. */
static bool setEnds(const Progress &walk, const CMPIInstance *association, const CMPIObjectPath *candidate)
{
    const Ends &ends = walk.ends;
    const char *target = farEndClass(walk.broker, walk.ref, ends.leftClass, ends.rightClass, walk.status);
    if (!target) {
        return false;
    }
    printf("targetName is %s\n", target);
    const bool fromLeft = same(target, ends.rightClass);
    return setReference(association, ends.refLeft, fromLeft ? walk.ref : candidate, walk.status) &&
           setReference(association, ends.refRight, fromLeft ? candidate : walk.ref, walk.status);
}

/** References and ReferenceNames: the association to one candidate. */
static bool handOverAssociation(Progress &walk, const CMPIObjectPath *path, const Candidate &found)
{
    const CMPIObjectPath *candidate = found.instance ? pathOf(walk, found.instance) : found.path;
    const CMPIInstance *association = candidate ? newAssociation(walk, path) : nullptr;
    if (!association || !setEnds(walk, association, candidate)) {
        return false;
    }
    // compat: References match the candidate, ReferenceNames the association itself. Unless the object
    // manager finds the candidate's key there, that is the end of the request, and clients know it so.
    const bool whole = walk.kind == WalkKind::references;
    const Candidate matched = whole ? Candidate{nullptr, candidate} : Candidate{association, nullptr};
    const Verdict verdict = judge(walk, matched,
                                  whole ? "References(): Returning instance here!!!.."
                                        : "ReferencesNames(): Returning instance here!!!..");
    if (verdict != Verdict::handOver) {
        return verdict != Verdict::fail;
    }
    if (walk.own) {
        walk.own->set(association, walk.ends, walk.notes);
    }
    if (whole) {
        cmpi::returnInstance(walk.result, association);
        return true;
    }
    const CMPIObjectPath *name = pathOf(walk, association);
    if (!name || !moveToNameSpace(name, walk.ref, walk.status)) {
        return false;
    }
    cmpi::returnObjectPath(walk.result, name);
    return true;
}

/** Hands over what is asked for of each object at the far end. */
static bool handOverAll(Progress &walk, const CMPIObjectPath *path, const CMPIObjectPath *farEnd)
{
    // An association that matches its candidates looks at the instances for its references, too.
    const bool instances =
        walk.kind == WalkKind::associators || (walk.kind == WalkKind::references && walk.matcher);
    const bool association = walk.kind == WalkKind::references || walk.kind == WalkKind::referenceNames;
    const CMPIType type = instances ? CMPI_instance : CMPI_ref;
    const CMPIEnumeration *found = enumerate(walk, farEnd, type);
    Candidate candidate;
    while (found && next(walk, found, type, &candidate)) {
        if (!candidate.instance && !candidate.path) {
            return true;
        }
        if (walk.kind == WalkKind::nothing) {
            continue;
        }
        if (association ? !handOverAssociation(walk, path, candidate) : !handOverFarEnd(walk, candidate)) {
            break;
        }
    }
    return false;
}

bool walkFrom(const CMPIObjectPath *source, const Walk &theWalk, const Request &request)
{
    Progress walk = {theWalk, request, source};
    const Ends &ends = walk.ends;
    printf("%s", walk.traces->called);
    // Where what the properties depend on cannot be read, and for a source that is at neither end, there is
    // nothing to hand over; the status says why.
    if (walk.own && walk.own->read && !walk.own->read(walk.broker, walk.status, walk.notes)) {
        return true;
    }
    if (!fetch(walk, source, "GetInstance of source object failed.", "Source object not found.")) {
        return false;
    }
    const CMPIObjectPath *farEnd =
        farEndPath(walk.broker, source, ends.leftClass, ends.rightClass, walk.status);
    if (isNullObject(farEnd)) {
        return true;
    }
    const CMPIObjectPath *path = newPath(walk.broker, ends.className, source, walk.status);
    if (!path || !handOverAll(walk, path, farEnd)) {
        return false;
    }
    printf("%s", walk.traces->left);
    return true;
}

bool walkFromAll(const CMPIObjectPath *reference, const char *sourceClass, const Walk &walk,
                 const Request &request)
{
    printf("--- _assoc_create_inst_1toN() called\n---");
    const CMPIObjectPath *path = newPath(request.broker, sourceClass, reference, request.status);
    const CMPIEnumeration *sources = path ? enumerate(request, path, CMPI_ref) : nullptr;
    Candidate source;
    bool last = true;
    while (sources && next(request, sources, CMPI_ref, &source)) {
        if (!source.path) {
            printf("--- _assoc_create_inst_1toN() Leave \n---");
            return last;
        }
        last = walkFrom(source.path, walk, request);
    }
    return false;
}

// ---- one association ----

/** The path in a key of another; null when there is none. */
static CMPIObjectPath *endIn(const CMPIObjectPath *path, const char *name)
{
    CMPIStatus asked = {CMPI_RC_OK, nullptr};
    const CMPIData key = cmpi::getKey(path, name, &asked);
    return !isMissing(key, asked) && key.type == CMPI_ref && !isNullObject(key.value.ref) ? key.value.ref
                                                                                          : nullptr;
}

CMPIInstance *associationAt(const CMPIObjectPath *cop, const char *className, const char *refLeft,
                            const char *refRight, const Request &request)
{
    const auto end = [&](const CMPIObjectPath *path, const char *failed, const char *notFound) {
        return moveToNameSpace(path, cop, request.status) ? fetch(request, path, failed, notFound) : nullptr;
    };
    const CMPIObjectPath *left = endIn(cop, refLeft);
    if (!left) {
        failed(request.broker, request.status, "CMGetKey( cop, _RefLeft, rc)");
        return nullptr;
    }
    CMPIInstance *leftEnd = end(left, "GetInstance of left reference failed.", "Left reference not found.");
    if (!leftEnd) {
        return nullptr;
    }
    const CMPIObjectPath *right = endIn(cop, refRight);
    if (!right) {
        // compat: clients rely on the left end's instance in the answer, beside the failure.
        failed(request.broker, request.status, "CMGetKey( cop, _RefRight, rc)");
        return leftEnd;
    }
    if (!end(right, "GetInstance of right reference failed.", "Right reference not found.")) {
        return nullptr;
    }
    const CMPIObjectPath *path = newPath(request.broker, className, cop, request.status);
    CMPIInstance *association = path ? newAssociation(request, path) : nullptr;
    return association && setReference(association, refLeft, left, request.status) &&
                   setReference(association, refRight, right, request.status)
               ? association
               : nullptr;
}

// ---- matching a candidate by its keys ----

constexpr const char *matching = "get_instance_from_key";

/** Reads both keys; false, with `status` set, where one is missing. */
static bool readKeys(const KeyPair &pair, const CMPIBroker *broker, const CMPIObjectPath *source,
                     const Candidate &target, CMPIStatus *status, MatchedKeys *keys)
{
    printf(pair.direction == ASSOC_RIGHT_LEFT ? "--- %s Association is ASSOC_RIGHT_LEFT.---\n"
                                              : "--- %s Association is ASSOC_LEFT_RIGHT---\n",
           matching);
    const char *text = keyText(source, pair.sourceKey);
    if (!text) {
        return fail(broker, status, CMPI_RC_ERR_NOT_FOUND, "Could not get key of source class.");
    }
    copyText(keys->source, sizeof keys->source, text);
    printf("%s : Source Key is %s\n", matching, keys->source);

    text = nullptr;
    if (target.instance) {
        printf("%s : 1111\n", matching);
        CMPIStatus asked = {CMPI_RC_OK, nullptr};
        const CMPIData data = cmpi::getProperty(target.instance, pair.targetKey, &asked);
        text = textOf(data, asked);
    } else if (target.path) {
        text = keyText(target.path, pair.targetKey);
    }
    if (!text) {
        return failed(broker, status, "Could not get key of instance.");
    }
    copyText(keys->target, sizeof keys->target, text);
    printf("target instance key is %s \n", keys->target);
    return true;
}

bool matchCandidate(const Matcher &matcher, const CMPIBroker *broker, const CMPIObjectPath *source,
                    const CMPIInstance *targetInstance, const CMPIObjectPath *targetPath, CMPIStatus *status,
                    Notes &notes)
{
    printf("--- %s called---\n", matching);
    const char *sourceClass = classNameOf(source);
    if (!sourceClass) {
        printf("--- %s Could not get classname of source object path.---\n", matching);
        return failed(broker, status, "Could not get classname of source object path.");
    }
    for (const KeyPair &pair : matcher.keys) {
        if (pair.sourceClass && !same(pair.sourceClass, sourceClass)) {
            continue;
        }
        if (matcher.countTrace) {
            printf(matcher.countTrace, matching, notes.count);
        }
        MatchedKeys keys = {};
        if (!readKeys(pair, broker, source, {targetInstance, targetPath}, status, &keys)) {
            return false;
        }
        matcher.match(keys.source, keys.target, pair.direction, notes);
        return true;
    }
    return true; // nothing that could match
}

// ---- the frame of the association modules ----

static Ends endsOf(const AssociationClass &association, const char *rightClass)
{
    return {association.name, association.leftClass, rightClass, association.refLeft, association.refRight};
}

static CMPIStatus enumAllEnds(const AssociationClass &association, Request request,
                              const CMPIObjectPath *reference, WalkKind kind)
{
    CMPIStatus all = {CMPI_RC_OK, nullptr};
    for (const char *rightClass : association.rightClasses) {
        CMPIStatus status = {CMPI_RC_OK, nullptr};
        request.status = &status;
        if (!walkFromAll(reference, association.leftClass,
                         {.ends = endsOf(association, rightClass), .kind = kind, .own = association.own},
                         request)) {
            return status;
        }
        // A run that could list nothing says why in its status, which the request then ends with.
        if (all.rc == CMPI_RC_OK) {
            all = status;
        }
    }
    cmpi::returnDone(request.result);
    return all;
}

CMPIStatus enumAssociation(const AssociationClass &association, const CMPIBroker *broker,
                           const CMPIContext *context, const CMPIResult *result,
                           const CMPIObjectPath *reference, WalkKind kind)
{
    const bool whole = kind == WalkKind::references;
    trace(whole ? usualReadTraces.instancesCalled : usualReadTraces.namesCalled, association.name);
    const CMPIStatus status = enumAllEnds(association, {broker, context, result, nullptr}, reference, kind);
    trace(whole ? usualReadTraces.instancesLeft : usualReadTraces.namesExited, association.name);
    return status;
}

CMPIStatus getAssociation(const AssociationClass &association, const CMPIBroker *broker,
                          const CMPIContext *context, const CMPIResult *result,
                          const CMPIObjectPath *reference)
{
    trace("--- %s CMPI GetInstance() called\n", association.name);
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    const CMPIInstance *instance = associationAt(reference, association.name, association.refLeft,
                                                 association.refRight, {broker, context, result, &status});
    // An instance can come with a failure: the left end's, where the right one is not named.
    if (instance) {
        cmpi::returnInstance(result, instance);
    } else {
        fail(broker, &status, CMPI_RC_ERR_FAILED, "Failed to create Instance.");
    }
    cmpi::returnDone(result);
    trace("--- %s CMPI GetInstance() exited\n", association.name);
    return status;
}

CMPIStatus followAssociation(const AssociationClass &association, const CMPIBroker *broker,
                             const CMPIContext *context, const CMPIResult *result,
                             const CMPIObjectPath *source, const AssociationFilters &filters, WalkKind kind)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    bool admitted = true;
    if (filters.associationClass) {
        const CMPIObjectPath *path = newPath(broker, association.name, source, &status);
        if (!path) {
            return status;
        }
        admitted = isA(broker, path, filters.associationClass);
    }
    for (const char *rightClass : admitted ? association.rightClasses : std::span<const char *const>()) {
        status = {CMPI_RC_OK, nullptr};
        const Ends ends = endsOf(association, rightClass);
        // A source that the filters do not admit, or of which they cannot tell, is tied to nothing.
        if (!admits(broker, source, ends, filters, &status)) {
            continue;
        }
        if (!walkFrom(source, {ends, kind, association.matcher, association.own, association.traces},
                      {broker, context, result, &status})) {
            return status;
        }
        // A run that had nothing to hand over may have said why; to clients that is an empty success.
    }
    cmpi::returnDone(result);
    return {CMPI_RC_OK, nullptr};
}

} // namespace frame
