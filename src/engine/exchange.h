// SPDX-License-Identifier: Apache-2.0
// The message to the display engine and the exchange of one with its reply. What can fail returns 0, or -1
// with the text of what failed in `errorText`, which has ERROR_TEXT_SIZE characters.
#ifndef ENGINE_EXCHANGE_H
#define ENGINE_EXCHANGE_H

#include "engine/text.h"
#include "monitor_support.h"
#include <initializer_list>

namespace engine
{

/** The texts of the steps of an exchange with the engine, where a setting has other ones than usual. Without
 * a `reply` text no reply is awaited, without a `send` text the result of the send is not looked at. */
struct ChannelTexts {
    const char *reply;
    const char *busy = "Device is Busy. Please try after some time.";
    const char *sendQueue = "Unable to create a message queue for sending message.";
    const char *send = "Unable to send value to SPEAr.";
    const char *receiveQueue = "Unable to create a message queue for receiving message.";
    bool onlyMinusOneFails = false; // queue and send results other than -1 count as success
};

struct RegisterWrite {
    int registerId;
    int value; // the low 16 bits travel
};

/** A request of this library to the engine without register entries. */
SpearMessage engineRequest(int command, int groupId);

/** A set request for at most REGISTERS_PER_MESSAGE registers of one information group. */
SpearMessage setRequest(int groupId, std::initializer_list<RegisterWrite> writes);

/** Whether the engine refuses requests now; `busyText` is then in `errorText`. */
[[nodiscard]] bool engineIsBusy(const char *busyText, char *errorText);

/** Sends `message` to the engine and waits for its reply, whose content is not examined. */
[[nodiscard]] int exchange(const SpearMessage &message, const ChannelTexts &texts, char *errorText);

/** Writes registers: refuses while the engine is busy, else one set request and its reply. */
[[nodiscard]] int sendSetting(int groupId, std::initializer_list<RegisterWrite> writes,
                              const ChannelTexts &texts, char *errorText);

/** Reads the stored value of a register as a number. Returns what GetRegisterValue returned. */
[[nodiscard]] int readRegister(int registerId, int groupId, int *value);

} // namespace engine

/** Asks the engine to refresh the stored values of one information group. */
[[nodiscard]] int InvokeGetMethod_Spear(int groupId, char *errorText);

#endif
