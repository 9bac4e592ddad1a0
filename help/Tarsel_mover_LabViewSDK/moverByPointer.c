/* SPDX-License-Identifier: MIT */
/* setMotorParams() with the record passed by its address: a Call Library Function Node cannot pass it by value. */

#include "moverLibrary.h"

#if defined(_WIN32)
#define EXPORT __declspec(dllexport)
#else
#define EXPORT __attribute__((visibility("default")))
#endif

EXPORT int setMotorParamsByPointer(int id, int axis, const MotorParams *params);

int setMotorParamsByPointer(int id, int axis, const MotorParams *params)
{
    return setMotorParams(id, axis, *params);
}
