// SPDX-License-Identifier: Apache-2.0
// The monitor's support library and the shell helper as a script: plausible records that a test changes,
// results per function, and a record of every call and every message.
//
// There is one seam, `seam`, set back before every test.
#ifndef TEST_SUPPORT_SCRIPTED_SEAM_H
#define TEST_SUPPORT_SCRIPTED_SEAM_H

#include "monitor_support.h"
#include <array>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace test_support
{

/** A message as its 40 bytes. Queue n has the identifier 100 + n. */
struct SentMessage {
    int queueId;
    std::array<uint8_t, 40> bytes;
};
/** "01 00 00 00 03 00 ..." in blocks: type, command, source, sequence/count/group, then the entries. */
std::string hex(const std::array<uint8_t, 40> &bytes);

/** What a shell command answers. Lines keep their line feeds. */
struct CommandScript {
    int status = 0;
    std::vector<std::string> output = {};
    std::vector<std::string> errors = {};
    bool noOutput = false; // the list of lines itself is null
};

struct Seam {
    // ---- the monitor's state, with plausible values; tests change what they are about ----
    MonitorInfo monitor; // DisplayName "Studio 7", DeploymentLocation "Grading room 2" ...
    int status;          // what GetMonitorStatus answers: FREE
    ManagementInfo management;
    ImageAdjustment imageAdjustment; // 3840 x 2160
    PexalPIPSettings pip;
    OSDMenuAndMessageInfo osd;
    ColorSpaceInfo colorSpaces[7];
    BezelButtonInfo bezel;
    FunctionButtonInfo functionButtons[4];
    TestPatternInfo testPattern;
    RemoteManagementServer remote;
    std::string ipAddress; // "192.0.2.17"; 20 characters fill the buffer without a terminator
    std::map<std::pair<int, int>, std::string>
        registers;                                 // the text of (register, group); others fail with -1
    std::set<std::string> administrators;          // "admin"
    std::set<std::string> users;                   // "operator"; an unknown user cannot be looked up
    char isAdministrator;                          // what IsAdminUser writes for an administrator: 1
    std::array<uint8_t, 4> octetsOfRefused = {};   // what a scripted failure of ParseIPV4Address leaves
    std::map<std::string, CommandScript> commands; // by command line; others cannot be run
    /** What a failing function writes into its errorText: IsAdminUser, UpdateDisplayName, ... Nothing when
     * empty; 250 characters or more fill the buffer without a terminator. */
    std::string errorText; // "The support library has failed."

    // ---- results ----
    /** Every call with this record ("GetRegisterValue(1, 0)"), or of this function ("GetMoinitorInfo"), gives
     *  `result` and does nothing else; records that it should have filled are then full of 'Z'. */
    void returns(const std::string &call, int result);
    /** The n-th call (from 1) of this function, or with this record, gives `result`. */
    void returnsAt(const std::string &call, int nth, int result);

    // ---- the record ----
    std::vector<std::string> calls;              // "GetMonitorStatus(0)", "IsAdminUser(admin)", ... in order
    std::vector<SentMessage> sent;               // the messages of SendStatusMessagetoSource
    std::vector<SentMessage> received;           // what RecvMessageFromSource was given
    std::vector<int> queueIdBefore;              // what the queue identifier was when a queue was asked for
    std::vector<std::string> errorTextBefore;    // what the errorText was when a function was called
    std::vector<std::string> printedBefore;      // what had been printed when IsAdminUser was called
    std::vector<std::string> registerTextBefore; // what the text buffer of GetRegisterValue was
    std::vector<std::pair<bool, bool>> captured; // runcommand: whether output and errors were asked for
    int unfreedLines = 0;                        // line lists of runcommand that have not been freed

    /** Everything as before a test. */
    void reset();
    /** Forgets the record; the state and the results stay. */
    void forgetCalls();
    /** Calls of one function. */
    int count(const std::string &function) const;

  private:
    friend bool scripted(const std::string &function, const std::string &call, int *result);
    std::map<std::string, int> always_;
    std::map<std::pair<std::string, int>, int> onceOnly_;
    std::map<std::string, int> timesCalled_;
};

extern Seam seam;

/** Fills a text field of a record: the text, then zeros. */
template <size_t width>
void setField(char (&field)[width], const std::string &text)
{
    memset(field, 0, width);
    memcpy(field, text.data(), text.size() < width ? text.size() : width);
}

/** Fills a text field to its width, without a terminating zero. */
template <size_t width>
std::string fillField(char (&field)[width], char with)
{
    memset(field, with, width);
    return std::string(width, with);
}

} // namespace test_support

#endif
