// SPDX-License-Identifier: Apache-2.0
// Asks a support library all that libcmpiDisplayManagement asks of it, and tells in a table what is right and
// what wrong. Called by tools/try-support-library. Each function is asked in a process of its own with a time
// limit, so that one that crashes or hangs is named and the rest is asked all the same.

#include "monitor_support.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

void *library;
int wrong;
unsigned secondsAtMost = 30;
std::string mistakes; // of the check that runs
std::string remark;   // beside its name in the table, where nothing is wrong

template <typename Function>
Function *find(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(library, name));
}
#define ASKED(name) find<decltype(name)>(#name)

void mistake(const std::string &text)
{
    mistakes += (mistakes.empty() ? "" : "; ") + text;
}

void require(bool isRight, const std::string &text)
{
    if (!isRight) {
        mistake(text);
    }
}

void tell(bool isRight, const char *name, const std::string &text)
{
    printf("%-6s %-30s %s\n", isRight ? "right" : "WRONG", name, text.c_str());
    fflush(stdout);
    wrong += isRight ? 0 : 1;
}

// How a child ends whose check came to its end; an exit() of the library hardly ends it so.
constexpr int right = 95;
constexpr int mistaken = 96;

/** Runs a check in a child, and tells what it found, or how it ended. */
void check(const char *name, const std::function<void()> &body)
{
    int channel[2];
    if (pipe(channel) != 0) {
        perror("pipe");
        exit(1);
    }
    const pid_t child = fork();
    if (child == 0) {
        alarm(secondsAtMost);
        body();
        const std::string &found = mistakes.empty() ? remark : mistakes;
        const ssize_t written = write(channel[1], found.data(), found.size());
        _exit(written != static_cast<ssize_t>(found.size()) ? 1 : mistakes.empty() ? right : mistaken);
    }
    close(channel[1]);
    std::string text;
    char part[4096];
    for (ssize_t count = 0; (count = read(channel[0], part, sizeof part)) > 0;) {
        text.append(part, static_cast<size_t>(count));
    }
    close(channel[0]);
    int status = 0;
    waitpid(child, &status, 0);
    const int ended = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    if (WIFSIGNALED(status)) {
        text = WTERMSIG(status) == SIGALRM
                   ? "did not return within " + std::to_string(secondsAtMost) + " seconds"
                   : std::string("ended the process: ") + strsignal(WTERMSIG(status));
    } else if (ended != right && ended != mistaken) {
        text = "ended the process with " + std::to_string(ended);
    }
    tell(ended == right, name, text);
}

constexpr unsigned char guard = 0xA5;

/** A buffer that begins as the library's does and shows what is written behind its end. */
struct Guarded {
    explicit Guarded(size_t size) : size(size)
    {
        memset(bytes, guard, sizeof bytes);
        memset(bytes, 0, size);
    }
    void requireWithin() const
    {
        for (size_t i = sizeof bytes; i > size; --i) {
            if (bytes[i - 1] != guard) {
                mistake("writes " + std::to_string(i - size) + " bytes beyond its " + std::to_string(size));
                return;
            }
        }
    }
    bool isEmpty() const
    {
        for (size_t i = 0; i < size; ++i) {
            if (bytes[i] != 0) {
                return false;
            }
        }
        return true;
    }
    alignas(16) unsigned char bytes[1024];
    size_t size;
};

template <typename Record>
void checkRecord(const char *name)
{
    check(name, [name] {
        Guarded record(sizeof(Record));
        const int result = find<int(void *)>(name)(record.bytes);
        require(result == 0, "returns " + std::to_string(result) + ", 0 is success");
        require(!record.isEmpty(), "leaves the record as it was");
        record.requireWithin();
    });
}

template <typename Record>
void checkIndexed(const char *name, int count)
{
    check(name, [name, count] {
        for (int i = 0; i < count; ++i) {
            Guarded record(sizeof(Record));
            const int result = find<int(void *, int)>(name)(record.bytes, i);
            require(result == 0, "index " + std::to_string(i) + " returns " + std::to_string(result));
            record.requireWithin();
        }
        Guarded record(sizeof(Record));
        require(find<int(void *, int)>(name)(record.bytes, count) != 0,
                "takes index " + std::to_string(count) + ", which is none");
    });
}

