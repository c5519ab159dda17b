// SPDX-License-Identifier: Apache-2.0
// Memory that one owner gives back all at once. Everything that is made while a request runs lives in the
// arena of that request; a cloned object lives in an arena of its own.
#ifndef HOST_CMPI_ARENA_H
#define HOST_CMPI_ARENA_H

#include "cmpi/memory_budget.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>

namespace host
{

/** A bump allocator. Nothing in it is destroyed, so only trivially destructible things may live there. Not
 * for use by two threads at once. */
class Arena
{
  public:
    static constexpr std::size_t defaultLimit = std::size_t{64} * 1024 * 1024;

    /** firstChunk: bytes of the first chunk, taken at the first allocation; limit: see exhausted(). */
    explicit Arena(std::size_t firstChunk = 512, std::size_t limit = defaultLimit)
        : nextChunk_(firstChunk), limit_(limit)
    {
    }

    /** An arena whose memory counts as the request's. */
    Arena(std::size_t firstChunk, MemoryShare &memory)
        : nextChunk_(firstChunk), limit_(defaultLimit), memory_(&memory)
    {
    }

    Arena(const Arena &) = delete;
    Arena &operator=(const Arena &) = delete;

    ~Arena()
    {
        freeChunks(nullptr);
    }

    /** Memory of that size, never null; std::bad_alloc when the system has none left. */
    void *allocate(std::size_t size, std::size_t alignment = alignof(std::max_align_t))
    {
        const std::size_t start = (cursor_ + alignment - 1) & ~(alignment - 1);
        if (chunk_ != nullptr && start <= chunk_->size && size <= chunk_->size - start) {
            cursor_ = start + size;
            return chunk_->bytes() + start;
        }
        return allocateInNewChunk(size);
    }

    /** An object of trivially destructible type. */
    template <typename T, typename... Arguments>
    T *make(Arguments &&...arguments)
    {
        static_assert(std::is_trivially_destructible_v<T>);
        return new (allocate(sizeof(T), alignof(T))) T{std::forward<Arguments>(arguments)...};
    }

    /** Value-initialised elements. */
    template <typename T>
    T *makeArray(std::size_t count)
    {
        static_assert(std::is_trivially_destructible_v<T>);
        T *elements = static_cast<T *>(allocate(count * sizeof(T), alignof(T)));
        std::uninitialized_value_construct_n(elements, count);
        return elements;
    }

    /** A zero-terminated copy of the text. */
    char *copyText(std::string_view text)
    {
        char *copy = static_cast<char *>(allocate(text.size() + 1, 1));
        if (!text.empty()) {
            std::memcpy(copy, text.data(), text.size());
        }
        copy[text.size()] = '\0';
        return copy;
    }

    /** Gives everything back; one chunk of ordinary size is kept for the next round. */
    void reset()
    {
        Chunk *kept = nullptr;
        for (Chunk *chunk = chunk_; chunk != nullptr; chunk = chunk->next) {
            if (chunk->size <= keptChunk && (kept == nullptr || chunk->size > kept->size)) {
                kept = chunk;
            }
        }
        freeChunks(kept);
        chunk_ = kept;
        if (kept != nullptr) {
            kept->next = nullptr;
        }
        cursor_ = 0;
        used_ = kept != nullptr ? kept->size : 0;
    }

    /** True when the arena has grown beyond its limit. Allocating still works: whoever makes objects for a
     * provider asks first and refuses. */
    bool exhausted() const
    {
        return used_ > limit_ || (memory_ != nullptr && memory_->exhausted());
    }

    /** Bytes taken from the system. */
    std::size_t footprint() const
    {
        return used_;
    }

  private:
    struct alignas(std::max_align_t) Chunk {
        Chunk *next;
        std::size_t size;

        char *bytes()
        {
            return reinterpret_cast<char *>(this + 1);
        }
    };

    static constexpr std::size_t keptChunk = std::size_t{1024} * 1024;

    void *allocateInNewChunk(std::size_t size)
    {
        const std::size_t bytes = std::max(size, nextChunk_);
        if (bytes > SIZE_MAX - sizeof(Chunk)) {
            throw std::bad_alloc();
        }
        void *memory = std::malloc(sizeof(Chunk) + bytes);
        if (memory == nullptr) {
            throw std::bad_alloc();
        }
        if (memory_ != nullptr) {
            memory_->force(sizeof(Chunk) + bytes);
        }
        chunk_ = new (memory) Chunk{chunk_, bytes};
        used_ += bytes;
        nextChunk_ = std::clamp<std::size_t>(nextChunk_ * 2, 512, keptChunk);
        cursor_ = size;
        return chunk_->bytes();
    }

    void freeChunks(const Chunk *kept)
    {
        for (Chunk *chunk = chunk_; chunk != nullptr;) {
            Chunk *next = chunk->next;
            if (chunk != kept) {
                if (memory_ != nullptr) {
                    memory_->giveBack(sizeof(Chunk) + chunk->size);
                }
                std::free(chunk);
            }
            chunk = next;
        }
    }

    Chunk *chunk_ = nullptr;
    std::size_t cursor_ = 0;
    std::size_t used_ = 0;
    std::size_t nextChunk_;
    std::size_t limit_;
    MemoryShare *memory_ = nullptr;
};

/** A growing list in an arena. */
template <typename T>
class ArenaList
{
  public:
    explicit ArenaList(Arena &arena) : arena_(&arena) {}

    void append(const T &item)
    {
        static_assert(std::is_trivially_copyable_v<T>);
        if (size_ == capacity_) {
            enlarge(capacity_ == 0 ? 8 : capacity_ * 2);
        }
        new (items_ + size_) T(item);
        ++size_;
    }

    void append(const T *items, std::size_t count)
    {
        static_assert(std::is_trivially_copyable_v<T>);
        if (capacity_ - size_ < count) {
            enlarge(std::max(size_ + count, capacity_ * 2));
        }
        std::uninitialized_copy_n(items, count, items_ + size_);
        size_ += count;
    }

    void clear()
    {
        size_ = 0;
    }

    void truncate(std::size_t size)
    {
        size_ = std::min(size_, size);
    }

    std::size_t size() const
    {
        return size_;
    }

    bool empty() const
    {
        return size_ == 0;
    }

    T &operator[](std::size_t index)
    {
        return items_[index];
    }

    const T &operator[](std::size_t index) const
    {
        return items_[index];
    }

    T *begin()
    {
        return items_;
    }

    T *end()
    {
        return items_ + size_;
    }

    const T *begin() const
    {
        return items_;
    }

    const T *end() const
    {
        return items_ + size_;
    }

    Arena &arena() const
    {
        return *arena_;
    }

  private:
    void enlarge(std::size_t capacity)
    {
        T *items = static_cast<T *>(arena_->allocate(capacity * sizeof(T), alignof(T)));
        if (size_ != 0) {
            std::memcpy(static_cast<void *>(items), items_, size_ * sizeof(T));
        }
        items_ = items;
        capacity_ = capacity;
    }

    Arena *arena_;
    T *items_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace host

#endif
