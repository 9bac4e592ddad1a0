// SPDX-License-Identifier: MIT
#pragma once

/**
 * The rows of the performance table that are measured inside this process. `effort` is how many pairs, in percent of
 * what a full run takes. Each reports one or more rows; GUI thread, with the simulated controller open and its clock
 * standing still.
 */
namespace Rows {

constexpr int device = 1001; // the controller of every scenario here

void clickIdle(int effort);
void clickBusy(int effort);
void slowLink(int effort);
void stopAllIdle(int effort);
void stopAllBusy(int effort);
void poll(int effort);
void operationLog(int effort);
void panels(int effort);
void libraryCall(int effort);
void modelFile(int effort);
void recorder(int effort);
void sequence(int effort);

} // namespace Rows
