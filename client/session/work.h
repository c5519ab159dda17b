// SPDX-License-Identifier: Apache-2.0
// A change of several settings of one monitor: planned, journalled, carried out, and taken back when it has
// to be.
#ifndef DISPLAYCTL_SESSION_WORK_H
#define DISPLAYCTL_SESSION_WORK_H

#include "history/history.h"
#include "history/journal.h"
#include "session/change.h"

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace displayctl::session
{

/** How a change is carried out. */
struct WorkOptions {
    std::string command = {};    ///< as the journal names it: set, apply, undo
    std::string profile = {};    ///< the file that is applied
    bool isAllOrNothing = false; ///< take back what was done when a step fails
    bool isDirect = false;       ///< exactly what is asked for: no temporary steps, nothing is put in order
    std::function<void(std::size_t)> onStep = {}; ///< told before each step, and at it how many are done
};

/** What came of it. */
struct WorkReport {
    std::vector<Change> changes; ///< those that were asked for, in the order of the targets
    std::vector<Beside> beside;  ///< what else is not as it was
    Outcome outcome = Outcome::unchanged;
    std::string message;                  ///< what went wrong, or why nothing was done
    bool isTakenBack = false;             ///< a step failed, and what was done before was taken back
    std::vector<std::string> notRestored; ///< what could not be: "pip.size is minimum and was default"
};

class Work
{
  public:
    /** The state directory holds journal and history. */
    Work(Session &session, std::filesystem::path stateDirectory, WorkOptions options);

    /** The steps to the targets, from what was read with readFor(). */
    [[nodiscard]] std::vector<model::Step> plan(const std::vector<model::Target> &targets);

    /** Carries the steps out. What was read for the plan is taken as it stands. */
    [[nodiscard]] WorkReport carryOut(const std::vector<model::Target> &targets,
                                      const std::vector<model::Step> &steps);

    /** What a killed process has left: empty when there is nothing. */
    [[nodiscard]] static std::vector<history::Json> leftOver(const site::Monitor &monitor,
                                                             const std::filesystem::path &stateDirectory);
    /** What a change that was cut off switched only for a moment, with the values from before. */
    [[nodiscard]] static std::vector<model::Target> borrowedBy(const std::vector<history::Json> &records);
    /** Takes back what a killed process has left. */
    [[nodiscard]] WorkReport takeBackLeftOver();

    /** What is carried out takes this line of the history back. */
    void undoes(history::Json number)
    {
        undoes_ = std::move(number);
    }

    /** Empties the journal of a killed process: all is as it was to be. */
    void forgetLeftOver();

    /** Throws history::Error where nothing could be stored of what is about to be sent. */
    void prepareRecord() const;
    /** Stores an action that was run. */
    void recordAction(const std::string &action, const std::vector<Beside> &changed,
                      const std::string &answer);

  private:
    [[nodiscard]] StepResult carryOut(const model::Step &step, std::size_t number);
    void record(const StepResult &result, bool isRestored);
    void takeBack(WorkReport &report);
    [[nodiscard]] bool restore(const model::Target &target);
    void write(history::Json record);

    Session &session_;
    std::filesystem::path stateDirectory_;
    WorkOptions options_;
    history::Json undoes_; ///< the number of the line of the history that is taken back
    std::optional<history::Journal> journal_;
};

/** Reads all that is needed to change the settings and to know whether it is allowed. */
[[nodiscard]] std::optional<wbem::Answer> readFor(Session &session,
                                                  const std::vector<model::Target> &targets);

} // namespace displayctl::session

#endif
