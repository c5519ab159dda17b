// SPDX-License-Identifier: Apache-2.0
#include "http/pem_file.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <sys/stat.h>

namespace host
{

bool readText(const std::string &file, std::string &text, std::string &problem)
{
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    if (!stream) {
        problem = file + ": " + std::strerror(errno);
        return false;
    }
    text = bytes.str();
    return true;
}

gnutls_datum_t datumOf(std::string &text)
{
    return {reinterpret_cast<unsigned char *>(text.data()), static_cast<unsigned>(text.size())};
}

long long stampOf(const std::string &file)
{
    struct stat status = {};
    if (stat(file.c_str(), &status) != 0) {
        return 0;
    }
    return (status.st_mtim.tv_sec * 1000000000LL + status.st_mtim.tv_nsec) ^
           static_cast<long long>(status.st_ino) << 20;
}

} // namespace host
