// SPDX-License-Identifier: Apache-2.0
// One monitor in work: reads classes into a state and sends changes.
#ifndef DISPLAYCTL_SESSION_SESSION_H
#define DISPLAYCTL_SESSION_SESSION_H

#include "model/plan.h"
#include "model/state.h"
#include "site/monitors.h"
#include "wbem/connection.h"

#include <chrono>
#include <optional>
#include <set>
#include <span>
#include <string>

namespace displayctl::session
{

using Classes = std::set<std::string>;

/** Whether a change has been sent to a monitor: who cannot go on, for lack of memory or of room on the disk,
 * has to tell it. */
class Sent
{
  public:
    /** Begins anew for this thread, with another monitor. */
    static void forget();
    static void note();
    [[nodiscard]] static bool byThisThread();
    [[nodiscard]] static bool atAll();
};

class Session
{
  public:
    Session(const site::Monitor &monitor, std::chrono::milliseconds timeout);

    /** Reads all objects of the classes (without prefix), one request each, over one connection. The first
     * answer that is not ok, if there is one; what was answered is in the state all the same. */
    [[nodiscard]] std::optional<wbem::Answer> read(const Classes &classes);
    /** The same for those that were not read yet. */
    [[nodiscard]] std::optional<wbem::Answer> readMissing(const Classes &classes);
    /** All that was read so far, anew. */
    [[nodiscard]] std::optional<wbem::Answer> readAgain();

    [[nodiscard]] const model::State &state() const
    {
        return state_;
    }
    [[nodiscard]] const site::Monitor &monitor() const
    {
        return monitor_;
    }
    [[nodiscard]] wbem::Connection &connection()
    {
        return connection_;
    }
    [[nodiscard]] std::chrono::milliseconds timeout() const
    {
        return timeout_;
    }

    /** Sends one step. The classes that it needs must have been read. */
    [[nodiscard]] wbem::Answer send(std::span<const model::Target> changes);
    /** Runs an action; preset: the number that a reset of the calibration is for. */
    [[nodiscard]] wbem::Answer run(const model::ActionRow &action, int preset);
    /** Asks whether the account is an administrator's, by a call that lacks its argument and does nothing.
     * None when the monitor does not say. */
    [[nodiscard]] std::optional<bool> isAdministrator();

  private:
    [[nodiscard]] wbem::Answer invoke(std::string_view className, int number, std::string_view method,
                                      std::vector<wbem::Property> arguments, bool isChange = true);
    [[nodiscard]] wbem::Answer sendAddress(std::span<const model::Target> changes);

    site::Monitor monitor_;
    std::chrono::milliseconds timeout_;
    wbem::Connection connection_;
    model::State state_;
    Classes read_;
};

/** The classes without which the setting can neither be read nor sent. */
void addChangeClasses(const model::Setting &setting, Classes &classes);

} // namespace displayctl::session

#endif
