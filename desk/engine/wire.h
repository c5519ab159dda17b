// SPDX-License-Identifier: Apache-2.0
// The engine's own description of the bytes of a message.
//
// Deliberately not the structures of the library: the two sides describe the same bytes independently, so
// that a mistake on either side shows. All numbers are little-endian.
//
//   offset  bytes
//        0      4  message type
//        4      2  process command
//        6      2  message source
//        8      1  sequence number
//        9      1  number of entries
//       10      1  information group
//       11      7  entry 0: type, register, status, four bytes of value
//       18      7  entry 1
//       25      7  entry 2
//       32      7  entry 3
//       39      1  unused
#ifndef DESK_ENGINE_WIRE_H
#define DESK_ENGINE_WIRE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace desk::wire
{

inline constexpr std::size_t messageSize = 40;
inline constexpr std::size_t mostEntries = 4;
inline constexpr int messageType = 1;

/** Queues, counted from the base key. */
inline constexpr int requestQueue = 0;
inline constexpr int replyQueue = 3;

inline constexpr int setRequest = 3;
inline constexpr int getRequest = 8;
inline constexpr int sourceWsMan = 7;

inline constexpr int entryNumber = 0;  // the entry carries a signed 16-bit number
inline constexpr int entryAddress = 1; // the entry carries four octets, first octet first

/** What a reply says of an entry. */
enum Status : std::uint8_t {
    applied = 0,
    refused = 1,    // the entry cannot be applied
    notApplied = 2, // another entry of the message was refused
};

using Bytes = std::array<std::uint8_t, messageSize>;

struct Entry {
    int type;
    int registerId;
    int value;              // entryNumber
    std::uint8_t octets[4]; // entryAddress
};

struct Request {
    int type;
    int command;
    int source;
    int count; // as the message has it; entries holds at most mostEntries of them
    int group;
    Entry entries[mostEntries];

    std::span<const Entry> used() const
    {
        const auto n = static_cast<std::size_t>(count);
        return {entries, n < mostEntries ? n : mostEntries};
    }
};

/** Reads a request from the bytes of a message. */
Request decode(const Bytes &bytes);

/** Writes the status of an entry into a message that is to become the reply. */
void putStatus(Bytes &bytes, std::size_t entry, Status status);

} // namespace desk::wire

#endif
