// SPDX-License-Identifier: Apache-2.0
// Files as the history and the journal need them: what was written is on the disk, and what failed is thrown
// as Error.
#ifndef DISPLAYCTL_HISTORY_DISK_H
#define DISPLAYCTL_HISTORY_DISK_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace displayctl::history
{

/** Throws Error with the reason that errno tells. */
[[noreturn]] void failFor(const std::string &what, const std::filesystem::path &path);

/** An open file. */
class OpenFile
{
  public:
    /** flags as of open(2); a file that is made is the user's alone. Throws Error. */
    OpenFile(const std::filesystem::path &path, int flags);
    OpenFile(OpenFile &&other) noexcept;
    OpenFile &operator=(OpenFile &&) = delete;
    ~OpenFile();

    [[nodiscard]] int descriptor() const
    {
        return descriptor_;
    }
    [[nodiscard]] const std::filesystem::path &path() const
    {
        return path_;
    }
    [[nodiscard]] std::string readAll() const;
    /** At the present position, or at the end of a file opened to append. */
    void write(std::string_view text) const;
    void truncate(std::uint64_t size) const;
    /** Waits until what was written is on the disk. */
    void flush() const;

  private:
    std::filesystem::path path_;
    int descriptor_;
};

/** The content of a file, empty where there is none. */
[[nodiscard]] std::string readFile(const std::filesystem::path &path);

/** Puts the file, with this content, in the place of the one there is; after a crash it is either the old or
 * the new. */
void replaceFile(const std::filesystem::path &path, std::string_view content);

/** Waits until the directory's entries are on the disk. */
void flushDirectory(const std::filesystem::path &directory);

} // namespace displayctl::history

#endif
