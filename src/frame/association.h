// SPDX-License-Identifier: Apache-2.0
// The association engine, and the frame of the association modules. An association class owns no data: its
// objects are found by asking the object manager for those at the far end. To one source the engine ties
// every object of the other end's class, or those that the association's matcher lets through.
#ifndef FRAME_ASSOCIATION_H
#define FRAME_ASSOCIATION_H

#include "frame/paths.h"
#include <cstdint>
#include <span>
#include <string_view>

/** In which direction an association is followed. */
enum ASSOC_TYPE { ASSOC_RIGHT_LEFT = 1, ASSOC_LEFT_RIGHT = 2 };
using ASSOC_TYPE_E = ASSOC_TYPE;

namespace frame
{

/** What an operation has from the object manager. */
struct Request {
    const CMPIBroker *broker;
    const CMPIContext *context;
    const CMPIResult *result;
    CMPIStatus *status;
};

/** An association class between two classes. */
struct Ends {
    const char *className;
    const char *leftClass;
    const char *rightClass;
    const char *refLeft;
    const char *refRight;
};

/** What is asked for; `nothing` lists the names at the far end and hands none over. */
enum class WalkKind : uint8_t { associators, associatorNames, references, referenceNames, nothing };

// ---- what an association has of its own, as data ----

/** What the functions of an association note during one walk; the engine looks at `match` alone. */
struct Notes {
    int match = 0;
    int count = 0;
    int mode = 0;
    char current = 0;
};

/** Which keys of a source and of a candidate are compared. */
struct KeyPair {
    const char *sourceClass; // null: every other class
    int direction;
    const char *sourceKey;
    const char *targetKey;
};

/** Which of the candidates an association ties to a source. */
struct Matcher {
    std::span<const KeyPair> keys = {}; // the first that fits the source; without any nothing matches
    /** Sets `match` where the two keys belong together, and never clears it. */
    void (*match)(const char *sourceKey, const char *targetKey, int direction, Notes &notes) = nullptr;
    const char *countTrace = nullptr;
};

/** The properties of an association that are not references. */
struct OwnProperties {
    /** Reads what they depend on; false, with the status set, when it cannot. Null: nothing to read. */
    bool (*read)(const CMPIBroker *broker, CMPIStatus *status, Notes &notes);
    void (*set)(const CMPIInstance *association, const Ends &ends, const Notes &notes);
};

struct WalkTraces {
    const char *called = "--- _assoc_create_refs_1toN() called \n---";
    const char *left = "--- _assoc_create_refs_1toN() leave \n---";
};
inline constexpr WalkTraces usualWalkTraces = {};

/** One walk from a source to the objects at its far end. */
struct Walk {
    Ends ends;
    WalkKind kind;
    const Matcher *matcher = nullptr;   // null: every candidate
    const OwnProperties *own = nullptr; // null: none
    const WalkTraces *traces = &usualWalkTraces;
};

// ---- the engine ----

/** The class at the far end from `ref`, one of the two given pointers; where both ends fit, `ref` is the left
 *  one. Null, with `status` set, on failure. */
[[nodiscard]] const char *farEndClass(const CMPIBroker *broker, const CMPIObjectPath *ref,
                                      const char *leftClass, const char *rightClass, CMPIStatus *status);

/** A new path of the far-end class in the namespace of `ref`. Null, or a path without a handle, with `status`
 * set, on failure. */
[[nodiscard]] CMPIObjectPath *farEndPath(const CMPIBroker *broker, const CMPIObjectPath *ref,
                                         const char *leftClass, const char *rightClass, CMPIStatus *status);

/** The filters of a request for what a source is tied to; each may be null. */
struct AssociationFilters {
    const char *associationClass;
    const char *resultClass;
    const char *role;
    const char *resultRole;
};

/** Whether the filters admit the association for the source. Names are compared without regard to case.
 *  `status` is set only where that cannot be told. */
[[nodiscard]] bool admits(const CMPIBroker *broker, const CMPIObjectPath *source, const Ends &ends,
                          const AssociationFilters &filters, CMPIStatus *status);

/** Matches a candidate, an instance or a path, by the keys; false, with the status set, without one. */
[[nodiscard]] bool matchCandidate(const Matcher &matcher, const CMPIBroker *broker,
                                  const CMPIObjectPath *source, const CMPIInstance *targetInstance,
                                  const CMPIObjectPath *targetPath, CMPIStatus *status, Notes &notes);

/** Answers a request for one source object; finding nothing is no failure. False with the status set. */
[[nodiscard]] bool walkFrom(const CMPIObjectPath *source, const Walk &walk, const Request &request);

/** Answers for every object of the class `sources`. False when they cannot be listed, else what the last one
 *  gave. */
[[nodiscard]] bool walkFromAll(const CMPIObjectPath *reference, const char *sources, const Walk &walk,
                               const Request &request);

/** The association instance that `path` names, once both its ends are found to exist. Null, with the status
 * set, on failure; without a right end in `path` the left end's instance, with the status set. */
[[nodiscard]] CMPIInstance *associationAt(const CMPIObjectPath *path, const char *className,
                                          const char *refLeft, const char *refRight, const Request &request);

// ---- the frame of the association modules ----

/** What the frame needs to know of an association class. */
struct AssociationClass {
    const char *name;
    const char *refLeft;
    const char *refRight;
    const char *leftClass;
    std::span<const char *const> rightClasses; // every operation runs once for each, in order
    const OwnProperties *own = nullptr;
    // An enumeration ties every candidate; from a source, those that match.
    const Matcher *matcher = nullptr;
    const WalkTraces *traces = &usualWalkTraces;
};

/** An association that the frame can serve: every name there, the ends told apart. */
constexpr bool associationIsSound(const AssociationClass &association)
{
    const auto empty = [](const char *text) { return !text || *text == '\0'; };
    for (const char *rightClass : association.rightClasses) {
        if (empty(rightClass)) {
            return false;
        }
    }
    return !association.rightClasses.empty() && !empty(association.name) && !empty(association.leftClass) &&
           !empty(association.refLeft) && !empty(association.refRight) &&
           std::string_view(association.refLeft) != association.refRight;
}

CMPIStatus enumAssociation(const AssociationClass &association, const CMPIBroker *broker,
                           const CMPIContext *context, const CMPIResult *result,
                           const CMPIObjectPath *reference, WalkKind kind);
CMPIStatus getAssociation(const AssociationClass &association, const CMPIBroker *broker,
                          const CMPIContext *context, const CMPIResult *result,
                          const CMPIObjectPath *reference);
CMPIStatus followAssociation(const AssociationClass &association, const CMPIBroker *broker,
                             const CMPIContext *context, const CMPIResult *result,
                             const CMPIObjectPath *source, const AssociationFilters &filters, WalkKind kind);

} // namespace frame

#endif
