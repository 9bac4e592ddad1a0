/* SPDX-License-Identifier: MIT */
/* The library as a C program uses it, on the scenario two-controllers.json. Ends with 0 if all is as it should be. */
#include "device/moverLibrary.h"

#include <stdio.h>
#include <string.h>

static int failures = 0;

static void check(int holds, const char *what)
{
    if (!holds) {
        printf("wrong: %s\n", what);
        ++failures;
    }
}

int main(void)
{
    int ids[10] = {0};
    check(listTSMotorControlerDevices(ids, 10) == 2, "number of controllers");
    check(ids[0] == 1001 && ids[1] == 1002, "identifiers");
    check(addDev(1002) >= 0 && openTSDevice(1002) >= 0, "opening");
    check(getDevAxisCount(1002) == 1, "number of axes");

    char serial[MOVER_TEXT_LENGTH] = {0};
    check(getDevSerialNumber(1002, serial, MOVER_TEXT_LENGTH) >= 0, "reading the serial number");
    check(strcmp(serial, "SIM-MC3-000245") == 0, "serial number");

    MotorParams params;
    check(getMotorParams(1002, 0, &params) >= 0, "reading the stage");
    params.maxPos = 12.5;
    check(setMotorParams(1002, 0, params) >= 0, "writing the stage");
    check(setTargetPos(1002, 0, 12.5) >= 0, "a target at the end of travel");
    check(setTargetPos(1002, 0, 12.6) < 0, "a target beyond the end of travel");

    int status = 0;
    check(getCurrentPos(1002, 0, &status) == 0 && status >= 0, "position");
    check(removeDev(1002) >= 0, "removing");
    return failures == 0 ? 0 : 1;
}
