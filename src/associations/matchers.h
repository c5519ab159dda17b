// SPDX-License-Identifier: Apache-2.0
// What the associations of the network objects have of their own: which candidates they tie, and their
// properties.
#ifndef ASSOCIATIONS_MATCHERS_H
#define ASSOCIATIONS_MATCHERS_H

#include "frame/association.h"

namespace associations
{

/** The endpoint of the management interface, from a management service or the connection, and back. */
extern const frame::Matcher endpointOfServices;
extern const frame::Matcher endpointOfConnection;
inline constexpr frame::WalkTraces endpointTraces = {
    "--- _assoc_create_refs_1toN_ProvideEndpoint() called \n---",
    "--- _assoc_create_refs_1toN_ProvideEndPoint() leave \n---",
};

/** The settings of the connection: the one that belongs to the mode once in a request, every other one
 * always. */
extern const frame::Matcher settingsOfConnection;

/** IsNext, and IsCurrent by the ends of the association; by the keys that matched. */
extern const frame::OwnProperties currentByEnds;
extern const frame::OwnProperties currentByKeys;
/** AssignedSequence. */
extern const frame::OwnProperties sequence;

/** Sets `match` where the endpoint among the two keys is that of the management interface. */
void matchEndpoint(const char *key1, const char *key2, int direction, int *match);
/** Sets `match` for a setting; `count` is set once the one of the mode has matched. */
void matchSetting(const char *key1, const char *key2, int direction, int mode, int *match, int *count);

} // namespace associations

#endif
