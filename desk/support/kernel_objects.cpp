// SPDX-License-Identifier: Apache-2.0
#include "support/kernel_objects.h"

#include <sys/ipc.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace desk
{

namespace
{

constexpr int ownerOnly = 0600;

[[noreturn]] void fail(const char *what, key_t key, const std::string &reason)
{
    char text[32];
    snprintf(text, sizeof text, " of key 0x%08x ", static_cast<unsigned>(key));
    throw KernelError(what + std::string(text) + reason);
}

/** Why an object was not given. What another user has made for himself alone is there and cannot be had. */
std::string refusal()
{
    return errno == EACCES || errno == EPERM
               ? std::string("belongs to another user; choose another key with DESK_MONITOR_QUEUE_KEY")
               : std::string("cannot be had: ") + strerror(errno);
}

void expectOwn(const char *what, key_t key, const ipc_perm &permissions)
{
    if (permissions.uid != geteuid() || permissions.cuid != geteuid()) {
        errno = EACCES;
        fail(what, key, refusal());
    }
    if ((permissions.mode & 0077) != 0) {
        fail(what, key, "lets other users in, which the desk never does; remove it");
    }
}

// The caller of semctl declares its argument.
union SemaphoreArgument {
    int value;
    semid_ds *state;
};

} // namespace

int obtainQueue(key_t key)
{
    const int identifier = msgget(key, IPC_CREAT | ownerOnly);
    msqid_ds state;
    if (identifier == -1 || msgctl(identifier, IPC_STAT, &state) == -1) {
        fail("the message queue", key, refusal());
    }
    expectOwn("the message queue", key, state.msg_perm);
    return identifier;
}

SharedMemory::SharedMemory(key_t key, std::size_t size, Access access)
    : key_(key), identifier_(shmget(key, size, access == Access::write ? IPC_CREAT | ownerOnly : 0))
{
    shmid_ds state;
    if (identifier_ == -1 || shmctl(identifier_, IPC_STAT, &state) == -1) {
        fail("the shared memory", key, errno == EINVAL ? "is another program's" : refusal());
    }
    expectOwn("the shared memory", key, state.shm_perm);
    address_ = shmat(identifier_, nullptr, access == Access::read ? SHM_RDONLY : 0);
    if (address_ == reinterpret_cast<void *>(-1)) {
        fail("the shared memory", key, refusal());
    }
}

SharedMemory::~SharedMemory()
{
    shmdt(address_);
}

bool SharedMemory::inPlace() const
{
    return shmget(key_, 0, 0) == identifier_;
}

void removeSharedMemory(key_t key)
{
    const int identifier = shmget(key, 0, 0);
    if (identifier != -1) {
        shmctl(identifier, IPC_RMID, nullptr);
    }
}

EnginePlace::EnginePlace(key_t key) : identifier_(semget(key, 1, IPC_CREAT | ownerOnly))
{
    semid_ds state;
    SemaphoreArgument argument{};
    argument.state = &state;
    if (identifier_ == -1 || semctl(identifier_, 0, IPC_STAT, argument) == -1) {
        fail("the semaphore", key, refusal());
    }
    expectOwn("the semaphore", key, state.sem_perm);
    sembuf take[] = {{0, 0, IPC_NOWAIT}, {0, 1, IPC_NOWAIT | SEM_UNDO}}; // when it is zero, one more, at once
    if (semop(identifier_, take, 2) == -1) {
        if (errno != EAGAIN) {
            fail("the semaphore", key, refusal());
        }
        char text[64];
        snprintf(text, sizeof text, "another engine serves the queues of key 0x%x",
                 static_cast<unsigned>(key));
        throw KernelError(text);
    }
}

EnginePlace::~EnginePlace()
{
    sembuf leave{0, -1, IPC_NOWAIT | SEM_UNDO};
    semop(identifier_, &leave, 1);
}

void EnginePlace::remove()
{
    semctl(identifier_, 0, IPC_RMID);
}

bool EnginePlace::isTaken(key_t key)
{
    const int identifier = semget(key, 1, 0);
    return identifier != -1 && semctl(identifier, 0, GETVAL) > 0;
}

void EnginePlace::removeUnused(key_t key)
{
    const int identifier = semget(key, 1, 0);
    if (identifier != -1 && !isTaken(key)) {
        semctl(identifier, 0, IPC_RMID);
    }
}

} // namespace desk
