// SPDX-License-Identifier: MIT
// Texts in the number fields of the console, and in its compensation table.
#include "console/CompensationModel.h"
#include "console/NumberInput.h"

#include "Application.h"

#include <QLineEdit>

namespace {

template <typename Integer>
void checkInteger(const QString &text, const char *type)
{
    Integer value = 77;
    const bool ok = NumberInput::read(text, value);
    bool fits = false;
    const qlonglong wide = text.toLongLong(&fits);
    // A minus is refused even before a zero.
    const QString trimmed = text.trimmed();
    const bool negative = trimmed.startsWith(QLatin1Char('-')) || trimmed.startsWith(QChar(0x2212));
    fits = fits && (std::numeric_limits<Integer>::is_signed || !negative) &&
           wide >= qlonglong(std::numeric_limits<Integer>::min()) &&
           wide <= qlonglong(std::numeric_limits<Integer>::max());
    Fuzz::require(ok == fits, "in range or not:", QLatin1String(type) + QLatin1Char(' ') + text);
    Fuzz::require(qlonglong(value) == (fits ? wide : 0), "another value:", text);
    Integer again = 77;
    Fuzz::require(NumberInput::read(QString::number(value), again) && again == value, "read again:", text);
}

void checkReal(const QString &text)
{
    double value = 77;
    const bool ok = NumberInput::read(text, value);
    Fuzz::require(qIsFinite(value), "not finite:", text);
    Fuzz::require(ok || value == 0, "no number, and yet a value:", text);
    double again = 77;
    Fuzz::require(NumberInput::read(QString::number(value, 'g', 17), again) && again == value, "read again:", text);
    if (!ok)
        return;
    for (const QChar character : text.trimmed()) {
        const bool ofNumbers =
            (character >= '0' && character <= '9') || QStringLiteral("+-\u2212.eE").contains(character);
        Fuzz::require(ofNumbers, "a number with other characters:", text);
    }
}

void checkPairs(const CompensationModel &model, CompensationModel::Direction direction)
{
    const CompensationModel::Pairs pairs = model.pairs(direction);
    Fuzz::require(pairs.count >= 0 && pairs.count <= CompensationModel::Rows, "rows");
    for (int row = 0; row < pairs.count; ++row) {
        const double expected = pairs.values[size_t(2 * row)];
        Fuzz::require(qIsFinite(expected) && qIsFinite(pairs.values[size_t(2 * row + 1)]), "not finite");
        Fuzz::require(row == 0 || pairs.values[size_t(2 * row - 2)] < expected, "not in ascending order");
    }
    // Shown and taken again, at most the digits are fewer.
    CompensationModel again;
    again.show(direction, pairs);
    const CompensationModel::Pairs taken = again.pairs(direction);
    Fuzz::require(taken.count <= pairs.count, "more rows than were shown");
    CompensationModel third;
    third.show(direction, taken);
    Fuzz::require(third.pairs(direction).values == taken.values, "shown and taken twice it is another");
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
    static auto *const model = new CompensationModel;
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), int(size));
    checkInteger<int16_t>(text, "int16_t");
    checkInteger<uint16_t>(text, "uint16_t");
    checkInteger<int32_t>(text, "int32_t");
    checkInteger<uint32_t>(text, "uint32_t");
    checkReal(text);

    model->clearRows(0);
    model->paste(model->index(int(size % 3), int(size % 4)), text);
    checkPairs(*model, CompensationModel::Positive);
    checkPairs(*model, CompensationModel::Negative);
    for (int row = 0; row < CompensationModel::Rows; ++row) {
        for (int column = 0; column < model->columnCount(); ++column) {
            const QModelIndex cell = model->index(row, column);
            const bool marked = cell.data(Qt::BackgroundRole).isValid();
            const bool pair = !cell.data().toString().trimmed().isEmpty() ||
                              !model->index(row, column ^ 1).data().toString().trimmed().isEmpty();
            double ignored = 0;
            const bool wrong = pair && !NumberInput::read(cell.data().toString().trimmed(), ignored);
            Fuzz::require(marked == wrong, "marked or not:", cell.data().toString());
        }
    }
    return 0;
}
