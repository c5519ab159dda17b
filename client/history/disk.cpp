// SPDX-License-Identifier: Apache-2.0
#include "history/disk.h"

#include "history/history.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace displayctl::history
{

namespace fs = std::filesystem;

void failFor(const std::string &what, const fs::path &path)
{
    const std::string reason = std::error_code{errno, std::system_category()}.message();
    throw Error(path.string() + " cannot be " + what + ": " + reason);
}

OpenFile::OpenFile(const fs::path &path, int flags)
    : path_(path), descriptor_(open(path.c_str(), flags | O_CLOEXEC, S_IRUSR | S_IWUSR))
{
    if (descriptor_ < 0) {
        failFor("opened", path_);
    }
}

OpenFile::OpenFile(OpenFile &&other) noexcept
    : path_(std::move(other.path_)), descriptor_(std::exchange(other.descriptor_, -1))
{
}

OpenFile::~OpenFile()
{
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

std::string OpenFile::readAll() const
{
    std::string text;
    std::array<char, 65536> bytes{};
    for (;;) {
        const ssize_t count = pread(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(text.size()));
        if (count < 0) {
            failFor("read", path_);
        }
        if (count == 0) {
            return text;
        }
        text.append(bytes.data(), static_cast<std::size_t>(count));
    }
}

void OpenFile::write(std::string_view text) const
{
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor_, text.data(), text.size());
        if (count < 0) {
            failFor("written", path_);
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

void OpenFile::truncate(std::uint64_t size) const
{
    if (ftruncate(descriptor_, static_cast<off_t>(size)) != 0) {
        failFor("shortened", path_);
    }
}

void OpenFile::flush() const
{
    if (fdatasync(descriptor_) != 0) {
        failFor("written", path_);
    }
}

std::string readFile(const fs::path &path)
{
    if (access(path.c_str(), F_OK) != 0 && errno == ENOENT) {
        return {};
    }
    return OpenFile{path, O_RDONLY}.readAll();
}

void replaceFile(const fs::path &path, std::string_view content)
{
    const fs::path next = path.string() + ".new";
    {
        const OpenFile file{next, O_WRONLY | O_CREAT | O_TRUNC};
        file.write(content);
        file.flush();
    }
    if (std::rename(next.c_str(), path.c_str()) != 0) {
        failFor("replaced", path);
    }
    flushDirectory(path.parent_path());
}

void flushDirectory(const fs::path &directory)
{
    const OpenFile entries{directory, O_RDONLY | O_DIRECTORY};
    if (fsync(entries.descriptor()) != 0) {
        failFor("written", directory);
    }
}

} // namespace displayctl::history
