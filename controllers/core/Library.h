// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/core/Controller.h"

#include "device/moverMessages.h"

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace controllers {

/**
 * What stands behind the library's functions: its controllers, and what happens at the beginning and the end of a call.
 * Each library of ours defines instance() once.
 */
class Library
{
public:
    virtual ~Library() = default;
    /** The one of the process. Never destroyed: a call may still hang when the process ends. */
    static Library &instance();

    /** What is to become of a call. */
    struct Fate {
        int status = 0;                      ///< below 0: it fails with that
        const std::string *answer = nullptr; ///< text that a text getter gives instead of its own
        std::optional<double> number;        ///< number that a getter gives instead of its own
        std::optional<int> count;            ///< the same for the number of things
    };
    /** Begins a call: waits as long as it has to, and locks what the controllers are guarded by. */
    virtual Fate enter(const char *function, std::unique_lock<std::mutex> *lock) = 0;
    /** Ends a call, in the same lock. `arguments` and `result` are empty where no journal is kept. */
    virtual void leave(const char *function, const std::string &arguments, const std::string &result) = 0;
    /** Whether calls are written down. */
    virtual bool keepsJournal() const { return false; }

    /** Takes the next thing that there is to say besides statuses; false if there is none. Locks by itself. */
    virtual bool takeMessage(MoverMessage *) { return false; }

    /** The report that the positions of a controller rest on; false if they are asked for with each call. Locks by
     * itself. */
    virtual bool lastReport(int, MoverReport *) { return false; }

    /** In the order in which they are listed. */
    virtual std::vector<Controller *> controllers() = 0;
};

} // namespace controllers
