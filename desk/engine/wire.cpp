// SPDX-License-Identifier: Apache-2.0
#include "engine/wire.h"

namespace desk::wire
{

namespace
{

constexpr std::size_t CommandAt = 0;
constexpr std::size_t SourceAt = 2;
constexpr std::size_t CountAt = 5;
constexpr std::size_t GroupAt = 6;
constexpr std::size_t EntriesAt = 7;
constexpr std::size_t EntrySize = 7;
constexpr std::size_t EntryTypeAt = 0;
constexpr std::size_t EntryRegisterAt = 1;
constexpr std::size_t EntryStatusAt = 2;
constexpr std::size_t EntryValueAt = 3;

static_assert(EntriesAt + MostEntries * EntrySize == MessageSize - 1);

int signed16(const Bytes &bytes, std::size_t at)
{
    const unsigned value = static_cast<unsigned>(bytes[at]) | static_cast<unsigned>(bytes[at + 1]) << 8;
    return static_cast<int>(value) - (value >= 0x8000 ? 0x10000 : 0);
}

} // namespace

Request decode(const Bytes &bytes)
{
    Request request{};
    request.command = signed16(bytes, CommandAt);
    request.source = signed16(bytes, SourceAt);
    request.count = bytes[CountAt];
    request.group = bytes[GroupAt];
    for (std::size_t i = 0; i < MostEntries; ++i) {
        const std::size_t at = EntriesAt + i * EntrySize;
        Entry &entry = request.entries[i];
        entry.type = bytes[at + EntryTypeAt];
        entry.registerId = bytes[at + EntryRegisterAt];
        entry.value = signed16(bytes, at + EntryValueAt);
        for (std::size_t k = 0; k < 4; ++k)
            entry.octets[k] = bytes[at + EntryValueAt + k];
    }
    return request;
}

void putStatus(Bytes &bytes, std::size_t entry, Status status)
{
    bytes[EntriesAt + entry * EntrySize + EntryStatusAt] = status;
}

} // namespace desk::wire
