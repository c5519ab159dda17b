// SPDX-License-Identifier: Apache-2.0
// A text that is appended to.
#ifndef HOST_CORE_TEXT_BUFFER_H
#define HOST_CORE_TEXT_BUFFER_H

#include "cmpi/memory_budget.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

namespace host
{

class TextBuffer
{
  public:
    TextBuffer() = default;

    /** A buffer whose memory counts as the request's; MemoryExceeded is thrown when that has too much. */
    explicit TextBuffer(MemoryShare &memory) : memory_(&memory) {}

    TextBuffer(const TextBuffer &) = delete;
    TextBuffer &operator=(const TextBuffer &) = delete;

    ~TextBuffer()
    {
        std::free(data_);
    }

    void append(std::string_view text)
    {
        char *place = grow(text.size());
        std::memcpy(place, text.data(), text.size());
        size_ += text.size();
    }

    void append(char letter)
    {
        *grow(1) = letter;
        ++size_;
    }

    /** Room for that many bytes at the end; extend() says how many were used. */
    char *grow(std::size_t bytes)
    {
        if (capacity_ - size_ <= bytes) {
            enlarge(bytes);
        }
        return data_ + size_;
    }

    void extend(std::size_t bytes)
    {
        size_ += bytes;
    }

    /** Puts the text before what is there. */
    void prepend(std::string_view text)
    {
        grow(text.size());
        std::memmove(data_ + text.size(), data_, size_);
        std::memcpy(data_, text.data(), text.size());
        size_ += text.size();
    }

    /** Takes back what was appended after that size. */
    void truncate(std::size_t size)
    {
        size_ = size;
    }

    /** Empties the buffer; its memory is used again. */
    void clear()
    {
        size_ = 0;
    }

    char *data()
    {
        return data_;
    }

    std::size_t size() const
    {
        return size_;
    }

    std::string_view view() const
    {
        return {data_, size_};
    }

  private:
    static constexpr std::size_t firstBytes = std::size_t{32} * 1024;

    void enlarge(std::size_t bytes)
    {
        std::size_t capacity = capacity_ == 0 ? firstBytes : capacity_ * 2;
        while (capacity - size_ <= bytes) {
            capacity *= 2;
        }
        if (memory_ != nullptr && !memory_->take(capacity - capacity_)) {
            throw MemoryExceeded();
        }
        char *data = static_cast<char *>(std::realloc(data_, capacity));
        if (data == nullptr) {
            throw std::bad_alloc();
        }
        data_ = data;
        capacity_ = capacity;
    }

    MemoryShare *memory_ = nullptr;
    char *data_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace host

#endif
