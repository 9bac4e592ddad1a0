// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/grbl/Axis.h"

#include <filesystem>
#include <string>
#include <vector>

namespace controllers {
class Controller;
}

namespace grbl {

class Board;

/** One board that has been set up; docs/controllers.md has the format of the file. */
struct BoardSetup {
    int id = 0;
    std::string port;
    std::vector<AxisSetup> axes; ///< 1 to 3, by the axis of the library
};

/** Which boards there are, and what the library keeps for them, in the user's configuration folder. */
class Configuration
{
public:
    /** The file that MOVER_CONTROLLERS names, or controllers.json in the user's configuration folder. */
    static std::filesystem::path file();

    /** No boards if there is no file. False, with "FILE:LINE: what is wrong", if it is faulty. */
    static bool read(const std::filesystem::path &file, std::vector<BoardSetup> *boards, std::string *error);

    /** Where what is kept for a board lies, beside the file. */
    static std::filesystem::path keptFile(const std::filesystem::path &file, int id);
    /** Gives `controller` and its `board` back what was kept for them; a file that is faulty or not there changes
     * nothing. */
    static void restore(const std::filesystem::path &keptFile, controllers::Controller *controller, Board *board);
    /** The text to be written to the file. */
    static std::string kept(controllers::Controller &controller, const Board &board);
    /** A stage as the file has it. */
    static std::string stageText(const MotorParams &stage);
    /** Replaces a file as a whole. */
    static bool write(const std::filesystem::path &file, const std::string &text);
};

} // namespace grbl
