// SPDX-License-Identifier: Apache-2.0
// The engine's own description of the bytes of a message.
//
// Deliberately not the structures of the library: the two sides describe the same bytes independently, so
// that a mistake on either side shows. The message type travels as the queue's own type and is not a part of
// the bytes below. All numbers are little-endian.
//
//   offset  bytes
//        0      2  process command
//        2      2  message source
//        4      1  sequence number
//        5      1  number of entries
//        6      1  information group
//        7      7  entry 0: type, register, status, four bytes of value
//       14      7  entry 1
//       21      7  entry 2
//       28      7  entry 3
//       35      1  unused
#ifndef DESK_ENGINE_WIRE_H
#define DESK_ENGINE_WIRE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace desk::wire
{

inline constexpr std::size_t MessageSize = 36;
inline constexpr std::size_t MostEntries = 4;
inline constexpr long MessageType = 1;

/** Queues, counted from the base key. */
inline constexpr int RequestQueue = 0;
inline constexpr int ReplyQueue = 3;

inline constexpr int SetRequest = 3;
inline constexpr int GetRequest = 8;
inline constexpr int SourceWsMan = 7;

inline constexpr int EntryNumber = 0;  // the entry carries a signed 16-bit number
inline constexpr int EntryAddress = 1; // the entry carries four octets, first octet first

/** What a reply says of an entry. */
enum Status : std::uint8_t {
    Applied = 0,
    Refused = 1,    // the entry cannot be applied
    NotApplied = 2, // another entry of the message was refused
};

using Bytes = std::array<std::uint8_t, MessageSize>;

struct Entry {
    int type;
    int registerId;
    int value;              // EntryNumber
    std::uint8_t octets[4]; // EntryAddress
};

struct Request {
    int command;
    int source;
    int count; // as the message has it; entries holds at most MostEntries of them
    int group;
    Entry entries[MostEntries];

    std::span<const Entry> used() const
    {
        const auto n = static_cast<std::size_t>(count);
        return {entries, n < MostEntries ? n : MostEntries};
    }
};

/** Reads a request from the bytes of a message. */
Request decode(const Bytes &bytes);

/** Writes the status of an entry into a message that is to become the reply. */
void putStatus(Bytes &bytes, std::size_t entry, Status status);

} // namespace desk::wire

#endif
