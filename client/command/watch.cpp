// SPDX-License-Identifier: Apache-2.0
// watch: looks again and again, and prints what has changed.
#include "command/settings.h"
#include "model/values.h"
#include "site/pool.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <chrono>
#include <ctime>
#include <iostream>
#include <map>
#include <memory>
#include <thread>

namespace displayctl::command
{

namespace
{

struct Wish {
    std::vector<std::string> patterns;
    double interval = 2;
    unsigned long looks = 0; // 0: until the program is ended
};

struct Difference {
    const model::Setting *setting;
    std::string name; // as it was asked for: preset.active.luminance
    model::Value before;
    model::Value after;
};

/** One monitor under watch. */
struct Watched {
    std::unique_ptr<session::Session> session;
    std::map<std::string, model::Value> known; // by setting; empty before the first look
    session::Outcome outcome = session::Outcome::ok;
    std::string message; // why it cannot be read; empty when it can
    std::string told;    // the last message that was printed
    std::vector<Difference> differences;
};

std::string timeOfDay()
{
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    std::array<char, 16> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%H:%M:%S", &parts)};
}

/** The settings, each once, that can be read; all of the usual ones without patterns. */
std::vector<model::Named> wanted(const std::vector<std::string> &patterns)
{
    std::vector<model::Named> all;
    for (const model::Setting &setting : model::allSettings()) {
        if (patterns.empty() && setting.isReadable() && !setting.has(model::onlyAll)) {
            all.push_back({&setting, false});
        }
    }
    for (const std::string &pattern : patterns) {
        for (const model::Named &named : model::matchPattern(pattern)) {
            if (named.setting->isReadable() && std::ranges::find(all, named) == all.end()) {
                all.push_back(named);
            }
        }
    }
    if (all.empty()) {
        throw model::BadValue("nothing of this can be read from a monitor");
    }
    return all;
}

void writeJson(const Json &document)
{
    std::cout << document.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
}

class Watch
{
  public:
    Watch(Call &call, const Wish &wish)
        : call_(call), wish_(wish), settings_(wanted(wish.patterns)), names_(call.configuration().names),
          watched_(call.monitors().size())
    {
        for (const model::Named &named : settings_) {
            model::addClasses(*named.setting, classes_);
        }
        for (std::size_t i = 0; i < watched_.size(); ++i) {
            watched_[i].session =
                std::make_unique<session::Session>(call.monitors()[i], call.options.timeout());
        }
    }

    /** The exit code after the last look. */
    [[nodiscard]] int run()
    {
        for (unsigned long count = 1;; ++count) {
            site::forEach(
                watched_.size(), call_.options.jobs, [this](std::size_t i) { look(watched_[i]); },
                [this](std::size_t i) { print(call_.monitors()[i].name, watched_[i]); });
            if (count == 1 && !call_.options.quiet) {
                std::cerr << "watching " << settings_.size()
                          << (settings_.size() == 1 ? " setting" : " settings") << " of " << watched_.size()
                          << (watched_.size() == 1 ? " monitor" : " monitors") << "; Ctrl-C ends it\n";
            }
            if (count == wish_.looks) {
                break;
            }
            std::this_thread::sleep_for(std::chrono::duration<double>(wish_.interval));
        }
        std::vector<int> codes;
        for (const Watched &watched : watched_) {
            codes.push_back(session::exitCodeOf(watched.outcome));
        }
        return site::combinedExitCode(codes);
    }

  private:
    void look(Watched &watched) const
    {
        watched.differences.clear();
        watched.outcome = session::Outcome::ok;
        watched.message.clear();
        if (const auto failure = watched.session->read(classes_)) {
            watched.outcome = session::outcomeOf(*failure);
            watched.message = session::messageOf(*failure);
            return;
        }
        const model::State &state = watched.session->state();
        const int active = state.activePreset();
        for (const model::Named &named : settings_) {
            if (named.isActive && active == 0) {
                continue;
            }
            const model::Setting &setting = named.at(active);
            const model::Value value = state.value(setting);
            const auto [known, isNew] = watched.known.emplace(named.name(), value);
            if (!isNew && !model::sameValue(known->second, value)) {
                watched.differences.push_back({&setting, named.name(), known->second, value});
                known->second = value;
            }
        }
    }

    /** Changes as they come; that a monitor is lost, or found again, once. */
    void print(const std::string &name, Watched &watched) const
    {
        if (watched.message != watched.told) {
            watched.told = watched.message;
            if (!call_.options.json) {
                std::cerr << timeOfDay() << "  " << name << "  "
                          << (watched.message.empty() ? "answers again" : watched.message) << '\n';
            } else if (!watched.message.empty()) {
                writeJson({{"monitor", name},
                           {"outcome", session::nameOf(watched.outcome)},
                           {"message", watched.message}});
            }
        }
        for (const Difference &difference : watched.differences) {
            printDifference(name, difference);
        }
        std::cout << std::flush;
    }

    void printDifference(const std::string &monitor, const Difference &difference) const
    {
        const model::Setting &setting = *difference.setting;
        if (call_.options.json) {
            Json changes = Json::array();
            changes.push_back({{"setting", difference.name},
                               {"old", model::documentOf(setting, difference.before, names_)},
                               {"new", model::documentOf(setting, difference.after, names_)}});
            writeJson({{"monitor", monitor}, {"outcome", "ok"}, {"changes", changes}});
            return;
        }
        const auto text = [&](const model::Value &value) {
            const std::string shown = model::textOf(setting, value, names_);
            return shown.empty() ? "-" : shown;
        };
        std::cout << timeOfDay() << "  " << (watched_.size() > 1 ? monitor + "  " : "") << difference.name
                  << "  " << text(difference.before) << " -> " << text(difference.after) << '\n';
    }

    Call &call_;
    const Wish &wish_;
    std::vector<model::Named> settings_;
    const site::CodeNames &names_;
    session::Classes classes_;
    std::vector<Watched> watched_;
};

} // namespace

void addWatch(CLI::App &program, Action &action)
{
    CLI::App *command = program.add_subcommand("watch", "Prints changes as they happen");
    auto wish = std::make_shared<Wish>();
    command->add_option("SETTING-PATTERN", wish->patterns,
                        "settings, groups, or names with * and ?; without: all of the usual ones");
    command->add_option("--interval", wish->interval, "seconds between two looks")
        ->type_name("S")
        ->check(CLI::Range(0.01, 86400.0))
        ->capture_default_str();
    command->add_option("--count", wish->looks, "end after so many looks")
        ->type_name("N")
        ->check(CLI::Range(1UL, 1000000000UL));
    command->footer(
        "The first look only tells what there is to compare with. A monitor that does not answer is named "
        "once, and\nagain when it answers.\n"
        "Examples:\n"
        "  displayctl watch\n"
        "  displayctl -m all watch pip 'preset.*.luminance' --interval 10");
    command->callback([wish, &action] { action = [wish](Call &call) { return Watch{call, *wish}.run(); }; });
}

} // namespace displayctl::command
