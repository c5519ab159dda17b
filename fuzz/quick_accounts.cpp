// SPDX-License-Identifier: Apache-2.0
#include "quick_accounts.h"

#include "fuzz.h"

#include <crypt.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace fuzz
{

std::unique_ptr<host::Accounts> quickAccounts()
{
    std::string directory = std::filesystem::temp_directory_path().string() + "/fuzz-accounts.XXXXXX";
    require(mkdtemp(directory.data()) != nullptr, "a directory can be made");
    const std::string file = directory + "/accounts";
    crypt_data memory = {};
    std::ofstream(file) << "operator:" << crypt_r("secret: word", "$5$rounds=1000$0123456789abcdef$", &memory)
                        << "\nlocked:!\n";
    auto accounts = std::make_unique<host::Accounts>(file);
    std::string problem;
    require(accounts->load(problem), "the accounts can be read", problem);
    // The file is looked at again and again; it goes with the program.
    static std::string made;
    made = directory;
    std::atexit([] {
        std::error_code ignored;
        std::filesystem::remove_all(made, ignored);
    });
    return accounts;
}

} // namespace fuzz
