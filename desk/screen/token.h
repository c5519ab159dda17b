// SPDX-License-Identifier: Apache-2.0
// The token that changes need. Who has the URL that the program prints has it; no other page and no other
// user has.
#ifndef DESK_SCREEN_TOKEN_H
#define DESK_SCREEN_TOKEN_H

#include <string>
#include <string_view>

namespace desk::screen
{

/** A new one: 32 hexadecimal digits. Throws std::runtime_error. */
std::string newToken();

/** The one that stands in the file; where there is no file, a new one, which is then written there for its
 * owner alone. Throws std::runtime_error when the file holds none, or others can read it. */
std::string tokenOfFile(const std::string &file);

/** Takes as long whatever the difference is. */
bool sameToken(std::string_view left, std::string_view right);

} // namespace desk::screen

#endif
