/* The command of the desk monitor: shows and changes what the support library and the engine work with. */
#include "support/dates.h"
#include "support/environment.h"
#include "support/store.h"

#include <CLI/CLI.hpp>

#include <sys/ipc.h>
#include <sys/msg.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

using namespace desk;

namespace
{

/* A mistake of the one who gave the command. */
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

Store openStore()
{
    makeStoreDirectory();
    return Store(storePath());
}

/* ---- show ---- */

void showSettings(const Contents &contents, std::string_view part)
{
    printf("%-32s %8s %5s  %-24s %s\n", "setting", "register", "group", "value", "accepted");
    const Settings factory;
    for (std::size_t i = 0; i < std::size(SettingRows); ++i) {
        const SettingRow &row = SettingRows[i];
        if (row.name.find(part) == row.name.npos)
            continue;
        const Key key(i);
        std::string value = contents.settings.text(key);
        if (key == Key("deployment_date"))
            value = dateText(contents.settings.number(key));
        const bool changed = contents.settings.text(key) != factory.text(key);
        const std::string reg = row.registerId == NoRegister ? "-" : std::to_string(row.registerId);
        const std::string group = row.registerId == NoRegister ? "-" : std::to_string(row.group);
        std::string accepted;
        if (row.kind == Kind::Number && key != Key("deployment_date"))
            accepted = std::to_string(row.minimum) + ".." + std::to_string(row.maximum) +
                       (row.step > 1 ? " by " + std::to_string(row.step) : "");
        printf("%-32s %8s %5s %c%-24s %s\n", std::string(row.name).c_str(), reg.c_str(), group.c_str(),
               changed ? '*' : ' ', value.c_str(), accepted.c_str());
    }
    printf("* differs from the factory value\n");
}

void showPresets(const Contents &contents)
{
    const Settings &s = contents.settings;
    printf("%-2s %-15s %9s %10s %6s  %-15s %-15s %-15s %-15s\n", "", "preset", "luminance", "calibrated",
           "gamma", "red x,y", "green x,y", "blue x,y", "white x,y");
    for (int i = 0; i < PresetCount; ++i) {
        const auto pair = [&](PresetField x, PresetField y) {
            return s.text(presetKey(i, x)) + "," + s.text(presetKey(i, y));
        };
        printf("%c%d %-15s %9d %10d %6s  %-15s %-15s %-15s %-15s\n", i == s.activePreset() ? '>' : ' ', i + 1,
               s.text(presetKey(i, PresetName)).c_str(), s.number(presetKey(i, PresetLuminance)),
               s.number(presetKey(i, PresetCalibratedLuminance)), s.text(presetKey(i, PresetGamma)).c_str(),
               pair(RedX, RedY).c_str(), pair(GreenX, GreenY).c_str(), pair(BlueX, BlueY).c_str(),
               pair(WhiteX, WhiteY).c_str());
    }
}

void showFaults(const Contents &contents)
{
    for (const FaultRow &row : FaultRows) {
        const auto on = contents.faults.find(row.name);
        const std::string state = on == contents.faults.end() ? "off" : "on " + on->second;
        printf("%-13s %-24s %s\n", std::string(row.name).c_str(), state.c_str(),
               std::string(row.meaning).c_str());
    }
}

void showUsers(const Contents &contents)
{
    for (const auto &[name, administrator] : contents.users)
        printf("%-24s %s\n", name.c_str(), administrator ? "administrator" : "user");
}

void showQueues()
{
    const std::optional<key_t> key = queueBaseKey();
    if (!key)
        throw UsageError("DESK_MONITOR_QUEUE_KEY holds no usable key");
    static constexpr const char *uses[QueueCount] = {"requests to the engine", "not used", "not used",
                                                     "replies"};
    for (int queue = 0; queue < QueueCount; ++queue) {
        const key_t own = *key + queue;
        msqid_ds state;
        const int identifier = msgget(own, 0);
        if (identifier == -1 || msgctl(identifier, IPC_STAT, &state) == -1)
            printf("queue %d, key 0x%08x: none yet (%s)\n", queue, static_cast<unsigned>(own), uses[queue]);
        else
            printf("queue %d, key 0x%08x: %lu messages (%s)\n", queue, static_cast<unsigned>(own),
                   static_cast<unsigned long>(state.msg_qnum), uses[queue]);
    }
}

void show(const std::string &what)
{
    Store store = openStore();
    const Contents &contents = store.read();
    const bool all = what.empty();
    const auto title = [&](const char *text) {
        if (all)
            printf("\n== %s\n", text);
    };
    if (all)
        printf("store %s\n", store.path().c_str());
    bool known = all;
    if (all || what == "settings") {
        title("settings");
        showSettings(contents, "");
        known = true;
    }
    if (all || what == "presets") {
        title("colour-space presets");
        showPresets(contents);
        known = true;
    }
    if (all || what == "faults") {
        title("faults");
        showFaults(contents);
        known = true;
    }
    if (all || what == "users") {
        title("users");
        showUsers(contents);
        known = true;
    }
    if (all || what == "queues") {
        title("queues");
        showQueues();
        known = true;
    }
    if (known)
        return;
    if (const int place = findSetting(what); place >= 0) {
        printf("%s\n", contents.settings.text(Key(static_cast<std::size_t>(place))).c_str());
        return;
    }
    bool part = false;
    for (const SettingRow &row : SettingRows)
        part = part || row.name.find(what) != row.name.npos;
    if (!part)
        throw UsageError("nothing is called " + what);
    showSettings(contents, what);
}

/* ---- changes ---- */

void set(const std::string &name, std::string value)
{
    if (const auto seconds = name == "deployment_date" ? dateSeconds(value) : std::nullopt)
        value = std::to_string(*seconds);
    const int place = findSetting(name);
    if (place < 0)
        throw UsageError("there is no setting " + name + "; see desk-monitor show settings");
    const SettingRow &row = allSettings()[static_cast<std::size_t>(place)];
    if (const std::string wrong = complaint(row, value); !wrong.empty())
        throw UsageError(name + ": " + value + " " + wrong);
    openStore().change([&](Contents &contents) {
        contents.settings.set(Key(static_cast<std::size_t>(place)), value);
        return true;
    });
}

std::string faultNames()
{
    std::string names;
    for (const FaultRow &row : FaultRows)
        names += "\n  " + std::string(row.name) +
                 (row.argument.empty() ? "" : " [" + std::string(row.argument) + "]") + ": " +
                 std::string(row.meaning);
    return names;
}

/* The functions that can be told by name to fail. */
constexpr std::string_view Functions[] = {
    "GetMoinitorInfo",        "GetRegisterValue",     "GetDisplayManagementInfo",
    "GetImageAdjustmentInfo", "GetPIPSettingsInfo",   "GetOSDMenuAndMessagesInfo",
    "GetColorSpaceInfoById",  "GetBezelButtonInfo",   "GetFunctionButtonInfoById",
    "GetTestPatternInfo",     "GetIPAddress",         "GetRemoteManagementServerInfo",
    "UpdateDisplayName",      "UpdateDeploymentDate", "UpdateDeploymentLocation",
};

void checkFunctions(const std::string &list, std::string_view kind)
{
    for (const std::string &name : CLI::detail::split(list, ',')) {
        const bool known = std::find(std::begin(Functions), std::end(Functions), name) != std::end(Functions);
        if (!known || !name.starts_with(kind))
            throw UsageError("no function " + std::string(kind) + "... is called " + name);
    }
}

void checkFaultArgument(const FaultRow &row, const std::string &argument)
{
    if (row.argument.empty() && !argument.empty())
        throw UsageError(std::string(row.name) + " takes no argument");
    if (row.argument == "seconds") {
        double seconds = 0;
        if (!parseSeconds(argument, seconds) || seconds > 3600)
            throw UsageError(argument + " is no number of seconds from 0 to 3600");
    }
    if (row.argument == "functions" && !argument.empty())
        checkFunctions(argument, row.name == "fail-read" ? "Get" : "Update");
    int count = 0;
    if (row.argument == "count" && (!parseNumber(argument, count) || count < 1))
        throw UsageError(argument + " is no number of replies");
    if (row.argument == "queue" && !argument.empty() &&
        (!parseNumber(argument, count) || count < 0 || count >= QueueCount))
        throw UsageError(argument + " is no queue");
}

void fault(const std::string &name, const std::string &state, std::string argument)
{
    if (name == "clear") {
        if (!state.empty())
            throw UsageError("fault clear takes no argument");
        openStore().change([](Contents &contents) {
            contents.faults.clear();
            return true;
        });
        return;
    }
    const FaultRow *row = findFault(name);
    if (row == nullptr)
        throw UsageError("there is no fault " + name + "; the faults are:" + faultNames());
    if (state != "on" && state != "off")
        throw UsageError("a fault is switched on or off");
    if (state == "on" && argument.empty())
        argument = row->defaultArgument;
    if (state == "on")
        checkFaultArgument(*row, argument);
    openStore().change([&](Contents &contents) {
        contents.faults.erase(name);
        if (state == "on")
            contents.faults[name] = argument;
        return true;
    });
}

void addUser(const std::string &name, bool administrator)
{
    if (name.empty() || !printable(name))
        throw UsageError("that is no name of a user");
    openStore().change([&](Contents &contents) {
        contents.users[name] = administrator;
        return true;
    });
}

void removeUser(const std::string &name)
{
    bool known = false;
    openStore().change([&](Contents &contents) { return known = contents.users.erase(name) > 0; });
    if (!known)
        throw UsageError("there is no user " + name);
}

void reset()
{
    openStore().change([](Contents &contents) {
        contents.settings = Settings();
        return true;
    });
}

void removeQueues()
{
    const std::optional<key_t> key = queueBaseKey();
    if (!key)
        throw UsageError("DESK_MONITOR_QUEUE_KEY holds no usable key");
    for (int queue = 0; queue < QueueCount; ++queue) {
        const int identifier = msgget(*key + queue, 0);
        if (identifier == -1 && errno == ENOENT)
            continue;
        if (identifier == -1 || msgctl(identifier, IPC_RMID, nullptr) == -1)
            throw std::runtime_error("queue " + std::to_string(queue) + ": " + strerror(errno));
        printf("queue %d removed\n", queue);
    }
}

} // namespace

