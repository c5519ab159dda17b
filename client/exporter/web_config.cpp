// SPDX-License-Identifier: Apache-2.0
#include "exporter/web_config.h"

#include "site/text_file.h"
#include "site/yaml_file.h"

#include <crypt.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <array>

namespace displayctl::exporter
{

namespace
{

using site::YamlFile;

std::string content(const YamlFile &file, const YAML::Node &node, const std::string &what)
{
    const std::filesystem::path path = file.path(node, what);
    const auto text = site::readTextFile(path);
    if (!text) {
        file.fail(node, what + ": " + path.string() + " cannot be read");
    }
    if (text->find("-----BEGIN ") == std::string::npos) {
        file.fail(node, what + ": " + path.string() + " is not PEM");
    }
    return *text;
}

void readTls(const YamlFile &file, const YAML::Node &map, WebConfig &config)
{
    file.each(map, "tls_server_config",
              [&](const std::string &key, const YAML::Node &where, const YAML::Node &value) {
                  if (key == "cert_file") {
                      config.certificate = content(file, value, key);
                  } else if (key == "key_file") {
                      config.key = content(file, value, key);
                  } else {
                      file.fail(where,
                                "tls_server_config has no \"" + key + "\"; there are: cert_file, key_file");
                  }
              });
    if (config.certificate.empty() || config.key.empty()) {
        file.fail(map, "tls_server_config needs cert_file and key_file");
    }
}

void readUsers(const YamlFile &file, const YAML::Node &map, WebConfig &config)
{
    file.each(map, "basic_auth_users",
              [&](const std::string &user, const YAML::Node &, const YAML::Node &value) {
                  const std::string hash = file.text(value, "the hash of " + user);
                  const int kind = crypt_checksalt(hash.c_str());
                  if (hash.front() != '$' || (kind != CRYPT_SALT_OK && kind != CRYPT_SALT_TOO_CHEAP)) {
                      file.fail(value, "what stands for the password of " + user +
                                           " is no hash of it; `mkpasswd -m bcrypt` makes one");
                  }
                  config.users.emplace(user, hash);
              });
    if (config.users.empty()) {
        file.fail(map, "basic_auth_users names nobody");
    }
}

std::string digest(const std::string &text)
{
    std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
    unsigned size = 0;
    if (EVP_Digest(text.data(), text.size(), bytes.data(), &size, EVP_sha256(), nullptr) != 1) {
        return {};
    }
    return {bytes.begin(), bytes.begin() + size};
}

bool isSame(const std::string &one, const std::string &other)
{
    return !one.empty() && one.size() == other.size() &&
           CRYPTO_memcmp(one.data(), other.data(), one.size()) == 0;
}

} // namespace

WebConfig readWebConfig(const std::filesystem::path &path)
{
    const YamlFile file{path};
    WebConfig config;
    file.each(file.root(), "the file",
              [&](const std::string &key, const YAML::Node &where, const YAML::Node &value) {
                  if (key == "tls_server_config") {
                      readTls(file, value, config);
                  } else if (key == "basic_auth_users") {
                      readUsers(file, value, config);
                  } else {
                      file.fail(where, "the file has no \"" + key +
                                           "\"; there are: tls_server_config, basic_auth_users");
                  }
              });
    return config;
}

bool Gate::admits(const std::string &user, const std::string &password)
{
    const std::string given = digest(user + '\0' + password);
    {
        const std::lock_guard lock{mutex_};
        if (const auto known = known_.find(user); known != known_.end() && isSame(known->second, given)) {
            return true;
        }
    }
    // One at a time, so that guessing costs a guesser's time and not the machine's.
    const std::lock_guard turn{slow_};
    // A name that is not there takes as long as one that is.
    const auto found = users_.find(user);
    const std::string &hash = found == users_.end() ? users_.begin()->second : found->second;
    crypt_data data{};
    const char *result = crypt_r(password.c_str(), hash.c_str(), &data);
    const bool isRight =
        result != nullptr && result[0] != '*' && isSame(hash, result) && found != users_.end();
    if (isRight) {
        const std::lock_guard lock{mutex_};
        known_[user] = given;
    }
    return isRight;
}

} // namespace displayctl::exporter
