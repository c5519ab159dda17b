// SPDX-License-Identifier: Apache-2.0
#include "support/commit_watch.h"

#include <sqlite3.h>

namespace desk
{

namespace
{

// As https://sqlite.org/walformat.html tells it.
constexpr std::uint32_t indexVersion = 3'007'000;
constexpr int indexBytes = 32 * 1024;

} // namespace

CommitWatch::CommitWatch(sqlite3 *database)
{
    sqlite3_file *file = nullptr;
    volatile void *index = nullptr;
    if (sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file) == SQLITE_OK &&
        file->pMethods->iVersion >= 2 &&
        file->pMethods->xShmMap(file, 0, indexBytes, 0, &index) == SQLITE_OK && index != nullptr) {
        const auto *words = static_cast<const volatile std::uint32_t *>(index);
        index_ = words[0] == indexVersion ? words : nullptr;
    }
}

void CommitWatch::note()
{
    for (std::size_t i = 0; works() && i < headerWords; ++i) {
        noted_[i] = index_[i];
    }
}

bool CommitWatch::saw() const
{
    for (std::size_t i = 0; works() && i < headerWords; ++i) {
        if (index_[i] != noted_[i]) {
            return true;
        }
    }
    return false;
}

} // namespace desk
