// SPDX-License-Identifier: Apache-2.0
#include "support/file_watch.h"

#include <sys/epoll.h>
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
        begin();
    }
    if (descriptor_ < 0 || inotify_add_watch(descriptor_, path.c_str(), events) < 0) {
        hasFailed_ = true;
        end();
    }
}

void FileWatch::begin()
{
    descriptor_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    ready_ = epoll_create1(EPOLL_CLOEXEC);
    epoll_event wanted = {};
    wanted.events = EPOLLIN;
    if (descriptor_ < 0 || ready_ < 0 || epoll_ctl(ready_, EPOLL_CTL_ADD, descriptor_, &wanted) != 0) {
        end();
    }
}

bool FileWatch::saw()
{
    if (descriptor_ < 0) {
        return true;
    }
    epoll_event ready;
    if (epoll_wait(ready_, &ready, 1, 0) == 0) {
        return false;
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
    for (int *descriptor : {&ready_, &descriptor_}) {
        if (*descriptor >= 0) {
            close(*descriptor);
            *descriptor = -1;
        }
    }
}

} // namespace desk
