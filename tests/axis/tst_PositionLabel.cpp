// SPDX-License-Identifier: MIT
#include "axis/PositionLabel.h"

#include <QFontDatabase>
#include <QImage>
#include <QtTest>

namespace {

const QSize displaySize(416, 96);
constexpr int leftPadding = 100; // where the lamps and their captions stand
constexpr int rightPadding = 20;

enum Part { Number, Unit }; // painted white and red, on black

bool isInk(QRgb pixel, Part part)
{
    const bool red = qRed(pixel) > 60 && qGreen(pixel) < 40;
    return part == Unit ? red : qGreen(pixel) > 60;
}

/** The rectangle that the ink of a part fills. */
QRect inkOf(const QImage &picture, Part part)
{
    QRect ink;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (isInk(picture.pixel(x, y), part))
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}

} // namespace

/** What the position display looks like in the program's font. */
class tst_PositionLabel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const int id = QFontDatabase::addApplicationFont(QStringLiteral(MOVER_PROGRAM_DIR "/font.ttf"));
        m_hasFont = id >= 0;
        if (m_hasFont)
            QApplication::setFont(QFont(QFontDatabase::applicationFontFamilies(id).first()));
    }

    void digitsKeepTheirPlaces_data()
    {
        QTest::addColumn<QString>("unit");
        QTest::newRow("mm") << "mm";
        QTest::newRow("degrees") << "°";
    }
    void digitsKeepTheirPlaces()
    {
        if (!m_hasFont)
            QSKIP("built without the program's font, whose figures are of one width");
        QFETCH(QString, unit);
        const QImage zeros = paint("000.000 " + unit);
        const int middle = placeOfThePoint(unit);
        const QRect before(0, 0, middle, zeros.height());
        const QRect after(middle, 0, zeros.width() - middle, zeros.height());
        QVERIFY(inkOf(zeros.copy(before), Number).isValid() && inkOf(zeros.copy(after), Number).isValid());
        for (int digit = 1; digit < 10; ++digit) {
            const QString three(3, QChar('0' + digit));
            QCOMPARE(paint(three + ".000 " + unit).copy(after), zeros.copy(after));
            QCOMPARE(paint("000." + three + " " + unit).copy(before), zeros.copy(before));
        }
        QCOMPARE(paint("-000.000 " + unit).copy(after), zeros.copy(after));
    }
    void noPairOfDigitsMovesTogether()
    {
        if (!m_hasFont)
            QSKIP("built without the program's font, whose figures are of one width");
        const QImage zeros = paint("000.000 mm");
        const QRect ink = inkOf(zeros, Number);
        const QRect first(0, 0, ink.left() + ink.width() / 8, zeros.height()); // most of the first zero
        for (int pair = 0; pair < 100; ++pair)
            QCOMPARE(paint(QString("0%1.000 mm").arg(pair, 2, 10, QChar('0'))).copy(first), zeros.copy(first));
    }
    void numbersEndAtOnePlaceWhateverTheirUnit()
    {
        QCOMPARE(inkOf(paint("0.000 °"), Number), inkOf(paint("0.000 mm"), Number));
    }
    void theUnitIsSmallAndStandsBesideTheNumber()
    {
        const QImage picture = paint("0.000 mm");
        const QRect number = inkOf(picture, Number);
        const QRect unit = inkOf(picture, Unit);
        QVERIFY(unit.left() > number.right());
        QVERIFY(unit.right() < displaySize.width() - rightPadding + 1);
        QVERIFY(unit.height() < number.height() / 2 + 1);
        QVERIFY(qAbs(unit.bottom() - number.bottom()) <= 1); // one line: zeros reach a little below it
    }
    void theDegreeSignIsAsHighAsTheNumber()
    {
        const QImage picture = paint("0.000 °");
        QVERIFY(qAbs(inkOf(picture, Unit).top() - inkOf(picture, Number).top()) <= 4);
    }
    void theNumberStandsInTheMiddleOfTheHeight()
    {
        const QRect number = inkOf(paint("0.000 mm"), Number);
        QVERIFY(qAbs(number.top() - (displaySize.height() - 1 - number.bottom())) <= 2);
    }
    void numbersOfEveryStageHaveTheirFullSize()
    {
        const QRect number = inkOf(paint("-12345.678 mm"), Number);
        QCOMPARE(number.height(), inkOf(paint("0.000 mm"), Number).height());
        QVERIFY(number.left() >= leftPadding);
    }
    void aLongerNumberIsSetSmaller()
    {
        const QRect number = inkOf(paint("-1234567890.123 mm"), Number);
        QVERIFY(number.height() < inkOf(paint("0.000 mm"), Number).height());
        QVERIFY(number.left() >= leftPadding);
        QCOMPARE(inkOf(paint("-1234567890.123 mm"), Unit), inkOf(paint("0.000 mm"), Unit));
    }
    void aNumberWithoutEndIsCut()
    {
        const QRect number = inkOf(paint(QString(300, '8') + ".000 mm"), Number);
        QVERIFY(number.left() >= leftPadding);
        QVERIFY(number.right() < inkOf(paint("0.000 mm"), Unit).left());
        QVERIFY(number.width() > 200);
    }
    void noNumberWidensItsSurroundings()
    {
        PositionLabel label;
        label.setText(QString(300, '8') + ".000 mm");
        QCOMPARE(label.minimumSizeHint().width(), 0);
        QVERIFY(label.minimumSizeHint().height() > 0);
    }
    void withoutAUnitTheWholeTextIsTheNumber()
    {
        const QImage picture = paint("---");
        QVERIFY(inkOf(picture, Number).isValid());
        QVERIFY(!inkOf(picture, Unit).isValid());
        QVERIFY(inkOf(picture, Number).right() < displaySize.width() - rightPadding);
    }

private:
    static QImage paint(const QString &text)
    {
        PositionLabel label;
        label.setStyleSheet(QString("background-color: #000000; color: #FFFFFF; qproperty-unitColor: #FF0000;"
                                    "font-size: 44px; padding: 0 %1px 0 %2px;")
                                .arg(QString::number(rightPadding), QString::number(leftPadding)));
        label.resize(displaySize);
        label.setText(text);
        return label.grab().toImage().convertToFormat(QImage::Format_RGB32);
    }
    /** A column through the point of "000.000", which is the one whose ink stays at the foot of the zeros. */
    static int placeOfThePoint(const QString &unit)
    {
        const QImage zeros = paint("000.000 " + unit);
        const QRect ink = inkOf(zeros, Number);
        for (int x = ink.left() + ink.width() / 3; x < ink.right(); ++x) {
            const QRect column = inkOf(zeros.copy(x, 0, 1, zeros.height()), Number);
            if (column.isValid() && column.top() > ink.bottom() - ink.height() / 4)
                return x;
        }
        return -1;
    }

    bool m_hasFont = false;
};

QTEST_MAIN(tst_PositionLabel)
#include "tst_PositionLabel.moc"
