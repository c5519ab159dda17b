// SPDX-License-Identifier: Apache-2.0
#ifndef DESK_SUPPORT_FILE_WATCH_H
#define DESK_SUPPORT_FILE_WATCH_H

#include <cstdint>
#include <string>

namespace desk
{

/** Tells whether something has happened to files, by inotify(7): the kernel notes it before the write, or
 * whatever it is, returns to whom has asked for it. */
class FileWatch
{
  public:
    FileWatch() = default;
    ~FileWatch();
    FileWatch(const FileWatch &) = delete;
    FileWatch &operator=(const FileWatch &) = delete;

    /** Looks out for these events (IN_...) of the file from now on. What cannot be had, because the user has
     * used up his share for instance, ends the whole watch. */
    void add(const std::string &path, std::uint32_t events);

    /** False when nothing is watched. */
    bool works() const
    {
        return descriptor_ >= 0;
    }

    /** True when something has happened since the last call, and whenever nothing is watched. One system call
     * when nothing has. */
    bool saw();

  private:
    void begin();
    void end();

    int descriptor_ = -1;
    int ready_ =
        -1; // an epoll(7) of the one, which tells for half of what a read costs that there is nothing
    bool hasFailed_ = false;
};

} // namespace desk

#endif
