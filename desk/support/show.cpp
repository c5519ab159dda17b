// SPDX-License-Identifier: Apache-2.0
#include "support/show.h"

#include "support/dates.h"
#include "support/environment.h"
#include "support/store.h"
#include "support/usage_error.h"

#include <sys/ipc.h>
#include <sys/msg.h>

#include <algorithm>
#include <cstdio>
#include <span>
#include <vector>

namespace desk
{

namespace
{

int width(std::string_view text)
{
    return static_cast<int>(text.size());
}

std::string acceptedValues(Key key)
{
    const SettingRow &row = key.row();
    if (row.kind != Kind::number || key == Key("deployment_date")) {
        return {};
    }
    const std::string step = row.step > 1 ? " by " + std::to_string(row.step) : "";
    return std::to_string(row.minimum) + ".." + std::to_string(row.maximum) + step;
}

void showRows(const Contents &contents, const std::vector<Key> &keys)
{
    static const Settings factory;
    printf("%-32s %8s %5s  %-24s %s\n", "setting", "register", "group", "value", "accepted");
    for (const Key key : keys) {
        const SettingRow &row = key.row();
        std::string value(contents.settings.text(key));
        if (key == Key("deployment_date")) {
            value = dateText(contents.settings.number(key));
        }
        const bool changed = contents.settings.text(key) != factory.text(key);
        const std::string reg = row.registerId == noRegister ? "-" : std::to_string(row.registerId);
        const std::string group = row.registerId == noRegister ? "-" : std::to_string(row.group);
        printf("%-32s %8s %5s %c%-24s %s\n", std::string(row.name).c_str(), reg.c_str(), group.c_str(),
               changed ? '*' : ' ', value.c_str(), acceptedValues(key).c_str());
    }
    printf("* differs from the factory value\n");
}

void showSettings(const Contents &contents)
{
    std::vector<Key> keys;
    for (std::size_t i = 0; i < plainCount; ++i) {
        keys.emplace_back(i);
    }
    showRows(contents, keys);
}

void showPresets(const Contents &contents)
{
    const Settings &s = contents.settings;
    printf("%-2s %-15s %9s %10s %6s  %-15s %-15s %-15s %-15s\n", "", "preset", "luminance", "calibrated",
           "gamma", "red x,y", "green x,y", "blue x,y", "white x,y");
    for (int i = 0; i < presetCount; ++i) {
        const auto text = [&](Field field) { return std::string(s.text(presetKey(i, field))); };
        const auto pair = [&](Field x, Field y) { return text(x) + "," + text(y); };
        printf("%c%d %-15s %9d %10d %6s  %-15s %-15s %-15s %-15s\n", i == s.activePreset() ? '>' : ' ', i + 1,
               text("name").c_str(), s.number(presetKey(i, "luminance")),
               s.number(presetKey(i, "calibrated_luminance")), text("gamma").c_str(),
               pair("red_x", "red_y").c_str(), pair("green_x", "green_y").c_str(),
               pair("blue_x", "blue_y").c_str(), pair("white_x", "white_y").c_str());
    }
}

void showFaults(const Contents &contents)
{
    for (const FaultRow &row : faultRows()) {
        const auto on = contents.faults.find(row.name);
        const std::string state = on == contents.faults.end() ? "off" : "on " + on->second;
        printf("%-13.*s %-24s %.*s\n", width(row.name), row.name.data(), state.c_str(), width(row.meaning),
               row.meaning.data());
    }
}

void showUsers(const Contents &contents)
{
    for (const auto &[name, administrator] : contents.users) {
        printf("%-24s %s\n", name.c_str(), administrator ? "administrator" : "user");
    }
}

void showQueues(const Contents &)
{
    const std::optional<key_t> key = queueBaseKey();
    if (!key) {
        throw UsageError("DESK_MONITOR_QUEUE_KEY holds no usable key");
    }
    static constexpr const char *uses[queueCount] = {"requests to the engine", "not used", "not used",
                                                     "replies"};
    for (int queue = 0; queue < queueCount; ++queue) {
        const key_t own = *key + queue;
        msqid_ds state;
        const int identifier = msgget(own, 0);
        if (identifier == -1 || msgctl(identifier, IPC_STAT, &state) == -1) {
            printf("queue %d, key 0x%08x: none yet (%s)\n", queue, static_cast<unsigned>(own), uses[queue]);
        } else {
            printf("queue %d, key 0x%08x: %lu messages (%s)\n", queue, static_cast<unsigned>(own),
                   static_cast<unsigned long>(state.msg_qnum), uses[queue]);
        }
    }
}

/** What can be shown by a name of its own. */
struct Part {
    std::string_view name;
    const char *title;
    void (*print)(const Contents &);
};

constexpr Part parts[] = {
    {"settings", "settings", showSettings}, {"presets", "colour-space presets", showPresets},
    {"faults", "faults", showFaults},       {"users", "users", showUsers},
    {"queues", "queues", showQueues},
};

std::vector<Key> settingsWith(std::string_view text)
{
    std::vector<Key> keys;
    for (const SettingRow &row : settingRows) {
        if (row.name.find(text) != row.name.npos) {
            keys.push_back(keyOf(row));
        }
    }
    return keys;
}

} // namespace

void show(const std::string &what)
{
    Store store(storePath());
    const Contents &contents = store.read();
    if (what.empty()) {
        printf("store %s\n", store.path().c_str());
        for (const Part &part : parts) {
            printf("\n== %s\n", part.title);
            part.print(contents);
        }
        return;
    }
    const Part *part = std::find_if(std::begin(parts), std::end(parts),
                                    [&](const Part &candidate) { return candidate.name == what; });
    if (part != std::end(parts)) {
        part->print(contents);
        return;
    }
    if (const int place = findSetting(what); place >= 0) {
        const std::string_view value = contents.settings.text(Key(static_cast<std::size_t>(place)));
        printf("%.*s\n", width(value), value.data());
        return;
    }
    const std::vector<Key> keys = settingsWith(what);
    if (keys.empty()) {
        throw UsageError("nothing is called " + what + "; there are " + shownParts() +
                         " and the names of settings, or parts of them");
    }
    showRows(contents, keys);
}

std::string shownParts()
{
    std::string names;
    for (const Part &part : parts) {
        names += (names.empty() ? "" : ", ") + std::string(part.name);
    }
    return names;
}

} // namespace desk
