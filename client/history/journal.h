// SPDX-License-Identifier: Apache-2.0
// The journal of a change that has several steps: each step is on the disk before it is sent, so that the
// next call knows what was done when this one is killed.
#ifndef DISPLAYCTL_HISTORY_JOURNAL_H
#define DISPLAYCTL_HISTORY_JOURNAL_H

#include "history/history.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace displayctl::history
{

/** The one journal of a monitor: a file of JSON lines below the state directory, locked by the process that
 * works on it. */
class Journal
{
  public:
    /** Takes the monitor's journal for this process, and reads what a killed one has left in it. None when
     * another process is at work on this monitor. fileKey: Monitor::fileKey. Throws Error. */
    [[nodiscard]] static std::optional<Journal> open(const std::filesystem::path &stateDirectory,
                                                     const std::string &fileKey);

    /** The records that are left of a process that was killed, oldest first, without taking the journal;
     * empty when there are none, or when the process that writes them still runs. For calls that only tell of
     * it. */
    [[nodiscard]] static std::vector<Json> leftOver(const std::filesystem::path &stateDirectory,
                                                    const std::string &fileKey);

    Journal(Journal &&) noexcept;
    Journal &operator=(Journal &&) noexcept;
    ~Journal();

    /** What stands in it: before the first write, what a killed process has left. */
    [[nodiscard]] const std::vector<Json> &records() const;
    [[nodiscard]] bool isEmpty() const
    {
        return records().empty();
    }

    /** Adds a record; when it returns it is on the disk. A record is there whole or not at all. Throws Error.
     */
    void write(Json record);

    /** The work is done: the journal is empty again. Throws Error. */
    void finish();

  private:
    class File;
    explicit Journal(std::unique_ptr<File> file);
    std::unique_ptr<File> file_;
};

} // namespace displayctl::history

#endif
