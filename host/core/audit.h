// SPDX-License-Identifier: Apache-2.0
// Who changed what: a file of JSON lines, each tied to the one before by its SHA-256.
#ifndef HOST_CORE_AUDIT_H
#define HOST_CORE_AUDIT_H

#include "core/model.h"

#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>

namespace host
{

struct AuditLimits {
    /** A file that has grown so large is put aside: FILE becomes FILE.1, FILE.1 becomes FILE.2, ... */
    std::uint64_t bytes = std::uint64_t{10} * 1024 * 1024;
    /** So many are kept aside. */
    unsigned files = 8;
};

/** Changes and method calls are recorded here. Beside the file, FILE.head holds the SHA-256 of the line
 * before the oldest that is kept, and that of the newest. Safe to use by many threads. */
class Audit
{
  public:
    explicit Audit(std::string file, const AuditLimits &limits = {});
    Audit(const Audit &) = delete;
    Audit &operator=(const Audit &) = delete;
    ~Audit();

    /** Goes on where the file ends. False, with the reason in problem, when it cannot be written. */
    [[nodiscard]] bool open(std::string &problem);

    /** False as long as a line could not be written: then nothing is to be changed. */
    [[nodiscard]] bool isReady();

    /** A line for the request, of the client that logClient() tells, and its answer. What has been done and
     * cannot be written is kept until it can; isReady() says no until then. What was not let in is not kept.
     */
    void record(const Request &request, const Answer &answer, bool wasLetIn = true);

    /** Writes what is kept, if that can be written by now; to be called every second or so. */
    void retry();

  private:
    void tell(const std::string &problem);
    bool writeUnwritten();
    bool append(const std::string &body);
    bool write(const std::string &line, std::string &problem);
    [[nodiscard]] bool endLastLine();
    bool rotate(std::string &problem);
    bool writeHead(std::string &problem) const;
    void close();

    const std::string file_;
    const AuditLimits limits_;
    std::mutex mutex_;
    int descriptor_ = -1;
    std::uint64_t size_ = 0;
    // Bodies of lines; no more than there were requests with the providers when the disk was full.
    std::deque<std::string> unwritten_;
    std::string told_;  // what keeps it from being written, so that it is told once; "": nothing
    std::string begin_; // hexadecimal: of the line before the oldest one
    std::string end_;   // of the newest one
};

/** True for operations that are recorded, and that a reader is refused: changes and method calls. */
bool isChange(Operation operation);

struct AuditVerdict {
    bool good = false;
    std::uint64_t lines = 0;
    /** The first line that is not what was written, and where; of a good file, what was checked. */
    std::string text;
};

/** Checks the file and what has been put aside of it: that no line was altered, removed or added. */
AuditVerdict verifyAudit(const std::string &file);

} // namespace host

#endif