bool isText(const Guarded &text)
{
    return memchr(text.bytes, 0, text.size) != nullptr;
}

void checkRegisters()
{
    check("GetRegisterValue", [] {
        constexpr struct {
            int group, number;
        } registers[] = {{0, 1},  {0, 19}, {0, 20}, {1, 25}, {2, 43},
                         {3, 50}, {3, 54}, {3, 64}, {3, 65}, {7, 119}};
        for (const auto &asked : registers) {
            const std::string which = "register " + std::to_string(asked.number) + ": ";
            Guarded text(REGISTER_TEXT_SIZE);
            const int result =
                ASKED(GetRegisterValue)(asked.number, asked.group, reinterpret_cast<char *>(text.bytes));
            require(result == 0, which + "returns " + std::to_string(result));
            text.requireWithin();
            const std::string value(reinterpret_cast<char *>(text.bytes),
                                    strnlen(reinterpret_cast<char *>(text.bytes), text.size));
            require(isText(text) && !value.empty() &&
                        value.find_first_not_of("-0123456789") == std::string::npos,
                    which + "not a decimal number: '" + value + "'");
        }
    });
}

void checkTexts()
{
    check("GetMonitorStatus", [] { (void)ASKED(GetMonitorStatus)(SPEAR_STATE); });
    check("GetIPAddress", [] {
        Guarded address(IP_ADDRESS_SIZE);
        (void)ASKED(GetIPAddress)(reinterpret_cast<char *>(address.bytes));
        address.requireWithin();
        require(isText(address), "the text has no end");
    });
    check("ParseIPV4Address", [] {
        Guarded octets(4);
        (void)ASKED(ParseIPV4Address)("192.168.10.21", octets.bytes);
        octets.requireWithin();
        constexpr unsigned char right[] = {192, 168, 10, 21};
        require(memcmp(octets.bytes, right, 4) == 0,
                "192.168.10.21 is not 192, 168, 10, 21, first octet first");
    });
    check("ValidateInputArgs", [] {
        for (const int value : {1, 5, 10}) {
            require(ASKED(ValidateInputArgs)(value, 1, 10) == 0,
                    "refuses " + std::to_string(value) + " of 1 to 10");
        }
        for (const int value : {-1, 0, 11}) {
            require(ASKED(ValidateInputArgs)(value, 1, 10) != 0,
                    "takes " + std::to_string(value) + " of 1 to 10");
        }
    });
    check("IsAdminUser", [] {
        Guarded answer(1);
        Guarded text(ERROR_TEXT_SIZE);
        text.bytes[0] = ' ';
        require(ASKED(IsAdminUser)("nobody-of-this-name", reinterpret_cast<char *>(answer.bytes),
                                   reinterpret_cast<char *>(text.bytes)) != 0,
                "knows a user who is not there");
        answer.requireWithin();
        text.requireWithin();
        require(isText(text) && strcmp(reinterpret_cast<char *>(text.bytes), " ") != 0,
                "fails without a text");
    });
    check("ValidateDisplayName",
          [] { require(ASKED(ValidateDisplayName)("Grading 1") == 0, "refuses Grading 1"); });
    check("ValidateDeploymentDate", [] {
        require(ASKED(ValidateDeploymentDate)("05/03/2026") == 0, "refuses 05/03/2026");
        require(ASKED(ValidateDeploymentDate)("2026-03-05") != 0,
                "takes 2026-03-05, which is not DD/MM/YYYY");
    });
}

// ---- name, place and date ----

/** What the three functions change, as texts that they take. */
struct Identity {
    std::string name, place, date;
};
using Member = std::string Identity::*;

template <size_t width>
std::string fieldText(const char (&field)[width])
{
    return {field, strnlen(field, width)};
}

