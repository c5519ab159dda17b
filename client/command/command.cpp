// SPDX-License-Identifier: Apache-2.0
#include "command/command.h"

#include "history/history.h"
#include "history/journal.h"
#include "session/session.h"
#include "site/credentials.h"
#include "site/directories.h"
#include "site/pool.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <new>

namespace displayctl::command
{

std::chrono::milliseconds Options::timeout() const
{
    return std::chrono::milliseconds(static_cast<long>(timeoutSeconds * 1000));
}

const site::Configuration &Call::configuration()
{
    if (!isRead_) {
        configuration_ = site::readConfiguration(options.site);
        isRead_ = true;
    }
    return configuration_;
}

const std::vector<site::Monitor> &Call::monitors()
{
    if (!isChosen_) {
        monitors_ = site::chooseMonitors(configuration(), options.site);
        site::addPasswords(monitors_);
        isChosen_ = true;
    }
    return monitors_;
}

bool Call::isMany()
{
    return monitors().size() > 1;
}

std::string_view problemOf(const std::exception &error)
{
    return dynamic_cast<const std::bad_alloc *>(&error) != nullptr ? "there is not enough memory"
                                                                   : error.what();
}

namespace
{

// Each line of a text with the monitor's name before it.
std::string withName(const std::string &name, const std::string &text)
{
    std::string result;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size() - 1);
        result += name + "  " + text.substr(begin, end - begin + 1);
        begin = end + 1;
    }
    return result;
}

} // namespace

void Call::print(const site::Monitor &monitor, const Report &report)
{
    if (options.json) {
        Json document = {{"monitor", monitor.name}, {"outcome", nameOf(report.outcome)}};
        if (report.outcome != Outcome::ok && report.outcome != Outcome::unchanged) {
            document["message"] = report.documentMessage.empty() ? report.message : report.documentMessage;
        }
        document.update(report.document);
        std::cout << document.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n' << std::flush;
        return;
    }
    std::cout << (isMany() ? withName(monitor.name, report.text) : report.text) << std::flush;
    std::cerr << report.note << std::flush;
    if (!report.message.empty()) {
        std::cerr << (isMany() ? withName(monitor.name, report.message) : "displayctl: " + report.message)
                  << '\n';
    }
}

void Call::tellInterrupted()
{
    if (options.quiet || isUndo) {
        return;
    }
    const std::filesystem::path directory = site::stateDirectory();
    for (const site::Monitor &monitor : monitors()) {
        std::vector<Json> records;
        try {
            records = history::Journal::leftOver(directory, monitor.fileKey());
        } catch (const history::Error &error) {
            std::cerr << "displayctl: " << error.what() << '\n'; // it is in the way of changes alone
        }
        if (!records.empty()) {
            std::cerr << "displayctl: a change of " << monitor.name << " was interrupted ("
                      << records.front().value("begin", "") << " " << records.front().value("profile", "")
                      << "): undo takes it back, apply goes on\n";
        }
    }
}

/** What this program cannot do for one monitor, for lack of memory, of room on the disk, is told of that one.
 */
Report Call::attempt(const std::function<Report(const site::Monitor &)> &work, const site::Monitor &monitor)
{
    session::Sent::forget();
    try {
        return work(monitor);
    } catch (const UsageError &) {
        throw;
    } catch (const std::exception &error) {
        const bool wasSent = session::Sent::byThisThread();
        if (!isMany() && !wasSent) {
            throw;
        }
        Report report;
        report.outcome = wasSent ? Outcome::unknown : Outcome::refused;
        report.message = problemOf(error);
        report.message +=
            wasSent ? "; a change had been sent before: history and get tell what became of it, undo "
                      "takes it back"
                    : "";
        return report;
    }
}

int Call::forEachMonitor(const std::function<Report(const site::Monitor &)> &work, bool isSummed)
{
    const std::vector<site::Monitor> &all = monitors();
    tellInterrupted();
    std::vector<Report> reports(all.size());
    std::vector<int> codes;
    std::map<Outcome, std::size_t> counts;
    site::Progress progress(all.size(), options.quiet);
    site::forEach(
        all.size(), options.jobs, [&](std::size_t i) { reports[i] = attempt(work, all[i]); },
        [&](std::size_t i) {
            progress.hide();
            print(all[i], reports[i]);
            codes.push_back(reports[i].exitCode >= 0 ? reports[i].exitCode : exitCodeOf(reports[i].outcome));
            ++counts[reports[i].outcome];
            reports[i] = Report();
            progress.show(codes.size());
        });
    progress.hide();
    if (isSummed && all.size() > 1 && !options.json) {
        std::string summary;
        for (const auto &[outcome, count] : counts) {
            summary +=
                (summary.empty() ? "" : ", ") + std::to_string(count) + " " + std::string(nameOf(outcome));
        }
        std::cout << all.size() << " monitors: " << summary << '\n';
    }
    return site::combinedExitCode(codes);
}

bool Call::confirm(const std::string &question) const
{
    if (options.yes) {
        return true;
    }
    if (isatty(STDIN_FILENO) == 0) {
        throw UsageError("this asks before it changes anything: give --yes where there is no terminal");
    }
    std::cerr << question << " [y/N] " << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

bool Call::hasColor() const
{
    const char *noColor = std::getenv("NO_COLOR");
    return !options.noColor && (noColor == nullptr || *noColor == '\0') && isatty(STDOUT_FILENO) != 0;
}

} // namespace displayctl::command
