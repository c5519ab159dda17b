// SPDX-License-Identifier: Apache-2.0
// Many callers at once: the library, the support library, real queues and a real engine. Each caller has a
// setting of its own, which it changes by a method of the library and reads again.
#include "desk_fixture.h"

#include "support/board.h"

#include "null_broker.h"

#include <monitor_support.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <iterator>
#include <thread>

#define METHOD_FACTORY(Class)                                                                                \
    extern "C" CMPIMethodMI *ZT_Marovelton_##Class##_Create_MethodMI(const CMPIBroker *,                     \
                                                                     const CMPIContext *, CMPIStatus *)
METHOD_FACTORY(FunctionButton);
METHOD_FACTORY(BezelButton);
METHOD_FACTORY(OSDMenuAndMessages);
METHOD_FACTORY(ColorSpace);
extern "C" CMPIInstanceMI *ZT_Marovelton_Monitor_Create_InstanceMI(const CMPIBroker *, const CMPIContext *,
                                                                   CMPIStatus *);

namespace
{

using bench::Argument;
using bench::broker;
using bench::Path;
using bench::Result;

struct Setting {
    const char *className;
    const char *instance;
    const char *method;
    CMPIMethodMI *(*factory)(const CMPIBroker *, const CMPIContext *, CMPIStatus *);
    int registerId;
    int group;
    int lowest, step, values;
};

constexpr Setting settings[] = {
    {"ZT_Marovelton_FunctionButton", "ZT:Marovelton_FunctionButton:1", "SetSetting",
     ZT_Marovelton_FunctionButton_Create_MethodMI, 115, 7, 1, 1, 17},
    {"ZT_Marovelton_FunctionButton", "ZT:Marovelton_FunctionButton:2", "SetSetting",
     ZT_Marovelton_FunctionButton_Create_MethodMI, 116, 7, 1, 1, 17},
    {"ZT_Marovelton_FunctionButton", "ZT:Marovelton_FunctionButton:3", "SetSetting",
     ZT_Marovelton_FunctionButton_Create_MethodMI, 117, 7, 1, 1, 17},
    {"ZT_Marovelton_FunctionButton", "ZT:Marovelton_FunctionButton:4", "SetSetting",
     ZT_Marovelton_FunctionButton_Create_MethodMI, 118, 7, 1, 1, 17},
    {"ZT_Marovelton_BezelButton", "ZT:Marovelton_BezelButton", "SetButtonColor",
     ZT_Marovelton_BezelButton_Create_MethodMI, 120, 8, 0, 1, 3},
    {"ZT_Marovelton_BezelButton", "ZT:Marovelton_BezelButton", "SetButtonBrightness",
     ZT_Marovelton_BezelButton_Create_MethodMI, 121, 8, 0, 2, 11},
    {"ZT_Marovelton_OSDMenuAndMessages", "ZT:Marovelton_OSDMenuAndMessages", "SetMenuAndMessageTimeOut",
     ZT_Marovelton_OSDMenuAndMessages_Create_MethodMI, 107, 6, 5, 1, 26},
    {"ZT_Marovelton_ColorSpace", "ZT:Marovelton_ColorSpace:1", "SetDisplayLuminance",
     ZT_Marovelton_ColorSpace_Create_MethodMI, 0, 0, 48, 1, 203},
};

/** What an object manager holds of the library: it calls the factories once. */
struct Providers {
    CMPIMethodMI *methods[std::size(settings)];
    CMPIInstanceMI *monitor;

    Providers() : monitor(ZT_Marovelton_Monitor_Create_InstanceMI(&broker, &bench::context, nullptr))
    {
        for (std::size_t i = 0; i < std::size(settings); ++i) {
            methods[i] = settings[i].factory(&broker, &bench::context, nullptr);
        }
    }
};

/** Makes so many calls, half of them changes and half of them reads, which ask the engine twice. What was
 * wrong is counted, and said. */
int call(const Setting &setting, CMPIMethodMI *methods, CMPIInstanceMI *reader, int calls)
{
    const Path object(setting.className, {{"InstanceID", setting.instance}});
    const Path monitor("ZT_Marovelton_Monitor", {{"DeviceID", "ZT:Marovelton_Monitor"},
                                                 {"CreationClassName", "ZT_Marovelton_Monitor"},
                                                 {"SystemName", "192.168.10.20"},
                                                 {"SystemCreationClassName", "Linux_ComputerSystem"}});
    int wrong = 0;
    for (int i = 0; i < calls / 2; ++i) {
        const std::string value = std::to_string(setting.lowest + setting.step * (i % setting.values));
        const Argument argument(value.c_str());
        Result changed;
        const CMPIStatus change = methods->ft->invokeMethod(methods, &bench::context, changed, object,
                                                            setting.method, argument, nullptr);
        if (change.rc != CMPI_RC_OK || changed.data.uint32 != 0) {
            const std::string_view text = bench::messageOf(change);
            fprintf(stderr, "%s %s: %.*s\n", setting.instance, setting.method, static_cast<int>(text.size()),
                    text.data());
            ++wrong;
        }
        Result read;
        const CMPIStatus got = reader->ft->getInstance(reader, &bench::context, read, monitor, nullptr);
        char stored[REGISTER_TEXT_SIZE] = "";
        if (got.rc != CMPI_RC_OK || read.instances != 1 ||
            GetRegisterValue(setting.registerId, setting.group, stored) != SUCCESS || value != stored) {
            const std::string_view text = bench::messageOf(got);
            fprintf(stderr, "%s %s: %s was written, %s is read; %.*s\n", setting.instance, setting.method,
                    value.c_str(), stored, static_cast<int>(text.size()), text.data());
            ++wrong;
        }
    }
    return wrong;
}

/** As many threads as settings from the first on, each with its own; how many calls were wrong. */
int callFromThreads(std::size_t first, std::size_t count, int calls)
{
    const Providers providers;
    std::vector<std::thread> threads;
    std::vector<int> wrong(count);
    for (std::size_t i = 0; i < count; ++i) {
        threads.emplace_back([&, i] {
            wrong[i] = call(settings[first + i], providers.methods[first + i], providers.monitor, calls);
        });
    }
    int sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        threads[i].join();
        sum += wrong[i];
    }
    return sum;
}