int main(int argc, char **argv)
{
    CLI::App app{"Shows and changes the desk monitor: its settings, users and faults.\n"
                 "Every change is seen at once by all processes that use the same store."};
    app.require_subcommand(1);
    std::string storeOption, queueKey;
    app.add_option("--store", storeOption, "path of the settings store (default: $DESK_MONITOR_STORE)");
    app.add_option("--queue-key", queueKey,
                   "base key of the message queues, decimal or 0x... (default: $DESK_MONITOR_QUEUE_KEY)");

    std::string what, name, value, state, argument;
    bool administrator = false;

    CLI::App *showCommand = app.add_subcommand("show", "print what the monitor holds");
    showCommand->add_option(
        "what", what,
        "settings, presets, faults, users, queues, a setting's name (prints its value alone) or a\n"
        "part of one; everything when left out");

    CLI::App *setCommand = app.add_subcommand("set", "change a setting, read-only ones included");
    setCommand->add_option("setting", name, "name as show settings lists it; presets: preset1.luminance ...")
        ->required();
    setCommand
        ->add_option("value", value,
                     "the new value; deployment_date: DD/MM/YYYY, or seconds since 1970-01-01 UTC")
        ->required();

    CLI::App *faultCommand =
        app.add_subcommand("fault", "let the monitor misbehave, for tests and demonstrations");
    faultCommand->footer(
        "Faults:" + faultNames() +
        "\n\nExamples:\n  desk-monitor fault busy on\n"
        "  desk-monitor fault slow on 0.5\n  desk-monitor fault fail-read on GetColorSpaceInfoById\n"
        "  desk-monitor fault clear");
    faultCommand->add_option("name", name, "a fault, or clear: switches all off")->required();
    faultCommand->add_option("state", state, "on or off");
    faultCommand->add_option("argument", argument, "what the fault takes");

    CLI::App *userCommand = app.add_subcommand("user", "users whom the monitor knows");
    userCommand->require_subcommand(1);
    CLI::App *userAdd = userCommand->add_subcommand("add", "add a user, or change one");
    userAdd->add_option("name", name, "the user's name")->required();
    userAdd->add_flag("--administrator", administrator, "may do what administrators alone may");
    CLI::App *userRemove = userCommand->add_subcommand("remove", "remove a user");
    userRemove->add_option("name", name, "the user's name")->required();

    CLI::App *resetCommand = app.add_subcommand("reset", "restore all factory values; users and faults stay");

    CLI::App *queuesCommand = app.add_subcommand("queues", "the message queues");
    queuesCommand->require_subcommand(1);
    CLI::App *queuesRemove =
        queuesCommand->add_subcommand("remove", "remove the queues and what waits on them");

    CLI11_PARSE(app, argc, argv);
    if (!storeOption.empty())
        setenv("DESK_MONITOR_STORE", storeOption.c_str(), 1);
    if (!queueKey.empty())
        setenv("DESK_MONITOR_QUEUE_KEY", queueKey.c_str(), 1);

    try {
        if (*showCommand)
            show(what);
        else if (*setCommand)
            set(name, value);
        else if (*faultCommand)
            fault(name, state, argument);
        else if (*userAdd)
            addUser(name, administrator);
        else if (*userRemove)
            removeUser(name);
        else if (*resetCommand)
            reset();
        else if (*queuesRemove)
            removeQueues();
    } catch (const UsageError &error) {
        fprintf(stderr, "desk-monitor: %s\n", error.what());
        return 2;
    } catch (const std::exception &error) {
        fprintf(stderr, "desk-monitor: %s\n", error.what());
        return 1;
    }
    return 0;
}
