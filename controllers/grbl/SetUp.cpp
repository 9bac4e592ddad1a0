// SPDX-License-Identifier: MIT
#include "controllers/grbl/SetUp.h"

#include "controllers/grbl/Configuration.h"
#include "controllers/grbl/Controller.h"
#include "controllers/grbl/Library.h"

#include "device/moverLibrary.h"

#include <chrono>
#include <cmath>
#include <cstring>
#include <thread>

namespace grbl {

namespace {

constexpr int limitsOn = 21;
constexpr double gentle = 50; // acceleration of a move, per s²
constexpr double everywhere = 1e6;

/** A stage that any move fits. Its position is the board's. */
AxisSetup anyStage(int boardAxis)
{
    AxisSetup setup;
    setup.boardAxis = boardAxis;
    setup.stage.pulseOneCircle = 1;
    setup.stage.dispOneCircle = 1;
    setup.stage.restoreSpeed = 1;
    setup.stage.maxSpeed = everywhere;
    setup.stage.maxAcc = everywhere;
    setup.stage.minPos = -everywhere;
    setup.stage.maxPos = everywhere;
    setup.hasOffset = true;
    return setup;
}

int failureOf(int status)
{
    switch (status) {
    case Ok:
        return moverSetUp::NoFailure;
    case PortInUse:
        return moverSetUp::InUse;
    case NoPermission:
        return moverSetUp::NoPermission;
    default:
        return moverSetUp::NotThere;
    }
}

} // namespace

SetUp &SetUp::instance()
{
    static SetUp &setUp = *new SetUp;
    return setUp;
}

void SetUp::open(const std::string &port)
{
    close();
    m_begins = true;
    m_answered = false;
    m_refusal = moverSetUp::NoFailure;
    // Ports may take their time, and the caller has none.
    std::thread([this, port, attempt = ++m_attempt] { begin(port, attempt); }).detach();
}

void SetUp::begin(const std::string &port, unsigned attempt)
{
    const bool isFree = releasePort(port); // of the library's own controllers
    std::unique_lock lock(m_mutex);
    std::unique_ptr<Controller> &controller = m_controllers[port];
    if (!controller)
        controller = std::make_unique<Controller>(BoardSetup{0, port, {}}, m_mutex, std::filesystem::path());
    // From the time before: its thread ends within a tenth of a second.
    for (int waited = 0; controller->serves() && waited < 100; ++waited) {
        lock.unlock();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        lock.lock();
    }
    if (attempt != m_attempt)
        return;                         // another port meanwhile, or none
    controller->board().axes().clear(); // of another board, perhaps
    m_opens = true;
    const int refusal = isFree ? failureOf(controller->startLink()) : static_cast<int>(moverSetUp::Connected);
    m_opens = false;
    if (attempt != m_attempt) {
        controller->releaseLink();
        return;
    }
    m_refusal = refusal;
    if (refusal == moverSetUp::NoFailure)
        m_controller = controller.get();
    m_begins = false;
}

void SetUp::close()
{
    stop();
    ++m_attempt;
    m_begins = false;
    if (m_opens)
        return; // whoever opens it sees that it is not wanted any more
    const std::lock_guard lock(m_mutex);
    if (Controller *controller = std::exchange(m_controller, nullptr)) {
        controller->releaseLink();
    }
}

Board *SetUp::board()
{
    if (!m_controller || !m_controller->serves() || m_controller->board().opening())
        return nullptr;
    Board &board = m_controller->board();
    if (board.axes().empty() && board.phase() == Board::Phase::Ready) {
        m_answered = true;
        for (int i = 0; i < board.report().axes; ++i) {
            board.axes().push_back(std::make_unique<Axis>(board, anyStage(i)));
            board.axes().back()->stand(board.report().position[i]);
        }
    }
    m_controller->settle();
    return board.axes().empty() ? nullptr : &board;
}

Axis *SetUp::axis(int number)
{
    Board *found = board();
    return found && number >= 0 && number < static_cast<int>(found->axes().size()) ? found->axes()[number].get()
                                                                                   : nullptr;
}

int SetUp::failure() const
{
    if (!m_controller || m_controller->serves())
        return m_refusal;
    if (m_answered)
        return moverSetUp::Unplugged;
    const Controller::Heard heard = m_controller->heard();
    if (heard.bytes == 0)
        return m_controller->plugged() ? moverSetUp::NoAnswer : moverSetUp::Unplugged;
    return heard.unreadable * 10 > heard.bytes ? moverSetUp::OtherSpeed : moverSetUp::OtherDevice;
}

void SetUp::look(MoverBoard *told)
{
    *told = {};
    told->phase = m_begins ? moverSetUp::Opening : moverSetUp::Closed;
    if (m_opens)
        return;
    const std::lock_guard lock(m_mutex);
    const Board *found = board();
    told->failure = failure();
    if (!found) {
        const bool opens = m_begins || (m_controller && m_controller->serves());
        told->phase = opens ? moverSetUp::Opening : moverSetUp::Closed;
        return;
    }
    bool runs = false;
    for (const auto &axis : found->axes())
        runs = runs || axis->running();
    const bool rests = found->phase() == Board::Phase::Ready && (found->still() || found->locked()) && !runs;
    told->phase = rests ? moverSetUp::Resting : moverSetUp::Busy;
    told->answers = found->answers();
    told->locked = found->locked();
    told->homesSingly = found->homesSingly();
    told->pins = found->report().pins;
    told->written = found->written();
    told->axes = static_cast<int>(found->axes().size());
    for (int i = 0; i < told->axes; ++i) {
        const Axis &axis = *found->axes()[i];
        told->homed |= axis.isHomed() ? 1U << i : 0;
        told->positions[i] = found->report().position[i];
        told->speeds[i] = axis.speedLimit();
        told->speedSettings[i] = axis.speedSetting();
    }
    // "Grbl 1.1h ['$' for help]"
    const std::string name = found->banner().substr(0, found->banner().find(" ["));
    const std::string firmware = name + (found->version().empty() ? "" : " [" + found->version() + "]");
    firmware.copy(told->firmware, sizeof told->firmware - 1);
}

int SetUp::settings(MoverSetting *settings, int capacity)
{
    if (m_opens)
        return 0;
    const std::lock_guard lock(m_mutex);
    const Board *found = board();
    int count = 0;
    if (found) {
        for (const auto &[number, value] : found->settings()) {
            if (count < capacity)
                settings[count++] = {number, value};
        }
    }
    return count;
}

bool SetUp::takeMessage(MoverMessage *message)
{
    if (m_opens)
        return false;
    const std::lock_guard lock(m_mutex);
    return m_controller && m_controller->takeMessage(message);
}

int SetUp::write(const std::map<int, double> &settings)
{
    const std::lock_guard lock(m_mutex);
    Board *found = board();
    const int status = found ? found->write(settings) : static_cast<int>(LinkLost);
    if (found)
        m_controller->wakeIfUrgent();
    return status;
}

int SetUp::move(int number, double distance, double speed)
{
    const std::lock_guard lock(m_mutex);
    Axis *found = axis(number);
    if (!found)
        return LinkLost;
    found->settings.relativeDispEnable = 1;
    found->settings.relativeDisp = std::abs(distance);
    found->settings.speed = speed;
    found->settings.acceleration = gentle;
    const int status = found->startDrive(distance < 0 ? -1 : 1);
    m_controller->wakeIfUrgent();
    return status;
}

void SetUp::stop()
{
    if (m_opens)
        return; // nothing moves yet
    const std::lock_guard lock(m_mutex);
    if (Board *found = board()) {
        for (const auto &axis : found->axes())
            axis->stop();
        m_controller->wakeIfUrgent();
    }
}

int SetUp::unlock()
{
    const std::lock_guard lock(m_mutex);
    Board *found = board();
    if (!found)
        return LinkLost;
    // The board would be unlocked with its hard limits off, and somebody would have to see to it that they come back.
    if (found->report().pins != 0 && found->setting(limitsOn, 0) != 0)
        return OptoFault;
    const int status = found->locked() ? found->unlock() : static_cast<int>(Ok);
    m_controller->wakeIfUrgent();
    return status;
}

int SetUp::home(int number)
{
    const std::lock_guard lock(m_mutex);
    Axis *found = axis(number);
    if (!found)
        return LinkLost;
    int status = found->home();
    if (status == OthersWouldMove) // the caller has said so
        status = found->home();
    m_controller->wakeIfUrgent();
    return status;
}

} // namespace grbl

