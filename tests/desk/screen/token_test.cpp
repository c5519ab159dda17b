// SPDX-License-Identifier: Apache-2.0
// The token of the screen: made, kept and compared.
#include "desk_fixture.h"

#include "screen/token.h"

#include <sys/stat.h>

#include <fstream>

using namespace desk::screen;

namespace
{

class ScreenToken : public DeskTest
{
  protected:
    std::string write(const std::string &content, mode_t mode)
    {
        const std::string file = directory + "/token";
        std::ofstream(file) << content;
        chmod(file.c_str(), mode);
        return file;
    }
    static std::string refusal(const std::string &file)
    {
        try {
            tokenOfFile(file);
        } catch (const std::runtime_error &error) {
            return error.what();
        }
        return "";
    }
};

} // namespace

TEST_F(ScreenToken, IsAnotherOneEachTime)
{
    const std::string first = newToken();
    EXPECT_EQ(first.size(), 32u);
    EXPECT_EQ(first.find_first_not_of("0123456789abcdef"), first.npos);
    EXPECT_NE(first, newToken());
}

TEST_F(ScreenToken, IsKeptForItsOwnerAlone)
{
    const std::string file = directory + "/token";
    const std::string made = tokenOfFile(file);
    EXPECT_EQ(made.size(), 32u);
    EXPECT_EQ(contentOf(file), made + "\n");
    struct stat status {
    };
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0600u);
    EXPECT_EQ(tokenOfFile(file), made);
}

TEST_F(ScreenToken, IsRefusedWhenItIsNoneOrCanBeReadByOthers)
{
    const std::string token = "00112233445566778899aabbccddeeff";
    const std::string name = "the token file " + directory + "/token ";
    EXPECT_EQ(tokenOfFile(write(token, 0600)), token);
    EXPECT_EQ(refusal(write(token, 0640)),
              name + "can be read by others; it has to be its owner's alone (chmod 600)");
    for (const std::string &content : {std::string(), std::string("short\n"), token + "0\n",
                                       token.substr(1) + "G\n", std::string(1000, 'a')}) {
        EXPECT_EQ(refusal(write(content, 0600)), name + "holds no token: 32 hexadecimal digits") << content;
    }
    EXPECT_EQ(refusal(directory + "/none/token"),
              "the token file " + directory + "/none/token cannot be read: No such file or directory");
}

TEST_F(ScreenToken, IsComparedWhole)
{
    EXPECT_TRUE(sameToken("abcd", "abcd"));
    EXPECT_FALSE(sameToken("abcd", "abce"));
    EXPECT_FALSE(sameToken("abcd", "abc"));
    EXPECT_FALSE(sameToken("", "abc"));
}
