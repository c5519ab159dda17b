// SPDX-License-Identifier: Apache-2.0
// The lines of the history, how each is tied to the one before, and how a break is found.
#ifndef DISPLAYCTL_HISTORY_CHAIN_H
#define DISPLAYCTL_HISTORY_CHAIN_H

#include "history/history.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace displayctl::history
{

/** SHA-256 as 64 hexadecimal digits. */
[[nodiscard]] std::string sha256(std::string_view text);

/** The last line: its number, counted from 1, and its hash; before the first line 0 and zeros. */
struct End {
    std::uint64_t number = 0;
    std::string hash = std::string(64, '0');
};

/** The line, with its newline, that follows the end; the end moves on to it. The members number, previous
 * (the hash of the line before) and hash are added: hash is the SHA-256 of the line's document without this
 * member. */
[[nodiscard]] std::string seal(Json document, End &end);

/** Goes through the text of the history, which should lead to the given end. */
[[nodiscard]] Verification verifyChain(std::string_view text, const End &end);

} // namespace displayctl::history

#endif
