// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <memory>

class QApplication;

/** The program's start-up, step by step. GUI thread. */
namespace StartUp {

/** What must be set before the application object: high-DPI scaling to any factor, no OpenGL. */
void prepareApplication();
/**
 * The application object. On a screen too small for the main window everything is drawn at a smaller scale, unless the
 * user has chosen one (QT_SCALE_FACTOR).
 */
std::unique_ptr<QApplication> makeApplication(int &argc, char *argv[]);
/** What must be set before the first widget: numbers are shown and read with a decimal point in every locale. */
void setNumberFormat();
/** Makes the first family of the font file the application's font, 16 pixels high; without one nothing changes. */
void installFont(const QString &path);
/**
 * Installs a style sheet (UTF-8, up to the first zero byte) on the application. Every class of widgets then has the
 * application's font.
 */
void installStyleSheet(const QString &path);
/** Registers a stage model with the motion library. */
void registerStageModel();

/** The whole program: returns the event loop's exit code. */
int run(int argc, char *argv[]);

} // namespace StartUp
