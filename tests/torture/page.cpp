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
    control = static_cast<Control *>(page);
}

Page::~Page()
{
    munmap(control, sizeof *control);
}

void Page::arm(const Fault &fault, long nth, Action action, bool forever)
{
    control->kind = noCalls;
    control->nth = nth;
    control->forever = forever;
    control->error = fault.error;
    control->action = action;
    control->count = 0;
    control->struck = 0;
    memset(control->name, 0, sizeof control->name);
    control->isSurvey = 0;
    control->placeCount = 0;
    control->kind = fault.kind;
}

void Page::survey(const Fault &fault)
{
    arm(fault, 0);
    control->isSurvey = 1;
}

std::vector<long> Page::places() const
{
    return {control->places, control->places + control->placeCount.load()};
}

void Page::disarm()
{
    control->kind = noCalls;
}

} // namespace torture
