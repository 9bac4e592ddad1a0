// SPDX-License-Identifier: MIT
// Bytes as a motor-parameter record, and lines as what is typed over it: through the edits of the settings page, the
// controls of the console and the program's own parameters, and back.
#include "console/MotorParamControls.h"
#include "device/LibraryText.h"
#include "models/StageParams.h"
#include "settings/MotorParamEdits.h"

#include "Application.h"

#include "ui_DebugWidget.h"
#include "ui_OptionsWidget.h"

#include <cmath>

namespace {

bool sameBytes(const MotorParams &one, const MotorParams &other)
{
    return std::memcmp(&one, &other, sizeof one) == 0;
}

/** What a real number is after it was shown with 6 digits and read again. */
double shownAndRead(double value)
{
    const double read = QString::number(value, 'g', 6).toDouble();
    return std::isfinite(read) ? read : 0; // "inf" and "nan" are none; 1.79769e+308 rounded up is none either
}

void checkEdits(const MotorParams &params, Fuzz::Input &input)
{
    static auto *const page = new QWidget;
    static auto *const form = [] {
        auto *made = new Ui::OptionsWidget;
        made->setupUi(page);
        return made;
    }();
    const MotorParamEdits edits(*form);

    edits.show(params);
    MotorParams read = params;
    edits.applyTo(read);
    Fuzz::require(read.pulseOneCircle == (params.pulseOneCircle <= 65535 ? params.pulseOneCircle : 0), "pulses");
    Fuzz::require(read.dispOneCircle == shownAndRead(params.dispOneCircle), "lead");
    Fuzz::require(read.restoreSpeed == shownAndRead(params.restoreSpeed), "homing speed");
    Fuzz::require(!std::memcmp(read.modelName, params.modelName, sizeof read.modelName), "model name");
    Fuzz::require(fromLibraryText(read.serialNumber) == fromLibraryText(params.serialNumber), "serial number");
    Fuzz::require(!std::memcmp(&read.moveType, &params.moveType, 7 * sizeof read.moveType), "enumerations");
    // What has no edit keeps its bytes.
    const size_t rest = offsetof(MotorParams, optOrder);
    Fuzz::require(!std::memcmp(read.optOrder, params.optOrder, sizeof params - rest), "what has no edit");

    edits.show(read);
    MotorParams again = read;
    edits.applyTo(again);
    Fuzz::require(sameBytes(again, read), "read twice it is another");

    // Whatever is typed.
    for (QLineEdit *edit : page->findChildren<QLineEdit *>())
        edit->setText(QString::fromUtf8(input.takeLine()));
    MotorParams typed = params;
    edits.applyTo(typed);
    Fuzz::require(typed.pulseOneCircle <= 65535, "more pulses than are valid");
    Fuzz::require(std::isfinite(typed.dispOneCircle) && std::isfinite(typed.restoreSpeed), "not finite");
    Fuzz::require(!std::memcmp(typed.optOrder, params.optOrder, sizeof params - rest), "what has no edit, typed");
    const QString serial = form->lineEdit_motor_serialNumber->text();
    const QByteArray latin = serial.toLatin1().left(MOVER_TEXT_LENGTH);
    Fuzz::require(!std::memcmp(typed.serialNumber, latin.constData(), size_t(latin.size())), "serial number, typed");
}

void checkControls(const MotorParams &params, Fuzz::Input &input)
{
    static auto *const page = new QWidget;
    static auto *const form = [] {
        auto *made = new Ui::DebugWidget;
        made->setupUi(page);
        return made;
    }();
    static auto *const controls = new MotorParamControls(*form);

    controls->show(params);
    const MotorParams read = controls->record();
    Fuzz::require(read.pulseOneCircle == params.pulseOneCircle, "console: pulses");
    Fuzz::require(read.returnTrip == params.returnTrip, "console: backlash");
    Fuzz::require(read.modifyDate == params.modifyDate, "console: date");
    Fuzz::require(!std::memcmp(&read.moveType, &params.moveType, 7 * sizeof read.moveType), "console: enumerations");
    Fuzz::require(read.maxPos == shownAndRead(params.maxPos), "console: maxPos");
    Fuzz::require(read.alignment1 == 0 && read.alignment2 == 0, "console: unused fields");
    controls->show(read);
    Fuzz::require(sameBytes(controls->record(), read), "console: read twice it is another");

    for (QLineEdit *edit : page->findChildren<QLineEdit *>())
        edit->setText(QString::fromUtf8(input.takeLine()));
    const MotorParams typed = controls->record();
    for (const double value :
         {typed.dispOneCircle, typed.restoreSpeed, typed.maxSpeed, typed.maxAcc, typed.minPos, typed.maxPos,
          typed.maxRockerSpeed})
        Fuzz::require(std::isfinite(value), "console: not finite");
}

bool isAscii(const char *text, size_t size)
{
    for (size_t at = 0; at < size && text[at]; ++at) {
        if (text[at] & 0x80)
            return false;
    }
    return true;
}

void checkStage(const MotorParams &params)
{
    const MoverDevParam stage = toDevParam(params);
    Fuzz::require(stage.name.size() <= MOVER_TEXT_LENGTH && stage.optOrder.size() <= 10, "longer than its field");
    Fuzz::require(stage.unitString == "mm" || stage.unitString == QStringLiteral("°"), "unit");
    const MotorParams back = toMotorParams(stage);
    Fuzz::require(back.pulseOneCircle == params.pulseOneCircle, "stage: pulses");
    Fuzz::require(!std::memcmp(&back.moveType, &params.moveType, 6 * sizeof back.moveType), "stage: enumerations");
    Fuzz::require(back.unitType == (stage.unitString == "mm" ? 0 : 1), "stage: unit");
    Fuzz::require(back.returnTrip == params.returnTrip && back.modifyDate == params.modifyDate, "stage: numbers");
    const size_t reals = offsetof(MotorParams, zeroOptWidth) - offsetof(MotorParams, maxSpeed);
    Fuzz::require(!std::memcmp(&back.maxSpeed, &params.maxSpeed, reals), "stage: real numbers");
    Fuzz::require(back.serialNumber[0] == 0, "stage: serial number");
    if (isAscii(params.modelName, sizeof params.modelName))
        Fuzz::require(fromLibraryText(back.modelName) == fromLibraryText(params.modelName), "stage: name");
    Fuzz::require(
        sameBytes(toMotorParams(toDevParam(back)), back) || !isAscii(back.modelName, sizeof back.modelName) ||
            !isAscii(back.optOrder, sizeof back.optOrder) || back.dispOneCircle != back.dispOneCircle ||
            back.restoreSpeed != back.restoreSpeed,
        "stage: there and back twice it is another");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    Fuzz::makeApplication();
    QLocale::setDefault(QLocale::c());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Fuzz::Input input(data, size);
    const auto params = input.take<MotorParams>();
    checkStage(params);
    Fuzz::Input typed = input;
    checkEdits(params, typed);
    checkControls(params, input);
    return 0;
}
