// SPDX-License-Identifier: Apache-2.0
// How a crash does no harm: before lines are added, history.head is replaced by one that holds them beside
// the number and hash of the last line before; when they are there, by one with theirs. Whoever finds lines
// in the head knows that their writer has ended between the two, and completes what is missing of them.
#include "history/history.h"

#include "history/chain.h"
#include "history/disk.h"
#include "site/directories.h"

#include <fcntl.h>
#include <sys/file.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <ctime>
#include <exception>
#include <mutex>
#include <string>

namespace displayctl::history
{

namespace fs = std::filesystem;

namespace
{

/** What stands in history.head. */
struct Head {
    End end;
    std::uint64_t size = 0; // of history.jsonl up to the last line
    std::string pending;    // lines that are about to be added
};

/** None where there is no head, or none that can be understood. */
std::optional<Head> readHead(const fs::path &path)
{
    Head head;
    const std::string text = readFile(path);
    try {
        const Json document = Json::parse(text);
        head.end.number = document.at("number").get<std::uint64_t>();
        head.end.hash = document.at("hash").get<std::string>();
        head.size = document.at("size").get<std::uint64_t>();
        head.pending = document.value("pending", "");
    } catch (const Json::exception &) {
        return std::nullopt;
    }
    return head;
}

void writeHead(const fs::path &path, const Head &head)
{
    Json document{{"number", head.end.number}, {"hash", head.end.hash}, {"size", head.size}};
    if (!head.pending.empty()) {
        document["pending"] = head.pending;
    }
    replaceFile(path, document.dump() + '\n');
}

/** The end that the pending lines lead to. */
End endOf(const std::string &pending, End end)
{
    for (std::size_t begin = 0; begin < pending.size();) {
        const std::size_t newline = pending.find('\n', begin);
        const Json document = Json::parse(pending.substr(begin, newline - begin), nullptr, false);
        if (document.is_object()) {
            end.number = document.value("number", end.number);
            end.hash = document.value("hash", end.hash);
        }
        begin = newline == std::string::npos ? pending.size() : newline + 1;
    }
    return end;
}

/** Whether the text is as long as the head says, with nothing behind that but the beginning of the pending
 * lines. */
bool isContinuedBy(const Head &head, const std::string &text)
{
    return text.size() >= head.size &&
           head.pending.starts_with(text.substr(static_cast<std::size_t>(head.size)));
}

/** Completes the text by what a killed writer had left to add, and the head with it. True when there was
 * something. */
bool complete(std::string &text, Head &head)
{
    if (head.pending.empty()) {
        return false;
    }
    if (isContinuedBy(head, text)) {
        text.resize(static_cast<std::size_t>(head.size));
    } else if (!text.empty() && !text.ends_with('\n')) {
        text += '\n'; // somebody has altered the file since; verify tells of it
    }
    text += head.pending;
    head.end = endOf(head.pending, head.end);
    head.size = text.size();
    head.pending.clear();
    return true;
}

std::string now()
{
    const auto time = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count() % 1000;
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 32> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S.", &parts);
    return std::string{text.data(), length} + std::to_string(1000 + milliseconds).substr(1) + 'Z';
}

/** What every document of displayctl calls the outcome. */
std::string_view outcomeOf(std::string_view result)
{
    return result == "refused" || result == "unknown" ? result : "ok";
}

Json documentOf(const Change &change, const std::string &time, const std::string &user)
{
    Json document{{"time", time},
                  {"user", user},
                  {"account", change.account},
                  {"monitor", change.monitor},
                  {"address", change.address},
                  {"setting", change.setting},
                  {"old", change.oldValue},
                  {"new", change.newValue},
                  {"result", change.result},
                  {"outcome", outcomeOf(change.result)},
                  {"answer", change.answer}};
    if (document["outcome"] != "ok") {
        document["message"] = change.answer;
    }
    if (!change.profile.empty()) {
        document["profile"] = change.profile;
    }
    document.update(change.more);
    return document;
}

/** The changes of one caller, waiting to be stored. */
struct Batch {
    std::span<const Change> changes;
    bool isDone = false;
    std::exception_ptr problem;
};

} // namespace

class History::Store
{
  public:
    explicit Store(fs::path directory) : directory_(std::move(directory)), user_(site::machineUser()) {}

