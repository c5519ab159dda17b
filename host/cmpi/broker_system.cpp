// SPDX-License-Identifier: Apache-2.0
// The broker's tables of the operating system (threads, locks) and of memory.
#include "cmpi/broker.h"
#include "cmpi/call.h"
#include "cmpi/object_tables.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <pthread.h>
#include <string>

namespace host
{
namespace
{

// --------------------------------------------------------------------------------------- operating system

/** The file name of a library, in memory that the caller frees. */
char *resolveFileName(const char *name)
{
    return name != nullptr ? strdup(("lib" + std::string(name) + ".so").c_str()) : nullptr;
}

void *newThread(CMPIThreadFunc function, void *argument, int detached)
{
    pthread_attr_t attributes;
    if (function == nullptr || pthread_attr_init(&attributes) != 0) {
        return nullptr;
    }
    pthread_attr_setdetachstate(&attributes,
                                detached != 0 ? PTHREAD_CREATE_DETACHED : PTHREAD_CREATE_JOINABLE);
    pthread_t thread = {};
    const int problem = pthread_create(&thread, &attributes, function, argument);
    pthread_attr_destroy(&attributes);
    static_assert(sizeof(pthread_t) <= sizeof(void *));
    return problem == 0 ? reinterpret_cast<void *>(thread) : nullptr;
}

int joinThread(void *thread, void **result)
{
    return pthread_join(reinterpret_cast<pthread_t>(thread), result);
}

int exitThread(void *result)
{
    pthread_exit(result);
    return 0; // never reached; CMPI wants a value
}

int cancelThread(void *thread)
{
    return pthread_cancel(reinterpret_cast<pthread_t>(thread));
}

int threadSleep(CMPIUint32 milliseconds)
{
    const timespec time = {static_cast<time_t>(milliseconds / 1000),
                           static_cast<long>(milliseconds % 1000) * 1000000};
    return nanosleep(&time, nullptr) == 0 ? 0 : errno;
}

int threadOnce(int *once, CMPIThreadOnceFunc function)
{
    static_assert(sizeof(pthread_once_t) == sizeof(int) && PTHREAD_ONCE_INIT == 0);
    return once == nullptr || function == nullptr
               ? EINVAL
               : pthread_once(reinterpret_cast<pthread_once_t *>(once), function);
}

int createThreadKey(unsigned int *key, CMPIThreadKeyCleanupFunc cleanup)
{
    static_assert(sizeof(pthread_key_t) == sizeof(unsigned int));
    return key == nullptr ? EINVAL : pthread_key_create(key, cleanup);
}

int destroyThreadKey(unsigned int key)
{
    return pthread_key_delete(key);
}

void *getThreadSpecific(unsigned int key)
{
    return pthread_getspecific(key);
}

int setThreadSpecific(unsigned int key, void *value)
{
    return pthread_setspecific(key, value);
}

void *newMutex(int)
{
    auto *mutex = new pthread_mutex_t;
    pthread_mutex_init(mutex, nullptr);
    return mutex;
}

void destroyMutex(void *mutex)
{
    if (mutex != nullptr) {
        pthread_mutex_destroy(static_cast<pthread_mutex_t *>(mutex));
        delete static_cast<pthread_mutex_t *>(mutex);
    }
}

void lockMutex(void *mutex)
{
    if (mutex != nullptr) {
        pthread_mutex_lock(static_cast<pthread_mutex_t *>(mutex));
    }
}

void unlockMutex(void *mutex)
{
    if (mutex != nullptr) {
        pthread_mutex_unlock(static_cast<pthread_mutex_t *>(mutex));
    }
}

void *newCondition(int)
{
    auto *condition = new pthread_cond_t;
    pthread_cond_init(condition, nullptr);
    return condition;
}

void destroyCondition(void *condition)
{
    if (condition != nullptr) {
        pthread_cond_destroy(static_cast<pthread_cond_t *>(condition));
        delete static_cast<pthread_cond_t *>(condition);
    }
}

int condWait(void *condition, void *mutex)
{
    if (condition == nullptr || mutex == nullptr) {
        return EINVAL;
    }
    return pthread_cond_wait(static_cast<pthread_cond_t *>(condition), static_cast<pthread_mutex_t *>(mutex));
}

/** wait: the point in time (of the real-time clock) until which to wait. */
int timedCondWait(void *condition, void *mutex, struct timespec *wait)
{
    if (condition == nullptr || mutex == nullptr || wait == nullptr) {
        return EINVAL;
    }
    return pthread_cond_timedwait(static_cast<pthread_cond_t *>(condition),
                                  static_cast<pthread_mutex_t *>(mutex), wait);
}

int signalCondition(void *condition)
{
    return condition == nullptr ? EINVAL : pthread_cond_broadcast(static_cast<pthread_cond_t *>(condition));
}

// ------------------------------------------------------------------------------------------------- memory

/** Marks cannot be offered: what a provider has returned lies in the same memory as what it would give back.
 */
CMPIGcStat *mark(const CMPIBroker *, CMPIStatus *status)
{
    setStatus(status, CMPI_RC_ERR_NOT_SUPPORTED);
    return nullptr;
}

CMPIStatus releaseMark(const CMPIBroker *, const CMPIGcStat *)
{
    return makeStatus(CMPI_RC_ERR_NOT_SUPPORTED);
}

/** Memory of the call, with its size in front. */
struct alignas(std::max_align_t) Block {
    std::size_t size;
};

void *cmpiMalloc(const CMPIBroker *, std::size_t size)
{
    const Call *call = currentCall();
    if (call == nullptr || call->arena->exhausted() || size > Arena::defaultLimit) {
        return nullptr;
    }
    auto *block = static_cast<Block *>(call->arena->allocate(sizeof(Block) + size, alignof(Block)));
    block->size = size;
    return block + 1;
}

void *cmpiCalloc(const CMPIBroker *broker, std::size_t count, std::size_t size)
{
    std::size_t total = 0;
    void *memory = __builtin_mul_overflow(count, size, &total) ? nullptr : cmpiMalloc(broker, total);
    return memory != nullptr ? std::memset(memory, 0, total) : nullptr;
}

void *cmpiRealloc(const CMPIBroker *broker, void *memory, std::size_t size)
{
    void *larger = cmpiMalloc(broker, size);
    if (larger != nullptr && memory != nullptr) {
        const std::size_t before = (static_cast<const Block *>(memory) - 1)->size;
        std::memcpy(larger, memory, std::min(before, size));
    }
    return larger;
}

char *cmpiStrDup(const CMPIBroker *broker, const char *text)
{
    if (text == nullptr) {
        return nullptr;
    }
    const std::size_t size = std::strlen(text) + 1;
    void *copy = cmpiMalloc(broker, size);
    return copy != nullptr ? static_cast<char *>(std::memcpy(copy, text, size)) : nullptr;
}

void cmpiFree(const CMPIBroker *, void *)
{
    // The memory goes back with the rest of the call's.
}

template <typename T>
void freeObject(const CMPIBroker *, typename T::Cmpi *object)
{
    releaseObject<T>(object);
}

} // namespace

const CMPIBrokerExtFT brokerSystemTable = {
    tableVersion, resolveFileName, newThread,       joinThread,       exitThread,        cancelThread,
    threadSleep,  threadOnce,      createThreadKey, destroyThreadKey, getThreadSpecific, setThreadSpecific,
    newMutex,     destroyMutex,    lockMutex,       unlockMutex,      newCondition,      destroyCondition,
    condWait,     timedCondWait,   signalCondition,
};

const CMPIBrokerMemFT brokerMemoryTable = {
    tableVersion,
    mark,
    releaseMark,
    cmpiMalloc,
    cmpiCalloc,
    cmpiRealloc,
    cmpiStrDup,
    cmpiFree,
    freeObject<Instance>,
    freeObject<Path>,
    freeObject<Args>,
    freeObject<String>,
    freeObject<Array>,
    freeObject<DateTime>,
    freeObject<SelectExpression>,
};

} // namespace host
