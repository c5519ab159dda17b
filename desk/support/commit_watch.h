// SPDX-License-Identifier: Apache-2.0
#ifndef DESK_SUPPORT_COMMIT_WATCH_H
#define DESK_SUPPORT_COMMIT_WATCH_H

#include <array>
#include <cstddef>
#include <cstdint>

struct sqlite3;

namespace desk
{

/** Tells whether a database in write-ahead mode was committed to, by whatever process: by the header of the
 * index of its log, which all connections share in memory, and which each commit makes another one before it
 * returns. Costs no system call. */
class CommitWatch
{
  public:
    /** Of a connection that has read. */
    explicit CommitWatch(sqlite3 *database);

    /** False when the index has another form than the one that is known. */
    bool works() const
    {
        return index_ != nullptr;
    }

    /** What is committed now is known; nobody else may be writing. */
    void note();

    /** True when something was committed since. */
    bool saw() const;

  private:
    static constexpr std::size_t headerWords = 12;

    const volatile std::uint32_t *index_ = nullptr; // of SQLite, as long as the connection is open
    std::array<std::uint32_t, headerWords> noted_{};
};

} // namespace desk

#endif
