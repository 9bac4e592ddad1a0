// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

/** The program's start-up, step by step. GUI thread. */
namespace StartUp {

/** What must be set before the application object: high-DPI scaling, no OpenGL. */
void prepareApplication();
/** What must be set before the first widget: numbers are shown and read with a point in every locale. */
void setNumberFormat();
/** Makes the first family of the font file the application's font, 16 pixels high; without one nothing changes. */
void installFont(const QString &path);
/** Installs a style sheet (UTF-8, up to the first zero byte) on the application. */
void installStyleSheet(const QString &path);
/** Registers a stage model with the motion library. */
void registerStageModel();

/** The whole program: returns the event loop's exit code. */
int run(int argc, char *argv[]);

} // namespace StartUp
