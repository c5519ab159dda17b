// SPDX-License-Identifier: Apache-2.0
#include "engine/wire.h"

namespace desk::wire
{

namespace
{

constexpr std::size_t typeAt = 0;
constexpr std::size_t commandAt = 4;
constexpr std::size_t sourceAt = 6;
constexpr std::size_t countAt = 9;
constexpr std::size_t groupAt = 10;
constexpr std::size_t entriesAt = 11;
constexpr std::size_t entrySize = 7;
constexpr std::size_t entryTypeAt = 0;
constexpr std::size_t entryRegisterAt = 1;
constexpr std::size_t entryStatusAt = 2;
constexpr std::size_t entryValueAt = 3;

static_assert(entriesAt + mostEntries * entrySize == messageSize - 1);

int signed32(const Bytes &bytes, std::size_t at)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        value |= static_cast<std::uint32_t>(bytes[at + i]) << (8 * i);
    }
    return static_cast<int>(value);
}

int signed16(const Bytes &bytes, std::size_t at)
{
    const unsigned value = static_cast<unsigned>(bytes[at]) | static_cast<unsigned>(bytes[at + 1]) << 8;
    return static_cast<int>(value) - (value >= 0x8000 ? 0x10000 : 0);
}

} // namespace

Request decode(const Bytes &bytes)
{
    Request request{};
    request.type = signed32(bytes, typeAt);
    request.command = signed16(bytes, commandAt);
    request.source = signed16(bytes, sourceAt);
    request.count = bytes[countAt];
    request.group = bytes[groupAt];
    for (std::size_t i = 0; i < mostEntries; ++i) {
        const std::size_t at = entriesAt + i * entrySize;
        Entry &entry = request.entries[i];
        entry.type = bytes[at + entryTypeAt];
        entry.registerId = bytes[at + entryRegisterAt];
        entry.value = signed16(bytes, at + entryValueAt);
        for (std::size_t k = 0; k < 4; ++k) {
            entry.octets[k] = bytes[at + entryValueAt + k];
        }
    }
    return request;
}

void putStatus(Bytes &bytes, std::size_t entry, Status status)
{
    bytes[entriesAt + entry * entrySize + entryStatusAt] = status;
}

} // namespace desk::wire
