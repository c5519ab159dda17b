// SPDX-License-Identifier: Apache-2.0
// The support library's one connection to the store, shared by all its functions and threads.
#ifndef DESK_SUPPORT_SESSION_H
#define DESK_SUPPORT_SESSION_H

#include "support/store.h"

#include <mutex>
#include <string_view>

namespace desk
{

/** Holds the connection while it lives. The connection is opened at first use, and again when the environment
 * names another store or the file was replaced. */
class Session
{
  public:
    Session();
    Store &store();
    /** What the store holds now. */
    const Contents &read();

  private:
    std::lock_guard<std::mutex> lock_;
};

/** Tells the one who runs the process why a function failed; the seam has no words for it. */
void report(std::string_view function, const char *reason) noexcept;

/** Calls use(contents) with the newest contents. FAILURE (-1) when the store cannot be read, when the
 * function is told to fail, or when use says so. No exception leaves it. */
template <class Use>
int withContents(const char *function, Use use) noexcept
{
    try {
        Session session;
        const Contents &contents = session.read();
        if (failsByFault(contents.faults, "fail-read", function)) {
            return -1;
        }
        return use(contents);
    } catch (const std::exception &error) {
        report(function, error.what());
        return -1;
    }
}

} // namespace desk

#endif
