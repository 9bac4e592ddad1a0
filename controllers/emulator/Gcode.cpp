// SPDX-License-Identifier: MIT
#include "controllers/emulator/Gcode.h"

#include <cmath>

namespace emulator {

namespace {

enum Group { Motion, Once, Plane, Distance, FeedMode, Units, Compensation, ToolLength, System, Control, ArcDistance };
enum MGroup { Program = 16, Spindle, Coolant };

constexpr double mostCode = 255;

enum class Axes { Unused, Wanted };

struct Row {
    int code; // times ten
    Group group;
    Axes axes;
};

constexpr Row rows[] = {
    {0, Motion, Axes::Wanted},        {10, Motion, Axes::Wanted},        {20, Motion, Axes::Wanted},
    {30, Motion, Axes::Wanted},       {40, Once, Axes::Unused},          {100, Once, Axes::Wanted},
    {170, Plane, Axes::Unused},       {180, Plane, Axes::Unused},        {190, Plane, Axes::Unused},
    {200, Units, Axes::Unused},       {210, Units, Axes::Unused},        {280, Once, Axes::Wanted},
    {281, Once, Axes::Unused},        {300, Once, Axes::Wanted},         {301, Once, Axes::Unused},
    {382, Motion, Axes::Wanted},      {383, Motion, Axes::Wanted},       {384, Motion, Axes::Wanted},
    {385, Motion, Axes::Wanted},      {400, Compensation, Axes::Unused}, {431, ToolLength, Axes::Wanted},
    {490, ToolLength, Axes::Unused},  {530, Once, Axes::Unused},         {540, System, Axes::Unused},
    {550, System, Axes::Unused},      {560, System, Axes::Unused},       {570, System, Axes::Unused},
    {580, System, Axes::Unused},      {590, System, Axes::Unused},       {610, Control, Axes::Unused},
    {800, Motion, Axes::Unused},      {900, Distance, Axes::Unused},     {910, Distance, Axes::Unused},
    {911, ArcDistance, Axes::Unused}, {920, Once, Axes::Wanted},         {921, Once, Axes::Unused},
    {930, FeedMode, Axes::Unused},    {940, FeedMode, Axes::Unused},
};

/** The words of one line, as written. */
struct Words {
    std::array<bool, 26> has{};
    std::array<double, 26> value{};
    unsigned groups = 0;        // bits of the groups that have a word
    std::array<int, 19> code{}; // by group
    int axisCommand = -1;       // the code of the command that takes the axis words

