// SPDX-License-Identifier: MIT
#include "controllers/core/Library.h"

#include "controllers/grbl/Controller.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace grbl {

namespace {

/** The boards that have been set up. */
class Library : public controllers::Library
{
public:
    Library()
    {
        const std::string file = Configuration::file();
        std::vector<BoardSetup> boards;
        std::string error;
        if (!Configuration::read(file, &boards, &error))
            std::fprintf(stderr, "%s\n", error.c_str());
        for (const BoardSetup &board : boards)
            m_controllers.push_back(std::make_unique<Controller>(board, m_mutex, file));
    }

    Fate enter(const char *, std::unique_lock<std::mutex> *lock) override
    {
        *lock = std::unique_lock(m_mutex);
        for (const auto &controller : m_controllers)
            controller->settle();
        return {};
    }
    void leave(const char *, const std::string &, const std::string &) override
    {
        for (const auto &controller : m_controllers)
            controller->wakeIfUrgent();
    }
    bool takeMessage(MoverMessage *message) override
    {
        const std::lock_guard lock(m_mutex);
        return std::any_of(m_controllers.begin(), m_controllers.end(), [message](const auto &controller) {
            return controller->takeMessage(message);
        });
    }
    bool lastReport(int id, MoverReport *report) override
    {
        const std::lock_guard lock(m_mutex);
        return std::any_of(m_controllers.begin(), m_controllers.end(), [id, report](const auto &controller) {
            return controller->id == id && controller->lastReport(report);
        });
    }
    std::vector<controllers::Controller *> controllers() override
    {
        std::vector<controllers::Controller *> all;
        for (const auto &controller : m_controllers)
            all.push_back(controller.get());
        return all;
    }

private:
    std::mutex m_mutex;
    std::vector<std::unique_ptr<Controller>> m_controllers;
};

} // namespace

} // namespace grbl

controllers::Library &controllers::Library::instance()
{
    static Library &library = *new grbl::Library;
    return library;
}
