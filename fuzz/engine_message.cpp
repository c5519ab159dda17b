// SPDX-License-Identifier: Apache-2.0
// The messages of the display engine: both descriptions of their bytes agree, and whatever a row of messages
// holds, the settings stay such as a monitor can have.
#include "engine/exchange.h"

#include "engine/effects.h"
#include "engine/wire.h"
#include "support/settings_table.h"

#include "fuzz.h"

#include <cstring>
#include <string>

namespace
{

using desk::wire::Bytes;
using desk::wire::Request;

/** The same message by the structures of the library. */
SpearMessage encoded(const Request &request)
{
    SpearMessage message;
    std::memset(&message, 0, sizeof message);
    message.Type = request.type;
    message.Data.Cmd = static_cast<std::int16_t>(request.command);
    message.Data.Source = static_cast<std::int16_t>(request.source);
    message.Data.Arg.sWebCmd.Count = static_cast<std::uint8_t>(request.count);
    message.Data.Arg.sWebCmd.GroupId = static_cast<std::uint8_t>(request.group);
    for (std::size_t i = 0; i < desk::wire::mostEntries; ++i) {
        RegisterDetails &entry = message.Data.Arg.sWebCmd.sRegdetails[i];
        entry.Type = static_cast<std::uint8_t>(request.entries[i].type);
        entry.Register = static_cast<std::uint8_t>(request.entries[i].registerId);
        std::memcpy(entry.RegisterValue.DataValue, request.entries[i].octets,
                    sizeof entry.RegisterValue.DataValue);
        fuzz::require(entry.RegisterValue.Value == request.entries[i].value,
                      "the number is the first two octets");
    }
    return message;
}

/** The bytes without those that a request says nothing with. */
Bytes meant(Bytes bytes)
{
    constexpr std::size_t sequenceAt = 8;
    bytes[sequenceAt] = 0;
    bytes.back() = 0;
    for (std::size_t i = 0; i < desk::wire::mostEntries; ++i) {
        desk::wire::putStatus(bytes, i, desk::wire::applied);
    }
    return bytes;
}

void checkBothDescriptions(const Bytes &bytes)
{
    static_assert(sizeof(SpearMessage) == sizeof bytes);
    const Request request = desk::wire::decode(bytes);
    const SpearMessage message = encoded(request);
    Bytes again;
    std::memcpy(again.data(), &message, sizeof message);
    fuzz::require(again == meant(bytes), "a message that was read and written is the same");
    fuzz::require(request.used().size() <= desk::wire::mostEntries, "a message has four entries at most");

    const SpearMessage sent =
        engine::setRequest(request.group, {{request.entries[0].registerId, request.entries[0].value},
                                           {request.entries[1].registerId, request.entries[1].value}});
    std::memcpy(again.data(), &sent, sizeof sent);
    const Request received = desk::wire::decode(again);
    fuzz::require(received.type == desk::wire::messageType && received.command == desk::wire::setRequest &&
                      received.source == desk::wire::sourceWsMan && received.group == request.group &&
                      received.count == 2,
                  "the engine takes what the library sends");
    for (std::size_t i = 0; i < 2; ++i) {
        fuzz::require(received.entries[i].registerId == request.entries[i].registerId &&
                          received.entries[i].value == request.entries[i].value,
                      "the engine reads the registers that the library writes");
    }
}

void checkSettings(const desk::Settings &settings)
{
    for (std::size_t i = 0; i < desk::settingCount; ++i) {
        const desk::Key key(i);
        const std::string wrong = desk::complaint(key.row(), std::string(settings.text(key)));
        fuzz::require(wrong.empty(), "every setting has a value that its row accepts", wrong);
    }
}

/** As the engine does it: all entries or none. */
void apply(const Request &request, desk::Settings &settings)
{
    desk::Settings changed = settings;
    for (const desk::wire::Entry &entry : request.used()) {
        if (!desk::applyEntry(changed, request.group, entry).empty()) {
            return;
        }
    }
    settings = changed;
    checkSettings(settings);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    desk::Settings settings;
    for (; size >= desk::wire::messageSize;
         data += desk::wire::messageSize, size -= desk::wire::messageSize) {
        Bytes bytes;
        std::memcpy(bytes.data(), data, bytes.size());
        checkBothDescriptions(bytes);
        apply(desk::wire::decode(bytes), settings);
    }
    return 0;
}
