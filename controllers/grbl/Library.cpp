// SPDX-License-Identifier: MIT
#include "controllers/grbl/Library.h"

#include "controllers/core/Library.h"

#include "controllers/grbl/Controller.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>

namespace grbl {

namespace {

/** The boards that have been set up. */
class Library : public controllers::Library
{
public:
    Library()
    {
        const std::filesystem::path file = Configuration::file();
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

    /** Of the controllers at `port`: begins to give it back unless one is open. */
    enum class Port { Free, Released, Needed };
    Port release(const std::string &port)
    {
        const std::lock_guard lock(m_mutex);
        Port state = Port::Free;
        for (const auto &controller : m_controllers) {
            if (!controller->serves() || !controller->isAt(port))
                continue;
            if (controller->open)
                return Port::Needed;
            controller->releaseLink();
            state = Port::Released;
        }
        return state;
    }

private:
    std::mutex m_mutex;
    std::vector<std::unique_ptr<Controller>> m_controllers;
};

std::atomic<Library *> made{nullptr};

} // namespace

bool releasePort(const std::string &port)
{
    for (int waited = 0; made && waited < 100; ++waited) {
        const Library::Port state = made.load()->release(port);
        if (state != Library::Port::Released)
            return state == Library::Port::Free;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

} // namespace grbl

controllers::Library &controllers::Library::instance()
{
    static Library &library = [&]() -> Library & {
        auto *const one = new grbl::Library;
        grbl::made = one;
        return *one;
    }();
    return library;
}
