// SPDX-License-Identifier: MIT
#include "controllers/grbl/Configuration.h"

#include "controllers/core/Controller.h"
#include "controllers/core/ObjectReader.h"
#include "controllers/grbl/Board.h"
#include "controllers/grbl/Replies.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace grbl {

using controllers::JsonError;
using controllers::JsonValue;
using controllers::maxNumber;
using controllers::ObjectReader;

namespace {

constexpr int maxInt = std::numeric_limits<int>::max();

MotorParams unknownStage()
{
    MotorParams stage{};
    stage.pulseOneCircle = 250;
    stage.dispOneCircle = 1;
    stage.restoreSpeed = 5;
    std::strcpy(stage.optOrder, "NZP");
    stage.maxSpeed = 10;
    stage.maxAcc = 50;
    stage.minPos = 0;
    stage.maxPos = 100;
    stage.motorPhase = 2;
    return stage;
}

void readAxis(const JsonValue &value, AxisSetup *axis)
{
    ObjectReader object(value, "the axis");
    std::string letter(1, axisLetters[axis->boardAxis]);
    object.text("letter", &letter, 1);
    const std::size_t number = letter.size() == 1 ? axisLetters.find(letter) : std::string_view::npos;
    if (number == std::string_view::npos)
        throw JsonError(value.line, "\"letter\" has to be one of X, Y, Z, A, B, C");
    axis->boardAxis = static_cast<int>(number);
    if (const JsonValue *stage = object.find("stage")) {
        controllers::readStage(*stage, &axis->stage);
        axis->hasStage = true;
    }
    axis->hasOffset = object.number("offset", &axis->offset, -maxNumber, maxNumber);
    object.finish();
}

void readBoard(const JsonValue &value, std::vector<BoardSetup> *boards)
{
    ObjectReader object(value, "the controller");
    BoardSetup board;
    object.require("id");
    object.number("id", &board.id, 1, maxInt);
    object.require("port");
    object.text("port", &board.port, 4096);
    object.require("kind");
    std::string kind;
    object.text("kind", &kind, 32);
    std::string name; // for people
    object.text("name", &name, 256);
    object.require("axes");
    const JsonValue::Array &axes = object.list("axes");
    if (axes.empty() || axes.size() > controllers::maxAxes)
        throw JsonError(value.line, "\"axes\" has to have 1 to 3 axes");
    for (const JsonValue &axis : axes) {
        AxisSetup setup;
        setup.boardAxis = static_cast<int>(board.axes.size());
        setup.stage = unknownStage();
        readAxis(axis, &setup);
        for (const AxisSetup &other : board.axes) {
            if (other.boardAxis == setup.boardAxis)
                throw JsonError(axis.line, "two axes have the same \"letter\"");
        }
        board.axes.push_back(setup);
    }
    object.finish();
    for (const BoardSetup &other : *boards) {
        if (other.id == board.id || other.port == board.port)
            throw JsonError(value.line, "two controllers have the same \"id\" or \"port\"");
    }
    if (kind == "grbl") // other kinds are other libraries'
        boards->push_back(std::move(board));
}

std::string contents(const std::filesystem::path &file)
{
    const std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

template <std::size_t Size>
std::string fieldText(const char (&field)[Size])
{
    return std::string(field, strnlen(field, Size));
}

using controllers::AxisSettings;

constexpr std::pair<const char *, double AxisSettings::*> numbers[] = {
    {"speed", &AxisSettings::speed},
    {"acceleration", &AxisSettings::acceleration},
    {"relativeDisp", &AxisSettings::relativeDisp},
    {"jogStep", &AxisSettings::jogStep},
    {"circleDisp", &AxisSettings::circleDisp},
    {"triggerStep", &AxisSettings::triggerStep},
};
constexpr std::pair<const char *, int AxisSettings::*> counts[] = {
    {"relativeDispEnable", &AxisSettings::relativeDispEnable},
    {"jogCount", &AxisSettings::jogCount},
    {"jogDelay", &AxisSettings::jogDelay},
    {"circleCount", &AxisSettings::circleCount},
    {"circleDelay", &AxisSettings::circleDelay},
    {"posConpenEnable", &AxisSettings::posConpenEnable},
};
using Table = std::vector<std::pair<double, double>>;
constexpr std::pair<const char *, Table AxisSettings::*> tables[] = {
    {"positivePosConpen", &AxisSettings::positivePosConpen},
    {"negativePosConpen", &AxisSettings::negativePosConpen},
};
constexpr std::pair<const char *, std::string controllers::Controller::*> texts[] = {
    {"serialNumber", &controllers::Controller::serialNumber},
    {"modelName", &controllers::Controller::modelName},
};

nlohmann::ordered_json stageJson(const MotorParams &stage)
{
    return {
        {"modelName", fieldText(stage.modelName)},
        {"serialNumber", fieldText(stage.serialNumber)},
        {"pulseOneCircle", stage.pulseOneCircle},
        {"dispOneCircle", stage.dispOneCircle},
        {"restoreSpeed", stage.restoreSpeed},
        {"moveType", stage.moveType},
        {"positivePolarity", stage.positivePolarity},
        {"negativePolarity", stage.negativePolarity},
        {"originPolarity", stage.originPolarity},
        {"phaseDirction", stage.phaseDirction},
        {"limitDirection", stage.limitDirection},
        {"unitType", stage.unitType},
        {"optOrder", fieldText(stage.optOrder)},
        {"maxSpeed", stage.maxSpeed},
        {"maxAcc", stage.maxAcc},
        {"minPos", stage.minPos},
        {"maxPos", stage.maxPos},
        {"zeroOptWidth", stage.zeroOptWidth},
        {"optNum", stage.optNum},
        {"returnTrip", stage.returnTrip},
        {"motorPhase", stage.motorPhase},
        {"modifyDate", stage.modifyDate},
        {"maxRockerSpeed", stage.maxRockerSpeed},
    };
}

void restoreAxis(const JsonValue &value, Axis *axis, Board *board)
{
    ObjectReader object(value, "the axis");
    int ranOn = 0;
    object.number("ranOn", &ranOn, -1, 1);
    board->setRanOn(axis->boardAxis(), ranOn);
    MotorParams before = axis->setUpStage();
    if (const JsonValue *setUp = object.find("setUp"))
        controllers::readStage(*setUp, &before);
    const JsonValue *kept = object.find("stage");
    if (kept && stageJson(before) == stageJson(axis->setUpStage())) { // or another stage has been set up since
        MotorParams stage = axis->stage();
        controllers::readStage(*kept, &stage);
        axis->restore(stage);
    }
    AxisSettings settings = axis->settings;
    for (const auto &[name, member] : numbers)
        object.number(name, &(settings.*member), -maxNumber, maxNumber);
    for (const auto &[name, member] : counts)
        object.number(name, &(settings.*member), 0, maxInt);
    for (const auto &[name, member] : tables) {
        Table &table = settings.*member;
        table.clear();
        for (const JsonValue &one : object.list(name)) {
            ObjectReader pair(one, "the pair");
            table.emplace_back();
            pair.number("expected", &table.back().first, -maxNumber, maxNumber);
            pair.number("actual", &table.back().second, -maxNumber, maxNumber);
        }
    }
    settings.speed = std::clamp(settings.speed, 1e-6, axis->stage().maxSpeed);
    settings.acceleration = std::clamp(settings.acceleration, 1e-6, axis->stage().maxAcc);
    axis->settings = settings;
}

} // namespace

std::filesystem::path Configuration::file()
{
    using Path = std::filesystem::path;
    const Path ofUser = Path("mover") / "controllers.json";
#if defined(_WIN32) // the other one answers in the code page, which does not have every character
    if (const wchar_t *named = _wgetenv(L"MOVER_CONTROLLERS"); named && *named)
        return named;
    const wchar_t *folder = _wgetenv(L"APPDATA");
    return folder ? folder / ofUser : Path();
#else
    if (const char *named = std::getenv("MOVER_CONTROLLERS"); named && *named)
        return named;
    if (const char *folder = std::getenv("XDG_CONFIG_HOME"); folder && *folder)
        return folder / ofUser;
    const char *home = std::getenv("HOME");
    return home ? Path(home) / ".config" / ofUser : Path();
#endif
}

bool Configuration::read(const std::filesystem::path &file, std::vector<BoardSetup> *boards, std::string *error)
{
    std::vector<BoardSetup> found;
    const std::string text = contents(file);
    if (text.empty()) {
        boards->clear();
        return true;
    }
    try {
        const JsonValue whole = JsonValue::parse(text);
        ObjectReader object(whole, "the file");
        int version = 1;
        object.number("version", &version, 1, 1);
        std::string library; // the program's choice
        object.text("library", &library, 32);
        int lastId = 0; // the program's, too
        object.number("lastId", &lastId, 0, maxInt);
        for (const JsonValue &board : object.list("controllers"))
            readBoard(board, &found);
        object.finish();
    } catch (const JsonError &wrong) {
        *error = file.u8string() + ":" + std::to_string(wrong.line) + ": " + wrong.what();
        return false;
    }
    *boards = std::move(found);
    return true;
}

std::filesystem::path Configuration::keptFile(const std::filesystem::path &file, int id)
{
    return file.parent_path() / ("board-" + std::to_string(id) + ".json");
}

void Configuration::restore(const std::filesystem::path &keptFile, controllers::Controller *controller, Board *board)
{
    try {
        const JsonValue whole = JsonValue::parse(contents(keptFile));
        ObjectReader object(whole, "the file");
        for (const auto &[name, member] : texts)
            object.text(name, &(controller->*member), MOVER_TEXT_LENGTH);
        int limitsOff = 0;
        object.number("limitsOff", &limitsOff, 0, 1);
        board->setLimitsOff(limitsOff == 1);
        int axis = 0;
        for (const JsonValue &kept : object.list("axes")) {
            if (axis < controller->axisCount)
                restoreAxis(kept, static_cast<Axis *>(&controller->axis(axis++)), board);
        }
    } catch (const JsonError &) {
        return; // begun again with the next change
    }
}

std::string Configuration::kept(controllers::Controller &controller, const Board &board)
{
    nlohmann::ordered_json file;
    for (const auto &[name, member] : texts)
        file[name] = controller.*member;
    file["limitsOff"] = board.limitsOff() ? 1 : 0;
    for (int i = 0; i < controller.axisCount; ++i) {
        const auto &axis = static_cast<const Axis &>(controller.axis(i));
        nlohmann::ordered_json one;
        one["ranOn"] = board.ranOn(axis.boardAxis());
        one["setUp"] = stageJson(axis.setUpStage());
        one["stage"] = stageJson(axis.stage());
        for (const auto &[name, member] : numbers)
            one[name] = axis.settings.*member;
        for (const auto &[name, member] : counts)
            one[name] = axis.settings.*member;
        for (const auto &[name, member] : tables) {
            one[name] = nlohmann::ordered_json::array();
            for (const auto &[expected, actual] : axis.settings.*member)
                one[name].push_back({{"expected", expected}, {"actual", actual}});
        }
        file["axes"].push_back(one);
    }
    // Texts are whatever bytes the caller had.
    return file.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

std::string Configuration::stageText(const MotorParams &stage)
{
    return stageJson(stage).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

bool Configuration::write(const std::filesystem::path &file, const std::string &text)
{
    std::error_code failed;
    std::filesystem::create_directories(file.parent_path(), failed);
    std::filesystem::path beside = file;
    beside += ".new";
    {
        std::ofstream stream(beside, std::ios::binary | std::ios::trunc);
        stream << text;
        if (!stream.flush())
            return false;
    }
    std::filesystem::rename(beside, file, failed);
    return !failed;
}

} // namespace grbl
