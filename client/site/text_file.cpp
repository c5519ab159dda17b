// SPDX-License-Identifier: Apache-2.0
#include "site/text_file.h"

#include <fstream>
#include <sstream>
#include <utility>

namespace displayctl::site
{

std::optional<std::string> readTextFile(const std::filesystem::path &path)
{
    std::ifstream stream{path, std::ios::binary};
    std::error_code problem;
    if (!stream || std::filesystem::is_directory(path, problem)) {
        return std::nullopt;
    }
    std::ostringstream text;
    if (stream.peek() != std::ifstream::traits_type::eof()) { // to write nothing is a failure of its own
        text << stream.rdbuf();
    }
    if (stream.bad() || text.bad()) {
        return std::nullopt;
    }
    return std::move(text).str();
}

} // namespace displayctl::site