/** For the table: what cannot be printed as a question mark. */
std::string shown(const std::string &value)
{
    std::string text = "'" + value + "'";
    for (char &c : text) {
        c = c < ' ' || c == 0x7f ? '?' : c;
    }
    return text;
}

Identity identity()
{
    Guarded bytes(sizeof(MonitorInfo));
    MonitorInfo info = {};
    require(find<int(void *)>("GetMoinitorInfo")(bytes.bytes) == 0, "GetMoinitorInfo cannot be read");
    memcpy(&info, bytes.bytes, sizeof info);
    const time_t seconds = info.Deployment_Date;
    tm calendar = {};
    gmtime_r(&seconds, &calendar);
    char date[16] = "";
    strftime(date, sizeof date, "%d/%m/%Y", &calendar);
    return {fieldText(info.DisplayName), fieldText(info.DeploymentLocation), date};
}

/** Calls the function with the text. True when it has done its work; a failure without its text is a mistake,
 * and so is a text without a failure. */
bool update(const char *function, const std::string &value)
{
    Guarded text(ERROR_TEXT_SIZE);
    text.bytes[0] = ' ';
    char *errorText = reinterpret_cast<char *>(text.bytes);
    const int result = find<int(const char *, char *)>(function)(value.c_str(), errorText);
    text.requireWithin();
    require(isText(text), "the error text has no end");
    const bool untouched = isText(text) && strcmp(errorText, " ") == 0;
    require(result == 0 || !untouched, "fails without a text");
    require(result != 0 || untouched, "writes an error text and does not fail");
    return result == 0;
}

/** The value must be the one that is read then, and the other two as they were. */
void requireStored(Member member, const std::string &value, Identity before)
{
    const Identity after = identity();
    require(after.*member == value, shown(value) + " is given, " + shown(after.*member) + " is read");
    before.*member = after.*member;
    require(after.name == before.name && after.place == before.place && after.date == before.date,
            "changes another field as well");
}

/** Gives it what stands, then another value, and takes that back. Nothing is changed where what stands is
 * refused. */
void checkUpdate(const char *function, Member member, const std::string &other, bool alsoTooLong)
{
    check(function, [=] {
        const Identity before = identity();
        const std::string value = before.*member;
        if (!update(function, value)) {
            require(value.empty(), "refuses " + shown(value) + ", which stands");
            remark =
                "none stands, and it takes no empty one: no other was tried, which could not be taken back";
            return;
        }
        requireStored(member, value, before);
        require(update(function, other), "refuses " + shown(other));
        requireStored(member, other, before);
        if (alsoTooLong) { // it alone decides which text is acceptable, whatever a client sends
            (void)update(function, std::string(300, 'x'));
            Identity rest = identity();
            rest.*member = before.*member;
            require(rest.name == before.name && rest.date == before.date && rest.place == before.place,
                    "a text of 300 characters changes another field as well");
        }
        require(update(function, value), "does not take " + shown(value) + " back");
        requireStored(member, value, before);
    });
}

void checkUpdates()
{
    checkUpdate("UpdateDisplayName", &Identity::name, "Trial 1", false);
    checkUpdate("UpdateDeploymentDate", &Identity::date, "05/03/2026", false);
    checkUpdate("UpdateDeploymentLocation", &Identity::place, "Trial 2", true);
}

// ---- the queues ----

SpearMessage getRequest(int group)
{
    SpearMessage message = {};
    message.Type = 1;
    message.Data.Cmd = PROCESS_GET_REQUEST;
    message.Data.Source = WSMAN;
    message.Data.Arg.sWebCmd.GroupId = static_cast<uint8_t>(group);
    return message;
}

int receive()
{
    int queue = -1;
    if (ASKED(SpearEngineMessageQueueCreate)(MSG_QUEUE_WSMAN, &queue) != 0) {
        return -1;
    }
    return ASKED(RecvMessageFromSource)(SpearMessage(), queue);
}

bool exchanged(int group)
{
    int queue = -1;
    return ASKED(SpearEngineMessageQueueCreate)(MSG_QUEUE_SPEAR_APP, &queue) == 0 &&
           ASKED(SendStatusMessagetoSource)(getRequest(group), queue) == 0 && receive() == 0;
}

