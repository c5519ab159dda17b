// SPDX-License-Identifier: Apache-2.0
// The history of changes: history.jsonl, one JSON document a line, each with the SHA-256 of the line before
// and its own, and history.head with number and hash of the last line.
#ifndef DISPLAYCTL_HISTORY_HISTORY_H
#define DISPLAYCTL_HISTORY_HISTORY_H

#include <nlohmann/json.hpp>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace displayctl::history
{

/** A file of the history or of a journal that cannot be read or written. */
class Error : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

/** The documents keep the order of their members. */
using Json = nlohmann::ordered_json;

/** The member that is to hold others. The library would leave a null that is about to become an object, or a
 * list, broken where there is no memory for that. */
inline Json &member(Json &document, const char *name, Json empty = Json::object())
{
    return *document.emplace(name, std::move(empty)).first;
}

/** One change of one setting. Time, user of the machine and hashes are added when it is stored. */
struct Change {
    std::string monitor;        // its name
    std::string address;        // its host:port
    std::string account;        // the user it was called as
    std::string setting;        // or the action
    Json oldValue;              // null: not known
    Json newValue;              // what the monitor has afterwards
    std::string result;         // set, refused, restored, unknown, done
    std::string answer;         // the monitor's own text; empty: none
    std::string profile;        // the file that was applied; empty: none
    Json more = Json::object(); // further members, e.g. what `undo` needs
};

/** What --verify found. */
struct Verification {
    std::uint64_t lines = 0;        // in the file
    std::uint64_t firstBadLine = 0; // 0: all is as it was written
    std::string problem;            // what is wrong there
};

/** The history in a directory. Several processes and threads may use it at once. */
class History
{
  public:
    explicit History(const std::filesystem::path &directory);
    ~History();
    History(const History &) = delete;
    History &operator=(const History &) = delete;

    /** Stores the changes; when it returns they are on the disk. A crash at any moment leaves either the line
     * or none, and a history that verifies. Throws Error. */
    void append(std::span<const Change> changes);
    void append(const Change &change);

    /** Whether changes could be stored now, for who is about to make one. Throws Error where they could not.
     */
    void prepare();

    /** All lines, oldest first, as stored; those that are not JSON are left out. Throws Error. */
    [[nodiscard]] std::vector<Json> read() const;
    /** The same as text, one line each. */
    [[nodiscard]] std::vector<std::string> lines() const;

    /** Finds the first line that was altered, removed or added, the last one included. Throws Error. */
    [[nodiscard]] Verification verify() const;

  private:
    class Store;
    std::unique_ptr<Store> store_;
};

/** The point in time that --since means, as the history writes times ("2026-01-31T12:00:00.000Z"): an ISO
 * date or time (local unless it ends with Z or an offset), or 30s, 15m, 2h, 3d, 1w before now. None when it
 * is neither. */
[[nodiscard]] std::optional<std::string> parseSince(std::string_view text);

} // namespace displayctl::history

#endif
