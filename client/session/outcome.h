// SPDX-License-Identifier: Apache-2.0
// What came of a call for one monitor, in words and as exit code.
#ifndef DISPLAYCTL_SESSION_OUTCOME_H
#define DISPLAYCTL_SESSION_OUTCOME_H

#include "wbem/operation.h"

#include <string>
#include <string_view>

namespace displayctl::session
{

constexpr int accessDenied = 2; // the status code of CIM

enum class Outcome { ok, unchanged, different, refused, busy, unreachable, login, unknown };

/** The word that stands in JSON and in summaries. */
[[nodiscard]] std::string_view nameOf(Outcome outcome);
[[nodiscard]] int exitCodeOf(Outcome outcome);

/** The more serious of two outcomes of one monitor. */
[[nodiscard]] Outcome worse(Outcome one, Outcome other);

/** What a request that was not answered with ok means for the monitor it was sent to. */
[[nodiscard]] Outcome outcomeOf(const wbem::Answer &answer);

/** What the monitor's text means where it tells of the monitor's own state or of missing rights, and what
 * helps; empty where it tells of something else. */
[[nodiscard]] std::string_view reasonOf(const wbem::Answer &answer);

/** The answer's text for a person: the monitor's own, or what went wrong and what helps. */
[[nodiscard]] std::string messageOf(const wbem::Answer &answer);

} // namespace displayctl::session

#endif
