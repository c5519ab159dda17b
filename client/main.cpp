// SPDX-License-Identifier: Apache-2.0
#include "command/program.h"

int main(int argc, char **argv)
{
    return displayctl::runProgram(argc, argv);
}
