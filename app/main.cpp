// SPDX-License-Identifier: MIT
#include "app/StartUp.h"

int main(int argc, char *argv[])
{
    return StartUp::run(argc, argv);
}
