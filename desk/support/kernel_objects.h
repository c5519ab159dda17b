// SPDX-License-Identifier: Apache-2.0
// The kernel's message queues and shared memory, as far as they are the user's own.
//
// Whoever is first on a machine may make an object of any key. One that belongs to another user, or lets
// others in, is never used: who it belongs to could read the requests and write the replies.
#ifndef DESK_SUPPORT_KERNEL_OBJECTS_H
#define DESK_SUPPORT_KERNEL_OBJECTS_H

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace desk
{

/** A queue, shared memory or a semaphore cannot be had; the text says which and why. */
struct KernelError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** A request on its way to the engine, or its reply: the 40 bytes of a message in an envelope with the ticket
 * of the request, which the kernel takes for the message's type. A queue gives out messages by their type, so
 * that each reply goes to who has the ticket. */
inline constexpr std::size_t messageSize = 40;
using MessageBytes = std::array<std::uint8_t, messageSize>;
struct Envelope {
    long ticket;
    MessageBytes bytes;
};
static_assert(offsetof(Envelope, bytes) == sizeof(long));

/** The identifier of the queue, made when it is not there. Throws KernelError. */
int obtainQueue(key_t key);

/** Attached shared memory of the key, made and zeroed when it is not there. */
class SharedMemory
{
  public:
    enum class Access { write, read };
    /** Throws KernelError; with Access::read also when there is none. */
    SharedMemory(key_t key, std::size_t size, Access access);
    ~SharedMemory();
    SharedMemory(const SharedMemory &) = delete;
    SharedMemory &operator=(const SharedMemory &) = delete;

    void *address() const
    {
        return address_;
    }
    /** False when it was removed since; it stays attached. */
    bool inPlace() const;

  private:
    key_t key_;
    int identifier_;
    void *address_;
};

/** Removes the shared memory of the key, for those who come after. */
void removeSharedMemory(key_t key);

/** The place of the one engine of a key. It is free again when the process has ended, however it does. */
class EnginePlace
{
  public:
    /** Throws KernelError when another engine has it, or another user. */
    explicit EnginePlace(key_t key);
    ~EnginePlace();
    EnginePlace(const EnginePlace &) = delete;
    EnginePlace &operator=(const EnginePlace &) = delete;
    /** True when an engine has the place of the key. */
    static bool isTaken(key_t key);
    /** Removes the semaphore of the key unless an engine has its place there. */
    static void removeUnused(key_t key);
    void remove();

  private:
    int identifier_;
};

} // namespace desk

#endif
