// SPDX-License-Identifier: Apache-2.0
#include "process/unused_memory.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <fstream>
#include <string>

namespace
{

using process::QuietTime;
using process::releaseUnusedMemory;

/** A library of the tests that is loaded. */
class Sample
{
  public:
    explicit Sample(const char *file) : file_(file), handle_(dlopen(file, RTLD_NOW)) {}
    Sample(const Sample &) = delete;
    Sample &operator=(const Sample &) = delete;
    ~Sample()
    {
        dlclose(handle_);
    }

    template <typename T>
    T *symbol(const char *name) const
    {
        return reinterpret_cast<T *>(dlsym(handle_, name));
    }
    int answer() const
    {
        return symbol<int()>("answer")();
    }

    /** The kilobytes of its code that are in memory, as the kernel tells them; -1 when it does not. */
    int codeInMemory() const
    {
        std::ifstream maps("/proc/self/smaps");
        std::string line;
        bool isCode = false;
        while (std::getline(maps, line)) {
            if (line.find(" r-xp ") != std::string::npos) {
                isCode = line.ends_with(file_);
            } else if (isCode && line.starts_with("Rss:")) {
                return std::stoi(line.substr(4));
            }
        }
        return -1;
    }

  private:
    std::string file_;
    void *handle_;
};

TEST(UnusedMemory, CodeIsGivenBackAndComesAgain)
{
    const Sample sample(SAMPLE_LIBRARY);
    EXPECT_EQ(sample.answer(), 42);
    EXPECT_EQ(sample.codeInMemory(), 4);
    releaseUnusedMemory();
    EXPECT_EQ(sample.codeInMemory(), 0);
    EXPECT_EQ(sample.answer(), 42);
    EXPECT_EQ(sample.codeInMemory(), 4);
}

TEST(UnusedMemory, WhatWasWrittenStays)
{
    const Sample sample(SAMPLE_LIBRARY);
    *sample.symbol<int>("counter") = 6;
    releaseUnusedMemory();
    EXPECT_EQ(*sample.symbol<int>("counter"), 6);
    EXPECT_STREQ(sample.symbol<const char *const>("names")[1], "one");
}

TEST(UnusedMemory, CodeThatWasChangedWhenLoadedStays)
{
    const Sample sample(CHANGED_LIBRARY);
    EXPECT_EQ(*sample.symbol<int (*)()>("addressInCode"), sample.symbol<int()>("answer"));
    EXPECT_EQ(sample.codeInMemory(), 4);
    releaseUnusedMemory();
    EXPECT_EQ(sample.codeInMemory(), 4);
    EXPECT_EQ((*sample.symbol<int (*)()>("addressInCode"))(), 42);
}

/** The tick at which memory is released, of at most so many; 0: none. */
int tickOfRelease(QuietTime &quiet, int ticks)
{
    for (int tick = 1; tick <= ticks; ++tick) {
        if (quiet.tick()) {
            return tick;
        }
    }
    return 0;
}

TEST(QuietTime, ReleasesOnceAfterTenSecondsWithNothingToDo)
{
    QuietTime quiet;
    EXPECT_EQ(tickOfRelease(quiet, 20), 10);
    EXPECT_EQ(tickOfRelease(quiet, 20), 0);
}

TEST(QuietTime, BeginsAnewAfterWork)
{
    QuietTime quiet;
    EXPECT_EQ(tickOfRelease(quiet, 9), 0);
    quiet.end();
    EXPECT_EQ(tickOfRelease(quiet, 20), 11); // the second in which there was work, and ten more
    quiet.end();
    quiet.end();
    EXPECT_EQ(tickOfRelease(quiet, 20), 11);
}

} // namespace
