// SPDX-License-Identifier: Apache-2.0
// What the provider modules share: the message channel to the display engine, the ranges of its registers,
// the monitor's system name and the key check of the objects that are keyed to it.
#ifndef ZT_MAROVELTON_COMMON_H
#define ZT_MAROVELTON_COMMON_H

#include "monitor_support.h"
#include <cmpi/cmpidt.h>
#include <cmpi/cmpift.h>
#include <cmpi/cmpimacs.h>
#include <initializer_list>

// ---- texts and values ----

/** Copies `from` into a buffer of `size` characters, shortened where it does not fit, always terminated. */
void copyText(char *to, size_t size, const char *from);

/** The characters of a broker's string; null when there is no string or it holds none. */
const char *textOf(const CMPIString *string);

/** The text that a broker's data holds, a CMPIString's or the characters themselves (brokers hand both for
 * keys and for the principal); null when `status` tells of an error, the value is null, or it is of another
 * type. */
const char *textOf(const CMPIData &data, const CMPIStatus &status);

/** Whether the whole text is a base-10 integer, as strtol reads it. */
bool isDecimal(const char *text);

/** The leading base-10 integer of `text` as atoi reads it, 0 where there is none; a number beyond int becomes
 *  the nearest int, on every machine as on the controller's. */
int decimalValue(const char *text);

/** Sets the code and, made by the broker, the message of a status. */
void setStatus(const CMPIBroker *broker, CMPIStatus *status, CMPIrc code, const char *text);

// ---- the monitor's system name ----

struct SystemName {
    char text[sizeof(MonitorInfo::DisplayName) + 1];
};

/** The `SystemName` key and the base of every `Name`: the display name, or the IPv4 address where none is
 * set. */
SystemName systemName(const MonitorInfo &info);

/** Checks the keys of a singleton that is keyed to the monitor's system name: `Name` (not the monitor's),
 *  `SystemName`, `SystemCreationClassName`, `CreationClassName`, without regard to case. The first key that
 * is missing or wrong sets `status` to CMPI_RC_ERR_NOT_FOUND; success leaves it as it was. */
void Check_System_key_value_pairs(const CMPIBroker *broker, const CMPIObjectPath *objectPath,
                                  const char *className, CMPIStatus *status);

// ---- registers ----

/** Checks a value against the permitted range of a register. Returns 0 when it may be written, else -1, with
 * the register's text in `errorText` (ERROR_TEXT_SIZE characters) where it has one. */
int ValidateRegisterValue(int registerId, int value, char *errorText);

/** Reads the stored value of a register as a number. Returns what GetRegisterValue returned. */
int readRegister(int registerId, int groupId, int *value);

/** Reads the active resolution of the picture-in-picture inset, in pixels. Returns 0, or -1 on failure. */
int GetResolution(int *horizontal, int *vertical);

// ---- the message channel to the display engine ----

/** The texts of the steps of an exchange with the engine; the usual ones unless a setting spells them
 * otherwise. Some senders are different in kind: without a `reply` text no reply is awaited, without a `send`
 * text the result of the send is not looked at. */
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
bool engineIsBusy(const char *busyText, char *errorText);

/** Sends `message` to the engine and waits for its reply, whose content is not examined. Returns 0, or -1
 * with the text of the failed step in `errorText`. */
int exchange(const SpearMessage &message, const ChannelTexts &texts, char *errorText);

/** Writes registers: refuses while the engine is busy, else one set request and its reply. Returns 0 or -1
 * with `errorText` filled. The second form has the usual texts but for a missing reply. */
int sendSetting(int groupId, std::initializer_list<RegisterWrite> writes, const ChannelTexts &texts,
                char *errorText);
int sendSetting(int groupId, std::initializer_list<RegisterWrite> writes, const char *replyText,
                char *errorText);

/** Writes a batch of `count` registers after checking each with ValidateRegisterValue; a negative identifier
 * is passed over. Returns 0 when the engine's reply was received, else -1 with `errorText` filled. */
int InvokeMethod_Spear(const int *registerIds, const int *registerValues, int groupId, int count,
                       char *errorText);

/** Asks the engine to refresh the stored values of one information group. Returns 0 or -1 as above. */
int InvokeGetMethod_Spear(int groupId, char *errorText);

#endif
