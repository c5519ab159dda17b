// SPDX-License-Identifier: Apache-2.0
// Preloaded into a program: its clock of the day is set forth or back by what the file SOAK_CLOCK holds, a
// number of nanoseconds, at any time. The machine's own clock is not touched, nor is what waits or measures
// by other clocks.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace
{

constexpr std::int64_t second = 1'000'000'000;

const std::atomic<std::int64_t> *offsetInFile()
{
    const char *name = std::getenv("SOAK_CLOCK");
    const int file = name == nullptr ? -1 : open(name, O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return nullptr;
    }
    void *place = mmap(nullptr, sizeof(std::int64_t), PROT_READ, MAP_SHARED, file, 0);
    close(file);
    return place == MAP_FAILED ? nullptr : static_cast<const std::atomic<std::int64_t> *>(place);
}

int realTime(clockid_t clock, timespec *time)
{
    using Function = int (*)(clockid_t, timespec *);
    static const auto real = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "clock_gettime"));
    return real(clock, time);
}

} // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    static const std::atomic<std::int64_t> *const offset = offsetInFile();
    const int result = realTime(clock, time);
    if (result == 0 && offset != nullptr && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE)) {
        const std::int64_t sum = time->tv_sec * second + time->tv_nsec + offset->load();
        time->tv_sec = sum / second;
        time->tv_nsec = sum % second;
    }
    return result;
}

int gettimeofday(timeval *time, void * /*zone*/) noexcept
{
    timespec now{};
    const int result = clock_gettime(CLOCK_REALTIME, &now);
    time->tv_sec = now.tv_sec;
    time->tv_usec = now.tv_nsec / 1000;
    return result;
}

time_t time(time_t *result) noexcept
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (result != nullptr) {
        *result = now.tv_sec;
    }
    return now.tv_sec;
}

} // extern "C"