// ---- As C functions

namespace {

using grbl::SetUp;

int copied(const std::string &text, char *target, int size)
{
    if (size <= 0)
        return 0;
    const std::size_t length = text.copy(target, static_cast<std::size_t>(size) - 1);
    target[length] = 0;
    return length == text.size() ? static_cast<int>(length) : 0;
}

const MoverSetUp functions = {
    [](const char *file, char *fault, int size) {
        std::vector<grbl::BoardSetup> boards;
        std::string error;
        if (grbl::Configuration::read(std::filesystem::u8path(file), &boards, &error))
            return 1;
        copied(error, fault, size);
        return 0;
    },
    [](const MotorParams *stage, char *text, int size) {
        return copied(grbl::Configuration::stageText(*stage), text, size);
    },
    [](const char *port) { SetUp::instance().open(port); },
    [] { SetUp::instance().close(); },
    [](MoverBoard *board) { SetUp::instance().look(board); },
    [](MoverSetting *settings, int capacity) { return SetUp::instance().settings(settings, capacity); },
    [](MoverMessage *message) { return SetUp::instance().takeMessage(message) ? 1 : 0; },
    [](const MoverSetting *settings, int count) {
        std::map<int, double> wanted;
        for (int i = 0; i < count; ++i)
            wanted[settings[i].number] = settings[i].value;
        return SetUp::instance().write(wanted);
    },
    [](int axis, double distance, double speed) { return SetUp::instance().move(axis, distance, speed); },
    [] { SetUp::instance().stop(); },
    [] { return SetUp::instance().unlock(); },
    [](int axis) { return SetUp::instance().home(axis); },
};

} // namespace

extern "C" {
MOVER_API extern const MoverSetUp *const moverLibrarySetUp;
const MoverSetUp *const moverLibrarySetUp = &functions;
}
