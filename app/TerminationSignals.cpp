// SPDX-License-Identifier: MIT
#include "app/TerminationSignals.h"

#ifdef Q_OS_UNIX

#include <csignal>
#include <cstdlib>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int endingSignals[] = {SIGINT, SIGTERM, SIGHUP};

constexpr unsigned int patienceSeconds = 5; // more than leaving takes

// A handler may do little more than write to a file descriptor.
int sockets[2] = {-1, -1};

void noteSignal(int)
{
    const char byte = 1;
    // Nothing can be done about a failed write here, and a full buffer means that a signal is noted already.
    [[maybe_unused]] const ssize_t written = ::write(sockets[0], &byte, sizeof byte);
    // The event loop may never get there: the GUI thread may wait for a library call that hangs.
    ::alarm(patienceSeconds);
}

void leaveAtOnce(int)
{
    ::_exit(EXIT_FAILURE);
}

void handle(int signal, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
}

void handleSignals(void (*handler)(int))
{
    for (const int signal : endingSignals)
        handle(signal, handler);
}

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> onSignal)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, sockets) != 0)
        return; // the signals keep their own way of ending the process
    m_notifier = std::make_unique<QSocketNotifier>(sockets[1], QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [onSignal = std::move(onSignal)] {
        char bytes[16];
        while (::read(sockets[1], bytes, sizeof bytes) > 0) {
        }
        onSignal();
    });
    handle(SIGALRM, leaveAtOnce);
    handleSignals(noteSignal);
}

TerminationSignals::~TerminationSignals()
{
    if (!m_notifier)
        return;
    // Who asks twice changes nothing: the program ends. "Ignored" would be inherited by a program started from here.
    handleSignals([](int) {});
    ::alarm(0);
    handle(SIGALRM, SIG_DFL);
    m_notifier.reset();
    ::close(sockets[0]);
    ::close(sockets[1]);
}

#else

TerminationSignals::TerminationSignals(std::function<void()>) {}
TerminationSignals::~TerminationSignals() = default;

#endif