    bool hasWord(char letter) const { return has[static_cast<std::size_t>(letter - 'A')]; }
    double operator[](char letter) const { return value[static_cast<std::size_t>(letter - 'A')]; }
    bool hasGroup(int group) const { return (groups >> group & 1U) != 0; }
    bool hasCode(int group, int number) const
    {
        return hasGroup(group) && code[static_cast<std::size_t>(group)] == number;
    }
};

int addGroup(Words &words, int group, int code)
{
    if (words.hasGroup(group)) {
        return 21;
    }
    words.groups |= 1U << group;
    words.code[static_cast<std::size_t>(group)] = code;
    return 0;
}

int addG(Words &words, double number)
{
    if (std::fabs(number) > mostCode) {
        return 20;
    }
    const int code = static_cast<int>(std::lround(number * 100)) / 10;
    const Row *found = nullptr;
    bool hasOthers = false; // of the same whole number
    for (const Row &row : rows) {
        found = row.code == code ? &row : found;
        hasOthers = hasOthers || (row.code / 10 == code / 10 && row.code % 10 != 0);
    }
    const bool isWhole = code % 10 == 0 && std::lround(number * 100) % 10 == 0;
    if (!found) {
        bool isKnown = false;
        for (const Row &row : rows) {
            isKnown = isKnown || row.code == code / 10 * 10;
        }
        return isKnown && !isWhole && !hasOthers ? 23 : 20;
    }
    if (found->axes == Axes::Wanted) {
        if (words.axisCommand >= 0) {
            return 24;
        }
        words.axisCommand = code;
    }
    return addGroup(words, found->group, code);
}

int addM(Words &words, double number)
{
    if (std::fabs(number) > mostCode) {
        return 20;
    }
    switch (static_cast<int>(number)) {
    case 0:
    case 1:
    case 2:
    case 30:
        return addGroup(words, Program, static_cast<int>(number));
    case 3:
    case 4:
    case 5:
        return addGroup(words, Spindle, static_cast<int>(number));
    case 8:
    case 9:
        return addGroup(words, Coolant, static_cast<int>(number));
    default:
        return 20;
    }
}

int addWord(Words &words, char letter, double number, int axes)
{
    constexpr std::string_view positive = "FNPTS";
    const std::string known = "FIJKLNPRST" + std::string(axisLetters.substr(0, static_cast<std::size_t>(axes)));
    if (known.find(letter) == std::string::npos) {
        return 20;
    }
    const std::size_t index = static_cast<std::size_t>(letter - 'A');
    if (words.has[index]) {
        return 25;
    }
    if (positive.find(letter) != std::string_view::npos && number < 0) {
        return 4;
    }
    if (letter == 'N' && number > 9999999) {
        return 27;
    }
    if (letter == 'T' && number > 255) {
        return 38;
    }
    words.has[index] = true;
    words.value[index] = number;
    return 0;
}

int readWords(std::string_view line, int axes, Words &words)
{
    for (std::size_t at = 0; at < line.size();) {
        const char letter = line[at];
        if (letter < 'A' || letter > 'Z') {
            return 1;
        }
        double number = 0;
        if (!readNumber(line, ++at, number)) {
            return 2;
        }
        const int error = letter == 'G'   ? addG(words, number)
                          : letter == 'M' ? addM(words, number)
                                          : addWord(words, letter, number, axes);
        if (error) {
            return error;
        }
    }
    return 0;
}

/** An arc in the plane of X and Y: whether its words make one. */
int checkArc(const Words &words, const Command &command, const Vector &position)
{
    if (!words.hasWord('X') && !words.hasWord('Y')) {
        return command.hasAxisWord ? 32 : 26;
    }
    const double dx = command.target[0] - position[0];
    const double dy = command.target[1] - position[1];
    if (words.hasWord('R')) {
        return (dx == 0 && dy == 0) || std::hypot(dx, dy) > 2 * std::fabs(words['R']) ? 34 : 0;
    }
    if (!words.hasWord('I') && !words.hasWord('J')) {
        return 35;
    }
    const double radius = std::hypot(words['I'], words['J']);
    const double there = std::hypot(dx - words['I'], dy - words['J']);
    return std::fabs(radius - there) > 0.005 + 0.001 * radius ? 33 : 0;
}

} // namespace

bool readNumber(std::string_view text, std::size_t &at, double &value)
{
    std::size_t i = at;
    bool isNegative = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) {
        isNegative = text[i++] == '-';
    }
    double whole = 0;
    double unit = 1;
    bool hasPoint = false;
    int digits = 0;
    for (; i < text.size(); ++i) {
        if (text[i] == '.' && !hasPoint) {
            hasPoint = true;
        } else if (text[i] >= '0' && text[i] <= '9') {
            whole = whole * 10 + (text[i] - '0');
            unit *= hasPoint ? 10 : 1;
            ++digits;
        } else {
            break;
        }
    }
    if (digits == 0) {
        return false;
    }
    at = i;
    value = (isNegative ? -whole : whole) / unit;
    return true;
}

Vector Offsets::work(int systemNumber) const
{
    Vector offset = system[static_cast<std::size_t>(systemNumber)];
    for (std::size_t axis = 0; axis < offset.size(); ++axis) {
        offset[axis] += g92[axis];
    }
    offset[2] += toolLength;
    return offset;
}

