// SPDX-License-Identifier: MIT
// Bytes as the texts that the library gives: into the text helpers, and through the worker to its readers.
#include "device/DeviceRecords.h"
#include "device/LibraryText.h"
#include "device/SerialComDev.h"
#include "controllers/simulated/SimulatorControl.h"

#include "Application.h"

namespace {

/** What a field of these bytes says, written out. */
QString expectedText(const QByteArray &bytes)
{
    QString text = QLatin1String("");
    for (int at = 0; at < qMin(bytes.size(), MOVER_TEXT_LENGTH) && bytes[at] != 0; ++at)
        text.append(QChar(uchar(bytes[at])));
    return text;
}

void check(const QString &text, const QByteArray &bytes, const char *what)
{
    Fuzz::require(!text.isNull(), "null text:", what);
    Fuzz::require(text.size() <= MOVER_TEXT_LENGTH && !text.contains(QChar(0)), "too long, or with a zero:", what);
    Fuzz::require(text == expectedText(bytes), "another text:", what);
}

void checkRecords(const uint8_t *data, size_t size)
{
    Fuzz::Input input(data, size);
    const auto state = input.take<MotorStageState>();
    const auto joystick = input.take<CONTROLER_STATE>();
    // As they travel in queued signals.
    const auto stateAgain = QVariant::fromValue(state).value<MotorStageState>();
    const auto joystickAgain = QVariant::fromValue(joystick).value<CONTROLER_STATE>();
    Fuzz::require(!std::memcmp(&state, &stateAgain, sizeof state), "MotorStageState");
    Fuzz::require(!std::memcmp(&joystick, &joystickAgain, sizeof joystick), "CONTROLER_STATE");

    MotorDevInfo info;
    info.modelName = QString::fromLatin1(input.rest());
    info.jogCount = input.take<int>();
    info.relativeDispEnable = input.take<char>() != 0;
    const MotorDevInfo copy = info;
    Fuzz::require(copy.modelName == info.modelName && copy.jogCount == info.jogCount, "MotorDevInfo");
    Fuzz::require(copy.relativeDispEnable == info.relativeDispEnable && copy.speed == 0, "MotorDevInfo");
}

void openController()
{
    simulator::reset();
    if (SerialComDev::instance()->open(1001) < 0)
        Fuzz::fail("the controller does not open");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    Fuzz::makeApplication();
    registerDeviceRecords();
    openController();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), int(size));
    LibraryText text;
    std::memcpy(text.data(), data, qMin(size, size_t(LibraryText::length())));
    check(text.toString(), bytes, "LibraryText");

    simulator::clearJournal();
    const auto worker = SerialComDev::instance();
    for (const char *getter : {"getDevSoftVersion", "getMotorModelName", "getMotorSerialNumber"})
        simulator::answerText(getter, bytes.toStdString());
    check(worker->getDevSoftVersion(), bytes, "getDevSoftVersion");
    check(worker->getMotorModelName(0), bytes, "getMotorModelName");
    Fuzz::require(worker->readAxisParams(0) == 0, "the axis cannot be read");
    check(worker->getAxisModelName(0), bytes, "getAxisModelName");
    check(worker->getAxisSerialNo(0), bytes, "getAxisSerialNo");
    simulator::clearFaults();

    checkRecords(data, size);
    return 0;
}
