// SPDX-License-Identifier: Apache-2.0
// Loaded before all other libraries: the n-th call of a kind fails, as the page of control.h says, which the
// environment names. Calls inside the C library are not seen; what programs and their libraries call is.

#include "control.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <link.h>
#include <poll.h>
#include <pthread.h>
#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

using namespace torture;

extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);
void *__libc_memalign(size_t alignment, size_t size);
}

namespace
{

Control *control = nullptr;
bool traces = false; // with FAILING_CALLS_TRACE set, where the call that fails came from is printed

void trace()
{
    static thread_local bool within = false;
    if (!traces || within) {
        return;
    }
    within = true; // this calls, too
    const int kind = control->kind.exchange(noCalls);
    void *frames[40];
    backtrace_symbols_fd(frames, backtrace(frames, 40), STDERR_FILENO);
    control->kind = kind;
    within = false;
}

bool isCounted(int kinds)
{
    return control && (control->kind.load() & kinds);
}

/** Some code ends the process when there is no memory, whatever a program does. Its allocations never fail:
 * of the C library where the loader gives a thread its variables of a library, where their destructors are
 * noted, and where it learns where names of users are to be looked up; GMP as a whole; libtasn1, which goes
 * on with the object that it has not got. */
struct Code {
    const char *begin = nullptr;
    const char *end = nullptr;