/** The library tells every call on standard output. */
class Quiet
{
  public:
    Quiet() : before_(dup(STDOUT_FILENO))
    {
        fflush(stdout);
        const int nothing = open("/dev/null", O_WRONLY);
        dup2(nothing, STDOUT_FILENO);
        close(nothing);
    }
    ~Quiet()
    {
        fflush(stdout);
        dup2(before_, STDOUT_FILENO);
        close(before_);
    }

  private:
    int before_;
};

class Threads : public DeskTest
{
  protected:
    static constexpr int calls = 20'000;

    void SetUp() override
    {
        DeskTest::SetUp();
        setenv("DESK_MONITOR_RECEIVE_TIMEOUT", "120", 1); // however busy the machine is
        startEngine();
    }
    void expectNothingLeft()
    {
        EXPECT_EQ(waiting(0), 0u);
        EXPECT_EQ(waiting(3), 0u);
        desk::Board board(queueKey);
        for (std::size_t i = 0; i < desk::Board::ticketCount; ++i) {
            EXPECT_NE(board.open(), desk::noTicket) << "a ticket was not given back";
        }
    }
};

TEST_F(Threads, OfOneProcessEachGetTheirOwnReplies)
{
    {
        const Quiet quiet;
        EXPECT_EQ(callFromThreads(0, 8, calls / 8), 0);
    }
    expectNothingLeft();
}

TEST_F(Threads, OfFourProcessesEachGetTheirOwnReplies)
{
    std::vector<pid_t> processes;
    for (int first = 0; first < 8; first += 2) {
        processes.push_back(
            startProgram({"/proc/self/exe", "--callers", std::to_string(first), std::to_string(calls / 8)},
                         directory + "/callers.log"));
    }
    for (const pid_t process : processes) {
        EXPECT_EQ(endOf(process), 0);
    }
    EXPECT_EQ(contentOf(directory + "/callers.log"), "");
    expectNothingLeft();
}

/* While some give up and others are answered: who is refused finds its setting as it was, who is not as it
 * wrote it. */
TEST_F(Threads, AreRefusedOrServedAndNothingBetween)
{
    const auto exchange = [](const Setting &setting, int value) {
        SpearMessage message{};
        message.Type = 1;
        message.Data.Cmd = PROCESS_SET_REQUEST;
        message.Data.Source = WSMAN;
        message.Data.Arg.sWebCmd.Count = 1;
        message.Data.Arg.sWebCmd.GroupId = static_cast<std::uint8_t>(setting.group);
        message.Data.Arg.sWebCmd.sRegdetails[0].Register = static_cast<std::uint8_t>(setting.registerId);
        message.Data.Arg.sWebCmd.sRegdetails[0].RegisterValue.Value = static_cast<std::int16_t>(value);
        int queue = -1;
        return SpearEngineMessageQueueCreate(MSG_QUEUE_SPEAR_APP, &queue) == 0 &&
               SendStatusMessagetoSource(message, queue) == 0 &&
               SpearEngineMessageQueueCreate(MSG_QUEUE_WSMAN, &queue) == 0 &&
               RecvMessageFromSource(SpearMessage{}, queue) == 0;
    };
    setenv("DESK_MONITOR_RECEIVE_TIMEOUT", "0.003", 1);
    ASSERT_EQ(command("fault slow on 0.0005"), 0);
    std::vector<std::thread> threads;
    std::vector<int> served(8), refused(8), wrong(8);
    for (std::size_t t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            const Setting &setting = settings[t];
            std::string known = registerText(setting.registerId, setting.group);
            for (int i = 0; i < 100; ++i) {
                const int value = setting.lowest + setting.step * (i % setting.values);
                const bool success = exchange(setting, value);
                ++(success ? served : refused)[t];
                if (success) {
                    known = std::to_string(value);
                }
                wrong[t] += registerText(setting.registerId, setting.group) != known;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, std::vector<int>(8));
    int all = 0;
    for (std::size_t t = 0; t < 8; ++t) {
        all += served[t] + refused[t];
    }
    EXPECT_EQ(all, 800);
    ASSERT_EQ(command("fault clear"), 0);
    setenv("DESK_MONITOR_RECEIVE_TIMEOUT", "120", 1);
    EXPECT_TRUE(exchange(settings[0], 9));
    expectNothingLeft();
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == 4 && strcmp(argv[1], "--callers") == 0) {
        return callFromThreads(static_cast<std::size_t>(std::stoi(argv[2])), 2, std::stoi(argv[3])) == 0 ? 0
                                                                                                         : 1;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