void checkQueues()
{
    check("SpearEngineMessageQueueCreate", [] {
        for (const int number : {static_cast<int>(MSG_QUEUE_SPEAR_APP), static_cast<int>(MSG_QUEUE_WSMAN)}) {
            int queue = -1;
            const int result = ASKED(SpearEngineMessageQueueCreate)(number, &queue);
            require(result == 0, "queue " + std::to_string(number) + " returns " + std::to_string(result));
            require(queue >= 0, "queue " + std::to_string(number) + " gets no identifier");
        }
    });
    check("SendStatusMessagetoSource", [] {
        int queue = -1;
        require(ASKED(SpearEngineMessageQueueCreate)(MSG_QUEUE_SPEAR_APP, &queue) == 0 &&
                    ASKED(SendStatusMessagetoSource)(getRequest(IMAGE_ADJ_SETTINGS_ID), queue) == 0,
                "a get request is not taken");
        (void)receive(); // nothing stays behind for the next check
    });
    check("RecvMessageFromSource",
          [] { require(exchanged(IMAGE_ADJ_SETTINGS_ID), "a get request is not answered"); });
    check("two callers at once", [] {
        int failed[2] = {};
        const auto caller = [&failed](int number) {
            for (int i = 0; i < 50; ++i) {
                failed[number] += exchanged(number == 0 ? IMAGE_ADJ_SETTINGS_ID : PIP_INFO_ID) ? 0 : 1;
            }
        };
        std::thread other(caller, 1);
        caller(0);
        other.join();
        require(failed[0] + failed[1] == 0,
                std::to_string(failed[0] + failed[1]) + " of 100 got no reply of their own");
    });
    check("a reply is its caller's", [] {
        int queue = -1;
        require(ASKED(SpearEngineMessageQueueCreate)(MSG_QUEUE_SPEAR_APP, &queue) == 0 &&
                    ASKED(SendStatusMessagetoSource)(getRequest(IMAGE_ADJ_SETTINGS_ID), queue) == 0,
                "a get request is not taken");
        int others = -1;
        std::thread([&others] { others = receive(); }).join();
        require(others != 0, "a caller who asked for nothing was handed it");
    });
}

void checkAll()
{
    checkRecord<MonitorInfo>("GetMoinitorInfo");
    checkRecord<ManagementInfo>("GetDisplayManagementInfo");
    checkRecord<ImageAdjustment>("GetImageAdjustmentInfo");
    checkRecord<PexalPIPSettings>("GetPIPSettingsInfo");
    checkRecord<OSDMenuAndMessageInfo>("GetOSDMenuAndMessagesInfo");
    checkRecord<BezelButtonInfo>("GetBezelButtonInfo");
    checkRecord<TestPatternInfo>("GetTestPatternInfo");
    checkRecord<RemoteManagementServer>("GetRemoteManagementServerInfo");
    checkIndexed<ColorSpaceInfo>("GetColorSpaceInfoById", 7);
    checkIndexed<FunctionButtonInfo>("GetFunctionButtonInfoById", 4);
    checkRegisters();
    checkTexts();
    checkUpdates();
    checkQueues();
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        fprintf(stderr, "usage: try SECONDS LIBRARY FUNCTION...\n");
        return 2;
    }
    secondsAtMost = static_cast<unsigned>(atoi(argv[1]));
    library = dlopen(argv[2], RTLD_NOW);
    if (library == nullptr) {
        fprintf(stderr, "try-support-library: %s\n", dlerror());
        return 1;
    }
    for (int i = 3; i < argc; ++i) {
        if (dlsym(library, argv[i]) == nullptr) {
            tell(false, argv[i], "is not there: what is asked of it cannot be tried");
        }
    }
    if (wrong == 0) {
        checkAll();
    }
    printf("%s\n", wrong == 0 ? "All right." : (std::to_string(wrong) + " WRONG.").c_str());
    return wrong == 0 ? 0 : 1;
}
