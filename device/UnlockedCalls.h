// SPDX-License-Identifier: MIT
#pragma once

/**
 * The two library calls that the engineering console makes without the lock, on purpose: they do not wait for a call in
 * flight. Arguments and results are the library's.
 */
class UnlockedCalls final
{
public:
    static int home(int id, int axis);
    static int setClearIDChip(int id, int axis);
};
