// SPDX-License-Identifier: Apache-2.0
// One step of a change: sent, read back, and what came of it.
#ifndef DISPLAYCTL_SESSION_CHANGE_H
#define DISPLAYCTL_SESSION_CHANGE_H

#include "model/plan.h"
#include "session/outcome.h"
#include "session/session.h"

#include <string>
#include <vector>

namespace displayctl::session
{

enum class Result { set, unchanged, refused, restored, unknown };

/** The word that stands in JSON and in the history. */
[[nodiscard]] std::string_view nameOf(Result result);

/** What came of one setting. */
struct Change {
    const model::Setting *setting = nullptr;
    model::Value before = nullptr;
    model::Value wanted = nullptr;
    model::Value after = nullptr; ///< what the monitor has afterwards; null when it is not known
    Result result = Result::unchanged;
    Outcome outcome = Outcome::ok;
    std::string message = {}; ///< the monitor's own text, or what went wrong
    std::string rule = {};    ///< what the refusal means, empty where it is none of those known
    std::string first = {};   ///< what has to be set first, as in pip.mode=pip
    bool isBlankText = false; ///< the monitor refused without a text
    bool hasNoWayOut = false; ///< the refusal's rule is known, and nothing makes it hold

    [[nodiscard]] bool isGood() const
    {
        return result != Result::refused && result != Result::unknown;
    }
};

/** What else a step changed. */
struct Beside {
    const model::Setting *setting;
    model::Value before;
    model::Value after;
};

struct StepResult {
    std::vector<Change> changes; ///< one for each setting of the step
    std::vector<Beside> beside;

    [[nodiscard]] bool isGood() const;
};

/** Reads what the step needs. The answer that stands in the way, if there is one. */
[[nodiscard]] std::optional<wbem::Answer> prepare(Session &session, const model::Step &step);

/** The settings that the step may change beside its own, with what they have now. */
[[nodiscard]] std::vector<Beside> besides(const Session &session, const model::Step &step);

/** Sends a prepared step and reads back. */
[[nodiscard]] StepResult perform(Session &session, const model::Step &step);

/** What an answer that refuses a change of the subject (a setting's row, an action) means: message, rule, way
 * out. */
void explain(Session &session, std::string_view subject, int number, const model::Value &value,
             const wbem::Answer &answer, Change &change);

/** Whether the request was sent on to the display engine and no answer came, so that only reading back tells.
 */
[[nodiscard]] bool isDoubtful(const wbem::Answer &answer);

/** Whether a method or ModifyInstance was answered with success. */
[[nodiscard]] bool isDone(const wbem::Answer &answer);

} // namespace displayctl::session

#endif
