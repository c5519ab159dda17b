// SPDX-License-Identifier: Apache-2.0
#include "history/journal.h"

#include "history/disk.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace displayctl::history
{

namespace fs = std::filesystem;

namespace
{

fs::path fileOf(const fs::path &stateDirectory, const std::string &fileKey)
{
    return stateDirectory / "journal" / (fileKey + ".jsonl");
}

struct flock wholeFile(short kind)
{
    struct flock lock {
    };
    lock.l_type = kind;
    lock.l_whence = SEEK_SET;
    return lock;
}

/** False when another process has the file. */
bool lockNow(const OpenFile &file)
{
    struct flock lock = wholeFile(F_WRLCK);
    if (fcntl(file.descriptor(), F_OFD_SETLK, &lock) == 0) {
        return true;
    }
    if (errno != EAGAIN && errno != EACCES) {
        failFor("locked", file.path());
    }
    return false;
}

/** Asks without taking the lock, so as not to be in the way of a process that wants it. */
bool isLocked(const OpenFile &file)
{
    struct flock lock = wholeFile(F_WRLCK);
    if (fcntl(file.descriptor(), F_OFD_GETLK, &lock) != 0) {
        failFor("read", file.path());
    }
    return lock.l_type != F_UNLCK;
}

/** Whether the name still stands for the open file, which another process may have removed before this one
 * got it. */
bool isStillThere(const OpenFile &file)
{
    struct stat open {
    };
    struct stat named {
    };
    return fstat(file.descriptor(), &open) == 0 && stat(file.path().c_str(), &named) == 0 &&
           open.st_ino == named.st_ino && open.st_dev == named.st_dev;
}

/** The whole lines; size: where they end. What a crash has left of a line behind them is none. */
std::vector<Json> parseRecords(const OpenFile &file, std::size_t &size)
{
    const std::string text = file.readAll();
    std::vector<Json> records;
    size = 0;
    for (std::size_t newline = text.find('\n'); newline != std::string::npos;
         newline = text.find('\n', size)) {
        Json record = Json::parse(text.substr(size, newline - size), nullptr, false);
        if (record.is_discarded()) {
            throw Error(file.path().string() + " is damaged");
        }
        records.push_back(std::move(record));
        size = newline + 1;
    }
    return records;
}

} // namespace

class Journal::File
{
  public:
    /** Of a file that this process has locked. */
    explicit File(OpenFile file) : file_(std::move(file))
    {
        std::size_t size = 0;
        records_ = parseRecords(file_, size);
        file_.truncate(size);
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;

    ~File()
    {
        if (records_.empty()) {
            unlink(file_.path().c_str()); // before the lock goes with the file
        }
    }

    [[nodiscard]] const std::vector<Json> &records() const
    {
        return records_;
    }

    void write(Json record)
    {
        file_.write(record.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n');
        file_.flush();
        records_.push_back(std::move(record));
    }

    void finish()
    {
        file_.truncate(0);
        file_.flush();
        records_.clear();
    }

  private:
    OpenFile file_;
    std::vector<Json> records_;
};

Journal::Journal(std::unique_ptr<File> file) : file_(std::move(file)) {}

Journal::Journal(Journal &&) noexcept = default;
Journal &Journal::operator=(Journal &&) noexcept = default;
Journal::~Journal() = default;

std::optional<Journal> Journal::open(const fs::path &stateDirectory, const std::string &fileKey)
{
    const fs::path path = fileOf(stateDirectory, fileKey);
    std::error_code problem;
    fs::create_directories(path.parent_path(), problem);
    for (;;) {
        OpenFile file{path, O_RDWR | O_APPEND | O_CREAT};
        if (!lockNow(file)) {
            return std::nullopt;
        }
        if (isStillThere(file)) {
            flushDirectory(path.parent_path());
            return Journal{std::make_unique<File>(std::move(file))};
        }
    }
}

std::vector<Json> Journal::leftOver(const fs::path &stateDirectory, const std::string &fileKey)
{
    const fs::path path = fileOf(stateDirectory, fileKey);
    if (access(path.c_str(), F_OK) != 0) {
        return {};
    }
    std::size_t size = 0;
    try {
        const OpenFile file{path, O_RDWR};
        return isLocked(file) ? std::vector<Json>{} : parseRecords(file, size);
    } catch (const Error &) {
        if (access(path.c_str(), F_OK) != 0) {
            return {}; // its process has finished in between
        }
        throw;
    }
}

const std::vector<Json> &Journal::records() const
{
    return file_->records();
}

void Journal::write(Json record)
{
    file_->write(std::move(record));
}

void Journal::finish()
{
    file_->finish();
}

} // namespace displayctl::history
