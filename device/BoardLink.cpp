// SPDX-License-Identifier: MIT
#include "device/BoardLink.h"

#include "device/MotionLibrary.h"
#include "device/StatusWords.h"
#include "device/moverStatus.h"

#include <QByteArray>
#include <QFile>
#include <QLibrary>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <tuple>

namespace {

constexpr int lookMs = 50;
constexpr int mostSettings = 256;

/** A file's name as the library takes it: the encoding of Windows does not have every character. */
QByteArray encoded(const QString &file)
{
#ifdef Q_OS_WIN
    return file.toUtf8();
#else
    return QFile::encodeName(file);
#endif
}

/** Not byte by byte: there may be anything between the members. */
bool differ(const MoverBoard &a, const MoverBoard &b)
{
    const auto numbers = [](const MoverBoard &board) {
        return std::tie(
            board.phase, board.failure, board.answers, board.locked, board.axes, board.homesSingly, board.pins,
            board.homed, board.written);
    };
    return numbers(a) != numbers(b) || !std::equal(std::begin(a.positions), std::end(a.positions), b.positions) ||
           !std::equal(std::begin(a.speeds), std::end(a.speeds), b.speeds) ||
           !std::equal(std::begin(a.speedSettings), std::end(a.speedSettings), b.speedSettings) ||
           std::strcmp(a.firmware, b.firmware) != 0;
}

} // namespace

const MoverSetUp *BoardLink::functions(QString *reason)
{
    static const MoverSetUp *found = nullptr;
    if (found)
        return found;
    const MotionLibrary *inUse = MotionLibrary::loaded();
    const bool isInUse = inUse && inUse->mark() == MotionLibrary::word(MotionLibrary::Kind::Grbl);
    QLibrary library(isInUse ? inUse->file() : MotionLibrary::fileOf(MotionLibrary::Kind::Grbl));
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    const QString file = library.fileName();
    const auto *symbol = QFile::exists(file)
                             ? reinterpret_cast<const MoverSetUp *const *>(library.resolve("moverLibrarySetUp"))
                             : nullptr;
    if (symbol)
        found = *symbol;
    else if (reason)
        *reason = QFile::exists(file) ? library.errorString() : file;
    return found;
}

QString BoardLink::faultOf(const QString &file)
{
    const MoverSetUp *setUp = functions();
    char fault[512] = "";
    if (!setUp || setUp->checkFile(encoded(file).constData(), fault, sizeof fault) == 1)
        return QString();
    return QString::fromUtf8(fault);
}

QByteArray BoardLink::stageText(const MotorParams &stage)
{
    const MoverSetUp *setUp = functions();
    QByteArray text(4096, '\0');
    text.resize(setUp ? setUp->stageText(&stage, text.data(), text.size()) : 0);
    return text;
}

BoardLink::BoardLink(QObject *parent)
    : QObject(parent)
{
    m_timer.setInterval(lookMs);
    connect(&m_timer, &QTimer::timeout, this, &BoardLink::look);
}

BoardLink::~BoardLink()
{
    close();
}

bool BoardLink::open(const QString &port)
{
    const MoverSetUp *setUp = functions();
    if (!setUp)
        return false;
    m_sPort = port;
    m_settings.clear();
    setUp->open(encoded(port).constData());
    m_timer.start();
    look();
    return true;
}

void BoardLink::close()
{
    if (!m_timer.isActive())
        return;
    m_timer.stop();
    functions()->close();
    m_board = {};
}

void BoardLink::look()
{
    MoverBoard board;
    functions()->look(&board);
    Settings settings;
    MoverSetting list[mostSettings];
    const int count = functions()->settings(list, mostSettings);
    for (int i = 0; i < count; ++i)
        settings.insert(list[i].number, list[i].value);
    if (count == 0)
        settings = m_settings; // what was read last, of a board that is gone
    const bool isNew = differ(board, m_board) || settings != m_settings;
    m_board = board;
    m_settings = settings;
    if (isNew)
        emit changed();
    MoverMessage message;
    while (m_timer.isActive() && functions()->nextMessage(&message) == 1) {
        const QString words = StatusWords::of(message);
        if (!words.isEmpty())
            emit said(words);
    }
}

int BoardLink::write(const Settings &settings)
{
    if (!isOpen())
        return moverStatus::LinkLost;
    QVector<MoverSetting> list;
    for (auto setting = settings.begin(); setting != settings.end(); ++setting)
        list.append({setting.key(), setting.value()});
    const int status = functions()->write(list.constData(), list.size());
    look();
    return status;
}

int BoardLink::move(int axis, double distance, double speed)
{
    const int status = isOpen() ? functions()->move(axis, distance, speed) : moverStatus::LinkLost;
    look();
    return status;
}

void BoardLink::stop()
{
    if (m_timer.isActive())
        functions()->stop();
}

int BoardLink::unlock()
{
    return isOpen() ? functions()->unlock() : moverStatus::LinkLost;
}

int BoardLink::home(int axis)
{
    const int status = isOpen() ? functions()->home(axis) : moverStatus::LinkLost;
    look();
    return status;
}
