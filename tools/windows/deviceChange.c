/* SPDX-License-Identifier: MIT */
/* deviceChange PROCESS send|post COUNT: tells the main window of another process, as Windows does, that devices have
 * changed. Prints how many were taken, each within a second, and ends with 1 when one was not. */
#include <windows.h>

#include <dbt.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static BOOL CALLBACK tell(HWND window, LPARAM arguments)
{
    char **argv = (char **)arguments;
    DWORD process = 0;
    int count = atoi(argv[3]);
    int taken = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != strtoul(argv[1], NULL, 10) || !IsWindowVisible(window) || GetWindow(window, GW_OWNER))
        return TRUE;
    for (int k = 0; k < count; ++k) {
        DWORD_PTR answer = 0;
        if (!strcmp(argv[2], "post"))
            taken += PostMessageW(window, WM_DEVICECHANGE, DBT_DEVNODES_CHANGED, 0) != 0;
        else
            taken +=
                SendMessageTimeoutW(window, WM_DEVICECHANGE, DBT_DEVNODES_CHANGED, 0, SMTO_NORMAL, 1000, &answer) != 0;
    }
    printf("%d\n", taken);
    exit(taken == count ? 0 : 1);
}

int main(int argc, char *argv[])
{
    if (argc != 4)
        return 2;
    EnumWindows(tell, (LPARAM)argv);
    fprintf(stderr, "process %s has no main window\n", argv[1]);
    return 1;
}