    /** Callers that come while another's lines are written are served together by one of them. */
    void append(std::span<const Change> changes)
    {
        Batch batch{changes, false, nullptr};
        std::unique_lock lock{mutex_};
        waiting_.push_back(&batch);
        served_.wait(lock, [&] { return batch.isDone || !isWriting_; });
        if (!batch.isDone) {
            isWriting_ = true;
            const std::vector<Batch *> batches = std::exchange(waiting_, {});
            lock.unlock();
            std::exception_ptr problem;
            try {
                store(batches);
            } catch (...) {
                problem = std::current_exception();
            }
            lock.lock();
            for (Batch *served : batches) {
                served->isDone = true;
                served->problem = problem;
            }
            isWriting_ = false;
            served_.notify_all();
        }
        if (batch.problem != nullptr) {
            std::rethrow_exception(batch.problem);
        }
    }

    /** The text as it is, or would be once completed, and the end it should lead to; none where the head is
     * not there. */
    [[nodiscard]] std::string load(std::optional<End> &end) const
    {
        const OpenFile lock = locked(LOCK_SH);
        std::optional<Head> head = readHead(headFile());
        std::string text = readFile(linesFile());
        if (head) {
            complete(text, *head);
            end = head->end;
        }
        return text;
    }

  private:
    [[nodiscard]] fs::path headFile() const
    {
        return directory_ / "history.head";
    }
    [[nodiscard]] fs::path linesFile() const
    {
        return directory_ / "history.jsonl";
    }

    /** The lock of all processes; it goes with the file that is returned. */
    [[nodiscard]] OpenFile locked(int kind) const
    {
        OpenFile file{directory_ / "history.lock", O_RDWR | O_CREAT};
        while (flock(file.descriptor(), kind) != 0) {
            if (errno != EINTR) {
                failFor("locked", file.path());
            }
        }
        return file;
    }

    void store(const std::vector<Batch *> &batches) const
    {
        const OpenFile lock = locked(LOCK_EX);
        const OpenFile file{linesFile(), O_RDWR | O_APPEND | O_CREAT};
        // Without a head the lines begin anew, and verify tells where.
        Head head = readHead(headFile()).value_or(Head{});
        if (!head.pending.empty()) {
            recover(file, head);
        }
        Head next = head;
        const std::string time = now();
        for (const Batch *batch : batches) {
            for (const Change &change : batch->changes) {
                head.pending += seal(documentOf(change, time, user_), next.end);
            }
        }
        if (head.pending.empty()) {
            return;
        }
        writeHead(headFile(), head);
        addLines(file, head.pending);
        next.size = fs::file_size(linesFile());
        writeHead(headFile(), next);
    }

    void recover(const OpenFile &file, Head &head) const
    {
        std::string text = file.readAll();
        const std::uint64_t sound = head.size;
        const bool isAltered = !isContinuedBy(head, text);
        const std::string pending = head.pending;
        if (complete(text, head)) {
            if (!isAltered) {
                file.truncate(sound);
            }
            addLines(file, pending);
            writeHead(headFile(), head);
        }
    }

    /** On a line of their own, also when somebody has cut off the last newline. */
    static void addLines(const OpenFile &file, const std::string &lines)
    {
        const auto size = static_cast<off_t>(fs::file_size(file.path()));
        char last = '\n';
        if (size > 0 && pread(file.descriptor(), &last, 1, size - 1) != 1) {
            failFor("read", file.path());
        }
        file.write((last == '\n' ? "" : "\n") + lines);
        file.flush();
    }

    fs::path directory_;
    std::string user_;
    std::mutex mutex_;
    std::condition_variable served_;
    std::vector<Batch *> waiting_;
    bool isWriting_ = false;
};

History::History(const fs::path &directory) : store_(std::make_unique<Store>(directory)) {}

History::~History() = default;

void History::append(std::span<const Change> changes)
{
    store_->append(changes);
}

void History::append(const Change &change)
{
    store_->append({&change, 1});
}

void History::prepare()
{
    static_cast<void>(sha256({}));
    store_->append({}); // everything but lines
}

std::vector<std::string> History::lines() const
{
    std::optional<End> end;
    const std::string text = store_->load(end);
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t newline = std::min(text.find('\n', begin), text.size());
        lines.push_back(text.substr(begin, newline - begin));
        begin = newline + 1;
    }
    return lines;
}

std::vector<Json> History::read() const
{
    std::vector<Json> documents;
    for (const std::string &line : lines()) {
        Json document = Json::parse(line, nullptr, false);
        if (document.is_object()) {
            documents.push_back(std::move(document));
        }
    }
    return documents;
}

Verification History::verify() const
{
    std::optional<End> end;
    const std::string text = store_->load(end);
    if (end || text.empty()) {
        return verifyChain(text, end.value_or(End{}));
    }
    Verification result;
    result.lines = lines().size();
    result.firstBadLine = result.lines;
    result.problem = "history.head, which tells the last line, is missing or damaged";
    return result;
}

} // namespace displayctl::history
