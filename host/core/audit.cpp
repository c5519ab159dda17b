// SPDX-License-Identifier: Apache-2.0
#include "core/audit.h"

#include "log/log.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <gnutls/crypto.h>
#include <new>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace host
{
namespace
{

constexpr std::size_t digestLength = 64; // of a SHA-256 in hexadecimal
constexpr unsigned mostAside = 1000;     // files, as --audit-files allows
constexpr std::string_view beforePrevious = ",\"previous\":\"";
constexpr std::string_view afterPrevious = "\"}";

/** What the first line of all follows. */
std::string beginning()
{
    return std::string(digestLength, '0');
}

std::string hashOf(std::string_view line)
{
    std::array<unsigned char, 32> hash = {};
    if (gnutls_hash_fast(GNUTLS_DIG_SHA256, line.data(), line.size(), hash.data()) != 0) {
        throw std::runtime_error("no SHA-256 can be computed");
    }
    std::string text;
    for (const unsigned char byte : hash) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

/** The SHA-256 that the line holds of the one before; "" when it holds none. */
std::string_view previousOf(std::string_view line)
{
    const std::size_t tail = beforePrevious.size() + digestLength + afterPrevious.size();
    if (line.size() < tail || !line.ends_with(afterPrevious) ||
        line.substr(line.size() - tail, beforePrevious.size()) != beforePrevious) {
        return {};
    }
    return line.substr(line.size() - tail + beforePrevious.size(), digestLength);
}

std::string headFile(const std::string &file)
{
    return file + ".head";
}

std::string asideFile(const std::string &file, unsigned number)
{
    return number == 0 ? file : file + "." + std::to_string(number);
}

/** Reads what FILE.head says; false when there is none. */
bool readHead(const std::string &file, std::string &begin, std::string &end)
{
    std::ifstream stream(headFile(file));
    return static_cast<bool>(stream >> begin >> end) && begin.size() == digestLength &&
           end.size() == digestLength;
}

// ------------------------------------------------------------------------------------------- the JSON text

void appendText(std::string &json, std::string_view text)
{
    constexpr std::size_t shown = 4096; // of one value
    json += '"';
    for (const char letter : text.substr(0, shown)) {
        if (letter == '"' || letter == '\\') {
            json += '\\';
            json += letter;
        } else if (static_cast<unsigned char>(letter) < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(letter));
            json += escape;
        } else {
            json += letter;
        }
    }
    if (text.size() > shown) {
        json += "... (" + std::to_string(text.size()) + " bytes)";
    }
    json += '"';
}

void appendMember(std::string &json, std::string_view name, std::string_view text)
{
    json += json.back() == '{' ? "" : ",";
    appendText(json, name);
    json += ':';
    appendText(json, text);
}

void appendValue(std::string &json, Arena &arena, std::string_view name, const CMPIData &data)
{
    if (!isNull(data)) {
        return appendMember(json, name, valueText(arena, data)->view());
    }
    json += json.back() == '{' ? "" : ",";
    appendText(json, name);
    json += ":null";
}

std::string objectOf(Arena &arena, const Request &request)
{
    const Path *path = request.path;
    if (path == nullptr && request.instance != nullptr) {
        path = request.instance->path;
    }
    if (path == nullptr) {
        return std::string(request.nameSpace) + ":" + std::string(request.className);
    }
    return std::string(pathText(arena, *path)->view());
}

bool isListed(const char *const *list, const std::string &name)
{
    for (; list != nullptr && *list != nullptr; ++list) {
        if (cim::sameName(*list, name)) {
            return true;
        }
    }
    return false;
}

/** What the client wants to be set: those that it names, or else those that it gives a value. */
void appendProperties(std::string &json, Arena &arena, const Request &request)
{
    const Instance &instance = *request.instance;
    const auto &properties = instance.klass->properties;
    for (std::size_t i = 0; i < properties.size(); ++i) {
        const bool isMeant = request.propertyList != nullptr
                                 ? isListed(request.propertyList, properties[i].name)
                                 : !isNull(instance.values[i]);
        if (isMeant) {
            appendValue(json, arena, properties[i].name, instance.values[i]);
        }
    }
}

std::string bodyOf(Arena &arena, const Request &request, const Answer &answer)
{
    std::string json = "{";
    appendMember(json, "time", logTime());
    appendMember(json, "user", request.principal);
    appendMember(json, "address", logClient());
    appendMember(json, "operation", operationName(request.operation));
    appendMember(json, "object", objectOf(arena, request));
    if (request.methodName != nullptr) {
        appendMember(json, "method", request.methodName);
    }
    json += ",\"arguments\":{";
    if (request.arguments != nullptr) {
        for (const NamedValue &argument : *request.arguments->values) {
            appendValue(json, arena, argument.name->view(), argument.data);
        }
    } else if (request.operation == Operation::setProperty) {
        appendValue(json, arena, request.propertyName, request.propertyValue);
    } else if (request.instance != nullptr) {
        appendProperties(json, arena, request);
    }
    json += "},\"answer\":{\"code\":" + std::to_string(answer.code);
    if (!answer.ok()) {
        appendMember(json, "message",
                     answer.message != nullptr ? answer.message : statusDescription(answer.code));
    } else if (answer.hasReturnValue) {
        appendValue(json, arena, "value", answer.returnValue);
    }
    return json + "}";
}

/** How a file ends: its last line, and what stands behind the last newline. */
struct FileEnd {
    std::string line;
    std::string torn;
};

FileEnd endOf(const std::string &file)
{
    std::ifstream stream(file);
    FileEnd end;
    for (std::string line; std::getline(stream, line);) {
        (stream.eof() ? end.torn : end.line) = line;
    }
    return end;
}

std::string lastLineOf(const std::string &file)
{
    FileEnd end = endOf(file);
    return end.torn.empty() ? end.line : end.torn;
}

} // namespace

bool isChange(Operation operation)
{
    switch (operation) {
    case Operation::createInstance:
    case Operation::modifyInstance:
    case Operation::deleteInstance:
    case Operation::setProperty:
    case Operation::invokeMethod:
        return true;
    default:
        return false;
    }
}

// ------------------------------------------------------------------------------------------------ writing

Audit::Audit(std::string file, const AuditLimits &limits) : file_(std::move(file)), limits_(limits) {}

Audit::~Audit()
{
    close();
}

void Audit::close()
{
    if (descriptor_ >= 0) {
        ::close(descriptor_);
        descriptor_ = -1;
    }
}

bool Audit::open(std::string &problem)
{
    close();
    descriptor_ = ::open(file_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW, 0600);
    struct stat status = {};
    if (descriptor_ < 0 || fstat(descriptor_, &status) != 0) {
        problem = "the audit log " + file_ + " cannot be written: " + std::strerror(errno);
        close();
        return false;
    }
    size_ = static_cast<std::uint64_t>(status.st_size);
    if (!endLastLine()) {
        problem = "the audit log " + file_ + " cannot be written: " + std::strerror(errno);
        close();
        return false;
    }
    std::string last = lastLineOf(file_);
    if (last.empty()) { // it was put aside just before the end
        last = lastLineOf(asideFile(file_, 1));
    }
    const std::string end = last.empty() ? beginning() : hashOf(last);
    if (!readHead(file_, begin_, end_)) {
        begin_ = beginning();
        end_ = end;
    } else if (previousOf(last) == end_) {
        end_ = end; // the line was written, and then the program ended before it could say so
    } else if (end != end_) {
        // The next line follows the one that was there, so that everybody sees that it has gone.
        logLine("the audit log %s does not end as it did; display-host audit verify tells more",
                file_.c_str());
    }
    if (!writeHead(problem)) {
        close();
        return false;
    }
    return true;
}

/** The program may have ended in the midst of a line, whose request was not answered then. Where the one
 * before is the last of which it had said that it was there, nothing else is missing, and the beginning goes.
 * Where the line itself is that one, its newline alone was cut off since, and comes back: the next one
 * follows it. */
bool Audit::endLastLine()
{
    FileEnd found = endOf(file_);
    std::string begin;
    std::string end;
    if (found.torn.empty() || !readHead(file_, begin, end)) {
        return true;
    }
    if (found.line.empty()) { // it was put aside just before
        found.line = lastLineOf(asideFile(file_, 1));
    }
    const std::string last = found.line.empty() ? beginning() : hashOf(found.line);
    const std::uint64_t whole = size_ - found.torn.size();
    if (last == end && ftruncate(descriptor_, static_cast<off_t>(whole)) == 0) {
        size_ = whole;
        logLine(
            "the audit log %s ended in the midst of a line, as when its program is killed: that is removed",
            file_.c_str());
    } else if (hashOf(found.torn) == end) {
        if (::write(descriptor_, "\n", 1) != 1) {
            return false;
        }
        ++size_;
    }
    return true;
}

bool Audit::isReady()
{
    const std::lock_guard lock(mutex_);
    return writeUnwritten();
}

void Audit::record(const Request &request, const Answer &answer, bool wasLetIn)
{
    // Of its own: what the request has used up must not keep it from being recorded.
    MemoryBudget budget(MemoryBudget::defaultTotal, MemoryBudget::defaultTotal);
    MemoryShare memory(budget);
    Arena arena(4096, memory);
    std::string body = bodyOf(arena, request, answer);
    const std::lock_guard lock(mutex_);
    unwritten_.push_back(std::move(body));
    if (!writeUnwritten()) {
        // It stands in the other log at least.
        logLine("this is not in the audit log%s: %s}", wasLetIn ? " yet" : "", unwritten_.back().c_str());
        if (!wasLetIn) {
            unwritten_.pop_back();
        }
    }
}

void Audit::retry()
{
    const std::lock_guard lock(mutex_);
    if (!unwritten_.empty() && writeUnwritten()) {
        logLine("the audit log %s is written again, with all lines that were kept", file_.c_str());
    }
}

void Audit::tell(const std::string &problem)
{
    if (problem != told_) {
        logLine("%s", problem.c_str());
        told_ = problem;
    }
}

/** Writes what there is to write, in its order. False when something is left, or the file cannot be opened.
 */
bool Audit::writeUnwritten()
{
    try {
        std::string problem;
        if (descriptor_ < 0 && !open(problem)) {
            tell(problem);
            return false;
        }
        while (!unwritten_.empty()) {
            if (!append(unwritten_.front())) {
                return false;
            }
            unwritten_.pop_front();
        }
        told_.clear();
        return true;
    } catch (const std::bad_alloc &) { // what the files hold is looked at anew the next time
        close();
        return false;
    }
}

/** False when the line is not in the file. */
bool Audit::append(const std::string &body)
{
    std::string line = body;
    line += beforePrevious;
    line += end_;
    line += afterPrevious;
    std::string problem;
    if (size_ != 0 && size_ + line.size() + 1 > limits_.bytes && !rotate(problem)) {
        logLine("%s", problem.c_str()); // better too large than not written
    }
    // The memory is taken before the line is written: what is kept of it never lags behind the file.
    std::string hash = hashOf(line);
    line += '\n';
    if (!write(line, problem)) {
        tell(problem);
        close();
        return false;
    }
    size_ += line.size();
    end_ = std::move(hash);
    bool isTold = false;
    try {
        isTold = writeHead(problem);
    } catch (const std::bad_alloc &) {
    }
    if (!isTold) { // which is made good when it is opened the next time
        logLine("%s", problem.c_str());
        close();
    }
    return true;
}

bool Audit::write(const std::string &line, std::string &problem)
{
    const ssize_t written = descriptor_ < 0 ? -1 : ::write(descriptor_, line.data(), line.size());
    if (written == static_cast<ssize_t>(line.size())) {
        return true;
    }
    problem = "the audit log " + file_ +
              " cannot be written: " + (written < 0 ? std::strerror(errno) : "there is no room");
    if (written > 0 && ftruncate(descriptor_, static_cast<off_t>(size_)) != 0) {
        problem += ", and ends in the middle of a line";
    }
    return false;
}

/** Each step leaves files that verifyAudit() and open() know how to take, should the program end behind it.
 */
bool Audit::rotate(std::string &problem)
{
    const std::string dropped = lastLineOf(asideFile(file_, limits_.files));
    if (!dropped.empty()) {
        begin_ = hashOf(dropped);
        if (!writeHead(problem)) {
            return false;
        }
    }
    for (unsigned i = limits_.files; i > 0; --i) {
        if (rename(asideFile(file_, i - 1).c_str(), asideFile(file_, i).c_str()) != 0 && errno != ENOENT) {
            problem = asideFile(file_, i) + ": " + std::strerror(errno);
            return false;
        }
    }
    close();
    descriptor_ = ::open(file_.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW, 0600);
    size_ = 0;
    return true;
}

/** In one write of fixed length, so that a reader sees either state. */
bool Audit::writeHead(std::string &problem) const
{
    const std::string file = headFile(file_);
    const int to = ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    const std::string text = begin_ + "\n" + end_ + "\n";
    const bool written =
        to >= 0 && pwrite(to, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size());
    if (!written) {
        problem = file + " cannot be written: " + std::strerror(errno);
    }
    if (to >= 0) {
        ::close(to);
    }
    return written;
}

// ---------------------------------------------------------------------------------------------- verifying

namespace
{

/** The file and what has been put aside of it, the oldest first. Where the program was killed while it put
 * them aside one is missing between them: the next ones have its name. */
std::vector<std::string> filesOf(const std::string &file)
{
    std::vector<std::string> files;
    for (unsigned i = 0; i <= mostAside; ++i) {
        if (access(asideFile(file, i).c_str(), F_OK) == 0) {
            files.insert(files.begin(), asideFile(file, i));
        }
    }
    return files;
}

} // namespace

AuditVerdict verifyAudit(const std::string &file)
{
    AuditVerdict verdict;
    std::vector<std::string> files = filesOf(file);
    std::string begin;
    std::string end;
    if (files.empty() || !readHead(file, begin, end)) {
        verdict.text = (files.empty() ? file : headFile(file)) + ": " + std::strerror(ENOENT);
        return verdict;
    }
    // The program was killed just before it dropped the oldest one.
    if (files.size() > 1 && hashOf(lastLineOf(files.front())) == begin) {
        files.erase(files.begin());
    }
    std::string expected = begin;
    std::string place; // of the line before
    for (const std::string &each : files) {
        std::ifstream stream(each);
        std::size_t number = 0;
        for (std::string line; std::getline(stream, line);) {
            const std::string here = each + ":" + std::to_string(++number);
            if (previousOf(line) != expected) {
                verdict.text =
                    place.empty()
                        ? here +
                              ": this line is not the first one that was written; lines before it were removed, "
                              "or it was altered or added"
                        : place + ": this line was altered or added, or lines behind it were removed; " +
                              here + " follows another one";
                return verdict;
            }
            expected = hashOf(line);
            place = here;
            ++verdict.lines;
        }
    }
    if (expected != end) {
        verdict.text =
            (place.empty() ? file : place) +
            ": this line was altered or added, or lines behind it were removed; the last one was another";
        return verdict;
    }
    verdict.good = true;
    verdict.text = std::to_string(verdict.lines) + " lines, each as it was written" +
                   (begin == beginning() ? "" : "; older ones are no longer kept");
    return verdict;
}

} // namespace host
