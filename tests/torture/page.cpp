// SPDX-License-Identifier: Apache-2.0
#include "page.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace torture
{

Fault faultNamed(const std::string &name)
{
    static const Fault faults[] = {
        {"memory", memoryCalls, ENOMEM},    {"files", fileCalls, EIO},
        {"full-disk", writeCalls, ENOSPC},  {"descriptors", fileCalls, EMFILE},
        {"sockets", socketCalls, ENOBUFS},  {"interrupted", socketCalls, EINTR},
        {"reset", socketCalls, ECONNRESET}, {"writes", writeCalls, EIO},
    };
    for (const Fault &fault : faults) {
        if (name == fault.name) {
            return fault;
        }
    }
    fprintf(stderr, "no such kind of calls: %s\n", name.c_str());
    exit(2);
}

Page::Page(const std::string &file)
{
    const int descriptor = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0 || ftruncate(descriptor, sizeof(Control)) != 0) {
        perror(file.c_str());
        exit(2);
    }
    void *page = mmap(nullptr, sizeof(Control), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    close(descriptor);
    if (page == MAP_FAILED) {
        perror(file.c_str());
        exit(2);
    }
    control_ = static_cast<Control *>(page);
}

Page::~Page()
{
    munmap(control_, sizeof *control_);
}

void Page::arm(const Fault &fault, long nth, Action action, bool forever)
{
    control_->kind = noCalls;
    control_->nth = nth;
    control_->forever = forever;
    control_->error = fault.error;
    control_->action = action;
    control_->count = 0;
    control_->struck = 0;
    memset(control_->name, 0, sizeof control_->name);
    control_->isSurvey = 0;
    control_->placeCount = 0;
    control_->kind = fault.kind;
}

void Page::survey(const Fault &fault)
{
    arm(fault, 0);
    control_->isSurvey = 1;
}

std::vector<long> Page::places() const
{
    return {control_->places, control_->places + control_->placeCount.load()};
}

void Page::disarm()
{
    control_->kind = noCalls;
}

} // namespace torture
