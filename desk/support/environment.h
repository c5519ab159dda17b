// SPDX-License-Identifier: Apache-2.0
// Where the desk monitor keeps its things: read from the environment at every use.
#ifndef DESK_SUPPORT_ENVIRONMENT_H
#define DESK_SUPPORT_ENVIRONMENT_H

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace desk
{

/** The settings store cannot be used; the text says which and why. */
struct StoreError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** Queue n has the key of the base plus n. */
inline constexpr key_t defaultQueueKey = 0x4d4f4e30;
inline constexpr int queueCount = 4;

/** Path of the settings store: DESK_MONITOR_STORE, else desk-monitor/store.db in the user's state directory
 * ($XDG_STATE_HOME, ~/.local/state), else below /var/tmp. */
std::string storePath();

/** The same as path == storePath(), and cheap where DESK_MONITOR_STORE names it. */
bool isStorePath(std::string_view path);

/** Creates the directory of the default path; a path that somebody chose must have its directory already.
 * Throws StoreError when the default directory is not the user's own alone. */
void makeStoreDirectory();

/** Base key of the message queues, DESK_MONITOR_QUEUE_KEY: decimal, or hexadecimal with 0x. Nothing when the
 * variable holds no usable key. */
std::optional<key_t> queueBaseKey();

/** The same from a text. */
std::optional<key_t> parseQueueKey(const std::string &text);

/** How long a receive waits for a reply: DESK_MONITOR_RECEIVE_TIMEOUT in seconds, fractions allowed, default
 * 5; values that are no time at all are taken as the default. */
std::chrono::nanoseconds receiveTimeout();

} // namespace desk

#endif
