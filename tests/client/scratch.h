// SPDX-License-Identifier: Apache-2.0
// A directory of a test's own, gone when the test ends.
#ifndef TESTS_CLIENT_SCRATCH_H
#define TESTS_CLIENT_SCRATCH_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

class Scratch
{
  public:
    Scratch()
    {
        std::string name = std::filesystem::temp_directory_path() / "displayctl.XXXXXX";
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("mkdtemp");
        }
        path_ = name;
    }
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;
    ~Scratch()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] const std::filesystem::path &path() const
    {
        return path_;
    }

    /** Writes a file anew and returns its path. */
    [[nodiscard]] std::filesystem::path write(const std::string &name, const std::string &content) const
    {
        const std::filesystem::path file = path_ / name;
        std::filesystem::remove(file);
        std::ofstream{file, std::ios::binary} << content;
        return file;
    }

    [[nodiscard]] static std::string read(const std::filesystem::path &path)
    {
        std::ifstream file{path, std::ios::binary};
        return {std::istreambuf_iterator<char>{file}, {}};
    }

    /** The text without the name of this directory. */
    [[nodiscard]] std::string without(std::string text) const
    {
        const std::string name = path_.string() + '/';
        for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name)) {
            text.erase(at, name.size());
        }
        return text;
    }

  private:
    std::filesystem::path path_;
};

#endif
