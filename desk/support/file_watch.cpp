// SPDX-License-Identifier: Apache-2.0
#include "support/file_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>

namespace desk
{

FileWatch::~FileWatch()
{
    end();
}

void FileWatch::add(const std::string &path, std::uint32_t events)
{
    if (descriptor_ < 0 && !hasFailed_) {
        descriptor_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    }
    if (descriptor_ < 0 || inotify_add_watch(descriptor_, path.c_str(), events) < 0) {
        hasFailed_ = true;
        end();
    }
}

bool FileWatch::saw()
{
    if (descriptor_ < 0) {
        return true;
    }
    alignas(inotify_event) char events[4096];
    bool any = false;
    for (;;) {
        const ssize_t size = read(descriptor_, events, sizeof events);
        if (size < 0 && errno == EAGAIN) {
            return any;
        }
        if (size <= 0 && errno != EINTR) { // none of the reasons that the kernel gives for a watch
            end();
            return true;
        }
        any = true;
    }
}

void FileWatch::end()
{
    if (descriptor_ >= 0) {
        close(descriptor_);
        descriptor_ = -1;
    }
}

} // namespace desk