    bool has(const void *place) const
    {
        const auto *at = static_cast<const char *>(place);
        return at >= begin && at < end;
    }
};
Code endsProcess[8];
size_t endsProcessCount = 0;
Code readsLines; // of the C library, for many

void noteCode(const void *begin, size_t size)
{
    if (begin != nullptr && endsProcessCount < sizeof endsProcess / sizeof *endsProcess) {
        const auto *at = static_cast<const char *>(begin);
        endsProcess[endsProcessCount++] = {at, at + size};
    }
}

void findPlaces()
{
    noteCode(dlsym(RTLD_DEFAULT, "__cxa_thread_atexit_impl"), 512);
    // What it calls stands before it and behind it.
    if (const auto *names =
            static_cast<const char *>(dlvsym(RTLD_DEFAULT, "__nss_database_get", "GLIBC_PRIVATE"))) {
        noteCode(names - 4096, 8192);
    }
    readsLines.begin = static_cast<const char *>(dlsym(RTLD_DEFAULT, "getdelim"));
    readsLines.end = readsLines.begin + 1024;
    dl_iterate_phdr(
        [](dl_phdr_info *info, size_t, void *) {
            const bool isMeant = strstr(info->dlpi_name, "/ld-linux") ||
                                 strstr(info->dlpi_name, "/libgmp.so") ||
                                 strstr(info->dlpi_name, "/libtasn1.so");
            for (int i = 0; isMeant && i < info->dlpi_phnum; ++i) {
                const auto &part = info->dlpi_phdr[i];
                if (part.p_type == PT_LOAD && (part.p_flags & PF_X)) {
                    noteCode(reinterpret_cast<const void *>(info->dlpi_addr + part.p_vaddr), part.p_memsz);
                }
            }
            return 0;
        },
        nullptr);
}

bool isNoted(const void *place)
{
    for (size_t i = 0; i < endsProcessCount; ++i) {
        if (endsProcess[i].has(place)) {
            return true;
        }
    }
    return false;
}

thread_local bool isLooking = false; // backtrace() may call what is counted

bool endsProcessByDesign(const void *caller)
{
    if (!readsLines.has(caller) || isLooking) {
        return isNoted(caller);
    }
    void *frames[6];
    isLooking = true;
    const int count = backtrace(frames, 6);
    isLooking = false;
    return std::any_of(frames, frames + count, isNoted);
}

/** Notes the call where its callers are others than those of all before. Of an address those bits count that
 * are the same wherever a library is loaded. */
void survey(Control *page, long number)
{
    constexpr int depth = 12;
    constexpr uintptr_t withinPage = 0xFFF;
    static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    void *frames[depth];
    isLooking = true;
    const int count = backtrace(frames, depth);
    isLooking = false;
    uint64_t place = 14695981039346656037U;
    for (int i = 0; i < count; ++i) {
        place = (place ^ (reinterpret_cast<uintptr_t>(frames[i]) & withinPage)) * 1099511628211U;
    }
    pthread_mutex_lock(&mutex);
    size_t at = place % (4 * mostPlaces);
    while (page->knownPlaces[at] != 0 && page->knownPlaces[at] != place) {
        at = (at + 1) % (4 * mostPlaces);
    }
    if (page->knownPlaces[at] == 0 && page->placeCount < mostPlaces) {
        page->knownPlaces[at] = place;
        page->places[page->placeCount++] = number;
    }
    pthread_mutex_unlock(&mutex);
}

/** Counts a call; true when it is to fail, errno then says why. */
bool strikes(int kinds, const char *name)
{
    if (!isCounted(kinds) || isLooking) {
        return false;
    }
    Control *page = control;
    const long number = ++page->count;
    if (page->isSurvey.load() != 0) {
        survey(page, number);
        return false;
    }
    const long nth = page->nth.load();
    if (nth == 0 || number < nth || (number > nth && page->forever.load() == 0)) {
        return false;
    }
    if (++page->struck == 1) {
        strncpy(page->name, name, sizeof page->name - 1);
        trace();
    }
    if (page->action.load() == killBefore) {
        kill(getpid(), SIGKILL);
    }
    errno = page->error.load();
    return page->action.load() == fail;
}

template <typename Function>
Function next(Function, const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

int kindOf(int descriptor, bool changes)
{
    struct stat status = {};
    const int before = errno;
    const bool known = fstat(descriptor, &status) == 0;
    errno = before;
    if (known && S_ISREG(status.st_mode)) {
        return changes ? fileCalls | writeCalls : fileCalls;
    }
    // What a program says to its user is not made to fail.
    return known && S_ISSOCK(status.st_mode) ? socketCalls : noCalls;
}

/** The process is killed behind the call; of a write half is done. */
bool isCutShort()
{
    return control && control->kind.load() != noCalls && control->action.load() == killAfter &&
           control->struck.load() == 1;
}

[[gnu::constructor]] void findControl()
{
    const char *file = getenv(controlVariable);
    const int descriptor = file ? open(file, O_RDWR | O_CLOEXEC) : -1;
    if (descriptor < 0) {
        return;
    }
    void *page = mmap(nullptr, sizeof(Control), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    close(descriptor);
    findPlaces();
    traces = getenv("FAILING_CALLS_TRACE") != nullptr;
    control = page == MAP_FAILED ? nullptr : static_cast<Control *>(page);
}

} // namespace

// Of functions with fixed arguments: the wrapper of each is the same.
#define FAILS(Result, failure, kinds, name, parameters, arguments)                                           \
    extern "C" Result name parameters                                                                        \
    {                                                                                                        \
        static const auto real = next(&name, #name);                                                         \
        if (strikes(kinds, #name)) {                                                                         \
            return failure;                                                                                  \
        }                                                                                                    \
        if (isCutShort()) {                                                                                  \
            (void)!real arguments;                                                                           \
            kill(getpid(), SIGKILL);                                                                         \
        }                                                                                                    \
        return real arguments;                                                                               \
    }

// A macro, for the address of the caller.
#define fails(name)                                                                                          \
    (isCounted(memoryCalls) && !endsProcessByDesign(__builtin_return_address(0)) &&                          \
     strikes(memoryCalls, name))

extern "C" {

void *malloc(size_t size) noexcept
{
    return fails("malloc") ? nullptr : __libc_malloc(size);
}
void *calloc(size_t count, size_t size) noexcept
{
    return fails("calloc") ? nullptr : __libc_calloc(count, size);
}
void *realloc(void *block, size_t size) noexcept
{
    return fails("realloc") ? nullptr : __libc_realloc(block, size);
}
void *aligned_alloc(size_t alignment, size_t size) noexcept
{
    return fails("aligned_alloc") ? nullptr : __libc_memalign(alignment, size);
}
int posix_memalign(void **block, size_t alignment, size_t size) noexcept
{
    if (fails("posix_memalign")) {
        return ENOMEM;
    }
    *block = __libc_memalign(alignment, size);
    return *block ? 0 : ENOMEM;
}

#define OPENS(name, parameters, arguments)                                                                   \
    int name parameters                                                                                      \
    {                                                                                                        \
        va_list rest;                                                                                        \
        va_start(rest, flags);                                                                               \
        const mode_t mode = (flags & (O_CREAT | __O_TMPFILE)) ? va_arg(rest, mode_t) : 0;                    \
        va_end(rest);                                                                                        \
        const bool changes = (flags & (O_CREAT | O_TRUNC)) != 0;                                             \
        if (strikes(changes ? fileCalls | writeCalls : fileCalls, #name)) {                                  \
            return -1;                                                                                       \
        }                                                                                                    \
        static const auto real = next(&name, #name);                                                         \
        if (isCutShort()) {                                                                                  \
            (void)!real arguments;                                                                           \
            kill(getpid(), SIGKILL);                                                                         \
        }                                                                                                    \
        return real arguments;                                                                               \
    }
OPENS(open, (const char *path, int flags, ...), (path, flags, mode))
OPENS(open64, (const char *path, int flags, ...), (path, flags, mode))
OPENS(openat, (int at, const char *path, int flags, ...), (at, path, flags, mode))
OPENS(openat64, (int at, const char *path, int flags, ...), (at, path, flags, mode))

#define WRITES(name, parameters, arguments, half)                                                            \
    ssize_t name parameters                                                                                  \
    {                                                                                                        \
        static const auto real = next(&name, #name);                                                         \
        if (strikes(kindOf(descriptor, true), #name)) {                                                      \
            return -1;                                                                                       \
        }                                                                                                    \
        if (isCutShort()) {                                                                                  \
            (void)!real half;                                                                                \
            kill(getpid(), SIGKILL);                                                                         \
        }                                                                                                    \
        return real arguments;                                                                               \
    }
WRITES(write, (int descriptor, const void *data, size_t size), (descriptor, data, size),
       (descriptor, data, size / 2))
WRITES(pwrite, (int descriptor, const void *data, size_t size, off_t at), (descriptor, data, size, at),
       (descriptor, data, size / 2, at))
WRITES(pwrite64, (int descriptor, const void *data, size_t size, off64_t at), (descriptor, data, size, at),
       (descriptor, data, size / 2, at))
WRITES(writev, (int descriptor, const iovec *parts, int count), (descriptor, parts, count),
       (descriptor, parts, count > 1 ? count / 2 : count))

} // extern "C"

FAILS(ssize_t, -1, kindOf(descriptor, false), read, (int descriptor, void *data, size_t size),
      (descriptor, data, size))
FAILS(ssize_t, -1, fileCalls, pread, (int descriptor, void *data, size_t size, off_t at),
      (descriptor, data, size, at))
FAILS(ssize_t, -1, fileCalls, pread64, (int descriptor, void *data, size_t size, off64_t at),
      (descriptor, data, size, at))
FAILS(int, -1, fileCalls | writeCalls, fsync, (int descriptor), (descriptor))
FAILS(int, -1, fileCalls | writeCalls, fdatasync, (int descriptor), (descriptor))
FAILS(int, -1, fileCalls | writeCalls, ftruncate, (int descriptor, off_t size) noexcept, (descriptor, size))
FAILS(int, -1, fileCalls | writeCalls, ftruncate64, (int descriptor, off64_t size) noexcept,
      (descriptor, size))
FAILS(int, -1, fileCalls | writeCalls, rename, (const char *from, const char *to) noexcept, (from, to))
FAILS(int, -1, fileCalls | writeCalls, unlink, (const char *path) noexcept, (path))
FAILS(int, -1, fileCalls | writeCalls, mkdir, (const char *path, mode_t mode) noexcept, (path, mode))
FAILS(void *, MAP_FAILED, fileCalls, mmap,
      (void *at, size_t size, int protection, int flags, int descriptor, off_t offset) noexcept,
      (at, size, protection, flags, descriptor, offset))
FAILS(void *, MAP_FAILED, fileCalls, mmap64,
      (void *at, size_t size, int protection, int flags, int descriptor, off64_t offset) noexcept,
      (at, size, protection, flags, descriptor, offset))

FAILS(int, -1, socketCalls, socket, (int domain, int type, int protocol) noexcept, (domain, type, protocol))
FAILS(int, -1, socketCalls, bind, (int descriptor, const sockaddr *address, socklen_t size) noexcept,
      (descriptor, address, size))
FAILS(int, -1, socketCalls, listen, (int descriptor, int backlog) noexcept, (descriptor, backlog))
FAILS(int, -1, socketCalls, accept, (int descriptor, sockaddr *address, socklen_t *size),
      (descriptor, address, size))
FAILS(int, -1, socketCalls, accept4, (int descriptor, sockaddr *address, socklen_t *size, int flags),
      (descriptor, address, size, flags))
FAILS(int, -1, socketCalls, connect, (int descriptor, const sockaddr *address, socklen_t size),
      (descriptor, address, size))
FAILS(int, -1, socketCalls, setsockopt,
      (int descriptor, int level, int name, const void *value, socklen_t size) noexcept,
      (descriptor, level, name, value, size))
FAILS(int, -1, socketCalls, getsockopt,
      (int descriptor, int level, int name, void *value, socklen_t *size) noexcept,
      (descriptor, level, name, value, size))
FAILS(ssize_t, -1, socketCalls, send, (int descriptor, const void *data, size_t size, int flags),
      (descriptor, data, size, flags))
FAILS(ssize_t, -1, socketCalls, sendto,
      (int descriptor, const void *data, size_t size, int flags, const sockaddr *to, socklen_t length),
      (descriptor, data, size, flags, to, length))
FAILS(ssize_t, -1, socketCalls, sendmsg, (int descriptor, const msghdr *message, int flags),
      (descriptor, message, flags))
FAILS(ssize_t, -1, socketCalls, recv, (int descriptor, void *data, size_t size, int flags),
      (descriptor, data, size, flags))
FAILS(ssize_t, -1, socketCalls, recvmsg, (int descriptor, msghdr *message, int flags),
      (descriptor, message, flags))
FAILS(int, -1, socketCalls, poll, (pollfd * descriptors, nfds_t count, int timeout),
      (descriptors, count, timeout))
FAILS(int, -1, socketCalls, epoll_create1, (int flags) noexcept, (flags))
FAILS(int, -1, socketCalls, epoll_ctl,
      (int epoll, int operation, int descriptor, epoll_event *event) noexcept,
      (epoll, operation, descriptor, event))
FAILS(int, -1, socketCalls, epoll_wait, (int epoll, epoll_event *events, int most, int timeout),
      (epoll, events, most, timeout))
FAILS(int, control->error.load(), socketCalls, pthread_create,
      (pthread_t * thread, const pthread_attr_t *attributes, void *(*start)(void *), void *argument) noexcept,
      (thread, attributes, start, argument))
