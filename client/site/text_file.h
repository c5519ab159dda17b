// SPDX-License-Identifier: Apache-2.0
#ifndef DISPLAYCTL_SITE_TEXT_FILE_H
#define DISPLAYCTL_SITE_TEXT_FILE_H

#include <filesystem>
#include <optional>
#include <string>

namespace displayctl::site
{

/** The whole content of a file; nothing when it is none, cannot be read, or cannot be read to its end. */
[[nodiscard]] std::optional<std::string> readTextFile(const std::filesystem::path &path);

} // namespace displayctl::site

#endif
