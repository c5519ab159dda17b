// SPDX-License-Identifier: Apache-2.0
#include "support/changes.h"

#include "support/dates.h"
#include "support/environment.h"
#include "support/kernel_objects.h"
#include "support/store.h"
#include "support/usage_error.h"
#include "support/values.h"

#include <sys/ipc.h>
#include <sys/msg.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace desk
{

namespace
{

void change(const std::function<void(Contents &)> &edit)
{
    Store(storePath()).change([&](Contents &contents) {
        edit(contents);
        return true;
    });
}

} // namespace

void setSetting(const std::string &name, std::string value)
{
    if (const auto seconds = name == "deployment_date" ? dateSeconds(value) : std::nullopt) {
        value = std::to_string(*seconds);
    }
    const int place = findSetting(name);
    if (place < 0) {
        throw UsageError("there is no setting " + name + "; see desk-monitor show settings");
    }
    const Key key(static_cast<std::size_t>(place));
    if (const std::string wrong = complaint(key.row(), value); !wrong.empty()) {
        throw UsageError(name + ": " + value + " " + wrong);
    }
    change([&](Contents &contents) { contents.settings.set(key, value); });
}

std::string faultList()
{
    std::string list;
    for (const FaultRow &row : faultRows()) {
        const std::string argument = row.argument.empty() ? "" : " [" + std::string(row.argument) + "]";
        list += "\n  " + std::string(row.name) + argument + ": " + std::string(row.meaning);
    }
    return list;
}

void switchFault(const std::string &name, const std::string &state, const std::string &argument)
{
    if (name == "clear") {
        if (!state.empty()) {
            throw UsageError("fault clear takes no argument");
        }
        change([](Contents &contents) { contents.faults.clear(); });
        return;
    }
    if (findFault(name) == nullptr) {
        throw UsageError("there is no fault " + name + "; the faults are:" + faultList());
    }
    if (state != "on" && state != "off") {
        throw UsageError("a fault is switched on or off");
    }
    std::string wrong;
    change([&](Contents &contents) {
        wrong = desk::switchFault(contents.faults, name, state == "on", argument);
    });
    if (!wrong.empty()) {
        throw UsageError(wrong);
    }
}

void addUser(const std::string &name, bool administrator)
{
    if (name.empty() || !printable(name)) {
        throw UsageError("that is no name of a user");
    }
    change([&](Contents &contents) { contents.users[name] = administrator; });
}

void removeUser(const std::string &name)
{
    bool known = false;
    change([&](Contents &contents) { known = contents.users.erase(name) > 0; });
    if (!known) {
        throw UsageError("there is no user " + name);
    }
}

void resetSettings()
{
    change([](Contents &contents) { contents.settings = Settings(); });
}

void removeQueues()
{
    const std::optional<key_t> key = queueBaseKey();
    if (!key) {
        throw UsageError("DESK_MONITOR_QUEUE_KEY holds no usable key");
    }
    removeSharedMemory(*key);
    EnginePlace::removeUnused(*key);
    // The requests' last: an engine that waits there makes all of them again.
    std::string removed;
    for (int queue = queueCount - 1; queue >= 0; --queue) {
        const int identifier = msgget(*key + queue, 0);
        if (identifier == -1 && errno == ENOENT) {
            continue;
        }
        if (identifier == -1 || msgctl(identifier, IPC_RMID, nullptr) == -1) {
            throw std::runtime_error("queue " + std::to_string(queue) + ": " + strerror(errno));
        }
        removed.insert(0, "queue " + std::to_string(queue) + " removed\n");
    }
    printf("%s", removed.c_str());
}

} // namespace desk
