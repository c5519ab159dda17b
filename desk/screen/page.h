// SPDX-License-Identifier: Apache-2.0
// The files of the page, as they are compiled in.
#ifndef DESK_SCREEN_PAGE_H
#define DESK_SCREEN_PAGE_H

#include <span>
#include <string_view>

namespace desk::screen
{

struct PageFile {
    std::string_view path; // with the slash in front
    const char *type;
    std::span<const unsigned char> bytes;
};

std::span<const PageFile> pageFiles();

} // namespace desk::screen

#endif
