// SPDX-License-Identifier: Apache-2.0
// The file with the accounts: reading it, and changing it while others do so too.
#ifndef HOST_CORE_ACCOUNTS_FILE_H
#define HOST_CORE_ACCOUNTS_FILE_H

#include "core/role.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace host
{

struct Account {
    std::string hash;
    Role role = Role::operatorUser;
};

using AccountMap = std::map<std::string, Account, std::less<>>;

/** True when an account can have that name: no blanks, control characters, colons, and no # in front. */
bool isUserName(std::string_view user);

/** True when a password may fit the hash; false of a locked account's. */
bool isUsableHash(const std::string &hash);

/** crypt(3) of the password; "" when the setting is not one that crypt knows. */
std::string slowHash(const std::string &password, const std::string &setting);

/** A setting with a fresh salt for the best method that the system's crypt has. */
std::string newHashSetting();

/** False, with the reason in problem, as Accounts::load() tells. */
[[nodiscard]] bool readAccounts(const std::string &file, AccountMap &accounts, std::string &problem);

/** Adds the account, or gives it a new password, and that role if there is one. All other lines stay as they
 * are; a file that does not exist is made, readable for its owner alone. False, with the reason in problem,
 * on failure; then nothing has changed. */
[[nodiscard]] bool addAccount(const std::string &file, const std::string &user, const std::string &password,
                              std::optional<Role> role, std::string &problem);

/** Removes the account; otherwise as addAccount(). */
[[nodiscard]] bool removeAccount(const std::string &file, const std::string &user, std::string &problem);

} // namespace host

#endif
