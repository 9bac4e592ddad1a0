/* SPDX-License-Identifier: MIT */
/* tellWindow PROCESS send|post COUNT MESSAGE WPARAM: what Windows tells a window, told to the main window of another
 * process. Prints how many were taken, each within a second, and ends with 1 when one was not. */
#include <windows.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static BOOL CALLBACK tell(HWND window, LPARAM arguments)
{
    char **argv = (char **)arguments;
    const int posted = !strcmp(argv[2], "post");
    const int count = atoi(argv[3]);
    const UINT message = strtoul(argv[4], NULL, 0);
    const WPARAM wParam = strtoul(argv[5], NULL, 0);
    int taken = 0;
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != strtoul(argv[1], NULL, 10) || !IsWindowVisible(window) || GetWindow(window, GW_OWNER))
        return TRUE;
    for (int k = 0; k < count; ++k) {
        DWORD_PTR answer = 0;
        if (posted)
            taken += PostMessageW(window, message, wParam, 0) != 0;
        else
            taken += SendMessageTimeoutW(window, message, wParam, 0, SMTO_NORMAL, 1000, &answer) != 0;
    }
    printf("%d\n", taken);
    exit(taken == count ? 0 : 1);
}

int main(int argc, char *argv[])
{
    if (argc != 6)
        return 2;
    EnumWindows(tell, (LPARAM)argv);
    fprintf(stderr, "process %s has no main window\n", argv[1]);
    return 1;
}