Command readLine(
    std::string_view line, bool isJog, int axes, const Modes &modes, const Offsets &offsets, const Vector &position)
{
    Command command;
    command.modes = modes;
    command.offsets = offsets;
    command.target = position;
    Words words;
    const auto fail = [&command](int error) {
        command.error = error;
        return command;
    };
    if (const int error = readWords(line, axes, words)) {
        return fail(error);
    }

    // The modes of the line.
    Modes &now = command.modes;
    const bool hadFeed = words.hasWord('F');
    if (words.hasGroup(Units)) {
        now.isInch = words.code[Units] == 200;
    }
    if (words.hasGroup(Distance)) {
        now.isRelative = words.code[Distance] == 910;
    }
    if (words.hasGroup(FeedMode)) {
        now.isInverseTime = words.code[FeedMode] == 930;
        now.feed = 0;
    }
    if (words.hasGroup(Plane)) {
        now.plane = words.code[Plane] / 10;
    }
    if (words.hasGroup(System)) {
        now.system = words.code[System] / 10 - 54;
    }
    const double unit = now.isInch ? 25.4 : 1;
    if (hadFeed) {
        now.feed = words['F'] * unit;
    }
    command.feed = now.feed;
    if (words.hasWord('S')) {
        now.spindleSpeed = words['S'];
    }
    if (words.hasWord('T')) {
        now.tool = static_cast<int>(words['T']);
    }
    if (words.hasGroup(Spindle)) {
        now.spindle = words.code[Spindle];
    }
    if (words.hasGroup(Coolant)) {
        now.isFloodOn = words.code[Coolant] == 8;
    }
    if (words.hasGroup(Program)) {
        command.program = words.code[Program];
    }
    if (words.hasGroup(Motion)) {
        now.motion = words.code[Motion];
    }

    // Where it goes.
    command.isMachine = words.hasCode(Once, 530);
    const bool isRelative = now.isRelative && !command.isMachine;
    const Vector work = offsets.work(now.system);
    for (int axis = 0; axis < axes; ++axis) {
        const char letter = axisLetters[static_cast<std::size_t>(axis)];
        if (!words.hasWord(letter)) {
            continue;
        }
        command.named |= 1 << axis;
        command.hasAxisWord = true;
        const double value = words[letter] * unit;
        command.target[axis] = isRelative ? position[axis] + value : command.isMachine ? value : value + work[axis];
    }
    command.isRelativeLine = isRelative;

    // A feed is wanted, and whether it has one is looked at before anything else is.
    if (isJog && (!hadFeed || now.feed == 0)) {
        return fail(22);
    }

    // Which command takes the axis words.
    int taker = words.axisCommand;
    if (taker < 0 && command.hasAxisWord) {
        if (now.motion == 800) {
            return fail(31);
        }
        taker = isJog ? 10 : now.motion;
    }
    const bool isArc = taker == 20 || taker == 30;
    const bool isProbe = taker >= 382 && taker <= 385;
    if (isArc) {
        if (const int error = checkArc(words, command, position)) {
            return fail(error);
        }
    }
    const bool wantsAxes = isProbe || taker == 100 || taker == 431 || taker == 920;
    if (wantsAxes && !command.hasAxisWord) {
        return fail(26);
    }
    const bool isDwell = words.hasCode(Once, 40);
    if (isDwell && !words.hasWord('P')) {
        return fail(28);
    }
    if (taker == 100) {
        if (words['P'] > Offsets::systems) {
            return fail(29);
        }
        if (words['L'] != 2 && words['L'] != 20) {
            return fail(20);
        }
    }
    if (!isJog && command.hasAxisWord && (taker == 10 || isArc || isProbe) &&
        (now.feed == 0 || (now.isInverseTime && !hadFeed))) {
        return fail(22);
    }
    if (command.isMachine && command.hasAxisWord && taker != 0 && taker != 10) {
        return fail(30);
    }

    // Words that nothing takes.
    const bool unused =
        ((words.hasWord('I') || words.hasWord('J') || words.hasWord('K') || words.hasWord('R')) && !isArc) ||
        (words.hasWord('P') && !isDwell && taker != 100) || (words.hasWord('L') && taker != 100) ||
        (isJog && (words.hasWord('S') || words.hasWord('T')));
    if (unused) {
        return fail(36);
    }

    if (isJog) {
        constexpr unsigned allowed = 1U << Distance | 1U << Units | 1U << Once;
        if ((words.groups & ~allowed) != 0 || (words.hasGroup(Once) && !command.isMachine)) {
            return fail(16);
        }
        command.modes = modes;
        if (!command.hasAxisWord) {
            command.target = {}; // as the firmware does: all axes to machine zero
        }
        command.action = Command::Action::Move;
        return command;
    }

    // What it does.
    if (isDwell) {
        command.action = Command::Action::Dwell;
        command.dwell = words['P'];
    } else if (taker == 100) {
        const int number = static_cast<int>(words['P']);
        Vector &system = command.offsets.system[static_cast<std::size_t>(number ? number - 1 : now.system)];
        for (int axis = 0; axis < axes; ++axis) {
            if ((command.named >> axis & 1) != 0) {
                const double value = words[axisLetters[static_cast<std::size_t>(axis)]] * unit;
                system[axis] = words['L'] == 2 ? value : position[axis] - offsets.g92[axis] - value;
            }
        }
        command.action = Command::Action::StoreOffsets;
        command.waitsForStand = true;
    } else if (taker == 920) {
        for (int axis = 0; axis < axes; ++axis) {
            if ((command.named >> axis & 1) != 0) {
                const double value = words[axisLetters[static_cast<std::size_t>(axis)]] * unit;
                command.offsets.g92[axis] =
                    position[axis] - offsets.system[static_cast<std::size_t>(now.system)][axis] - value;
            }
        }
    } else if (words.hasCode(Once, 921)) {
        command.offsets.g92 = {};
    } else if (words.hasCode(Once, 281) || words.hasCode(Once, 301)) {
        (words.code[Once] == 281 ? command.offsets.g28 : command.offsets.g30) = position;
        command.action = Command::Action::StoreOffsets;
    } else if (taker == 431 || words.hasCode(ToolLength, 490)) {
        command.offsets.toolLength = taker == 431 ? words['Z'] * unit : 0;
        command.waitsForStand = true;
    } else if (taker == 280 || taker == 300) {
        command.action = Command::Action::Park;
        command.park = taker == 280 ? offsets.g28 : offsets.g30;
    } else if (isArc) {
        return fail(20);
    } else if (isProbe) {
        command.action = Command::Action::Probe;
        command.alarmsWithoutContact = taker == 382 || taker == 384;
    } else if (command.hasAxisWord) {
        command.action = Command::Action::Move;
        command.isRapid = taker == 0;
    }
    return command;
}

} // namespace emulator
