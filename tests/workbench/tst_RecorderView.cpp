// SPDX-License-Identifier: MIT
#include "workbench/RecorderView.h"

#include "device/SerialComDev.h"
#include "device/moverMessages.h"
#include "session/ControlSession.h"
#include "support/Catalogue.h"
#include "support/ChooseFile.h"
#include "support/OnMessageBox.h"
#include "support/WorkerFixture.h"
#include "workbench/AxisRow.h"
#include "workbench/EventList.h"
#include "workbench/EventWords.h"
#include "workbench/PlotModule.h"
#include "workbench/RecorderPlot.h"

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QSvgRenderer>
#include <QTemporaryDir>

using namespace std::chrono_literals;

Q_DECLARE_METATYPE(RecorderEvent)

/** The recorder's page over a recorder that is told made-up times: nothing here waits for an axis. */
class tst_RecorderView : public WorkerFixture
{
    Q_OBJECT

    QSharedPointer<ControlSession> m_session;
    std::unique_ptr<RecorderView> m_view;
    AnswerListener::Time m_now;

    template <typename Widget = QPushButton>
    Widget *in(const char *name) const
    {
        auto *found = m_view->findChild<Widget *>(QLatin1String(name));
        if (!found)
            qFatal("There is no %s", name);
        return found;
    }
    static PlotColours plotColours()
    {
        PlotColours colours;
        colours.alarm = Qt::red;
        colours.axes = {Qt::green};
        return colours;
    }
    QString text(const char *label) const { return in<QLabel>(label)->text(); }
    void click(const char *name) const { QTest::mouseClick(in(name), Qt::LeftButton); }
    Recorder &recorder() const { return m_session->recorder(); }
    RecorderPlot *plot() const { return m_view->plot(); }

    /** Two axes at 10 Hz for the last `seconds`, in which the first has moved by 1 mm/s. */
    void record(double seconds)
    {
        recorder().describe({0, QStringLiteral("LIN-100")});
        recorder().describe({1, QStringLiteral("ROT-60"), QStringLiteral("°")});
        const auto end = AnswerListener::Time::clock::now();
        const int count = int(seconds * 10);
        for (int k = 0; k <= count; ++k) {
            m_now = end - (count - k) * 100ms;
            recorder().positionAnswered(0, 5 + k * 0.1, m_now);
            recorder().positionAnswered(1, 90, m_now);
        }
    }
    void show()
    {
        m_view = std::make_unique<RecorderView>();
        m_view->resize(1198, 665);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    }
    /** The colours that stand in the plots. */
    bool draws(const char *colour) const
    {
        const QImage image = plot()->grab().toImage();
        const QRgb wanted = QColor(QLatin1String(colour)).rgb();
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if ((image.pixel(x, y) | 0xFF000000) == wanted)
                    return true;
            }
        }
        return false;
    }
    QString exported(const char *action, const QString &name, int filter)
    {
        const QString path = m_folder->filePath(name);
        m_view->setAskPath([path, filter](QWidget *, const QString &, const QStringList &filters, QString *chosen) {
            *chosen = filters.at(filter);
            return path;
        });
        if (QLatin1String(action) == QLatin1String("picture"))
            click("pushButton_exportPicture");
        else
            in<QMenu>("menu_exportCsv")->actions().at(QLatin1String(action) == QLatin1String("all") ? 1 : 0)->trigger();
        return path;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<Catalogue> m_english;

private slots:
    void initTestCase()
    {
        QVERIFY2(PlotModule::functions(), qPrintable(PlotModule::error()));
        QFile sheet(QStringLiteral(":/style.qss"));
        QVERIFY(sheet.open(QIODevice::ReadOnly));
        qApp->setStyleSheet(QString::fromUtf8(sheet.readAll()));
    }
    void init()
    {
        m_english = std::make_unique<Catalogue>();
        begin();
        m_folder = std::make_unique<QTemporaryDir>();
        m_session = ControlSession::instance();
        recorder().begin(QStringLiteral("SIM-A"));
    }
    void cleanup()
    {
        m_view.reset();
        m_session.reset();
        end();
        m_english.reset();
    }

    void saysWhatToDoWhileNothingIsRecorded()
    {
        show();
        QCOMPARE(text("label_held"), QStringLiteral("Recorded: nothing"));
        QVERIFY(!in("pushButton_pause")->isEnabled());
        QVERIFY(!in("pushButton_exportCsv")->isEnabled());
        QVERIFY(!in("pushButton_exportPicture")->isEnabled());
        QVERIFY(in("pushButton_range1h")->isEnabled());
        QVERIFY(in<QLabel>("label_noAxis")->isVisible() && in<QLabel>("label_noEvent")->isVisible());
        QVERIFY(!plot()->picture(800).emptyTitle.isEmpty());
    }

    void showsWhatIsHeldAndTheRateReached()
    {
        record(75);
        show();
        QCOMPARE(text("label_held"), QStringLiteral("Recorded: 1 min 15 s, 1\u202F502 samples"));
        QCOMPARE(text("label_reached"), QStringLiteral("10.0 samples per second reached"));
        const QStringList now = in<AxisRow>("axisRow_0")->texts();
        QCOMPARE(now.mid(0, 2), (QStringList{"80.000", "1.000"}));
    }

    void drawsEachShownAxisInItsColour()
    {
        record(30);
        show();
        QVERIFY(draws("#A5D4FF") && draws("#D49B2B"));
        in<AxisRow>("axisRow_0")->click();
        QVERIFY(!draws("#A5D4FF") && draws("#D49B2B"));
        const PlotPicture picture = plot()->picture(800);
        QVERIFY(picture.leftUnit.isNull()); // no axis reads on it
        QCOMPARE(picture.rightUnit, QStringLiteral("°"));
    }

    void anyAnswerIsDrawn()
    {
        recorder().describe({0, QStringLiteral("LIN-100")});
        for (const double position : {1e308, 1e308, -1e308, qInf(), qQNaN()}) {
            recorder().positionAnswered(0, position, AnswerListener::Time::clock::now());
            show();
            QVERIFY(draws("#A5D4FF"));
        }
    }

    void anAxisThatNoLongerAnswersHasNoVelocity()
    {
        record(3);
        show();
        QCOMPARE(in<AxisRow>("axisRow_0")->texts().at(1), QStringLiteral("1.000"));
        QTRY_COMPARE(in<AxisRow>("axisRow_0")->texts().at(1), QStringLiteral("–"));
        QCOMPARE(in<AxisRow>("axisRow_0")->texts().at(0), QStringLiteral("8.000"));
    }

    void timeWithoutSamplesIsNotBridged()
    {
        record(20);
        recorder().positionAnswered(0, 50, m_now + 8s);
        recorder().positionAnswered(1, 90, m_now + 8s);
        show();
        plot()->showTime(recorder().usOf(m_now + 4s));
        const PlotPicture picture = plot()->picture(800);
        QVERIFY(!picture.gaps.isEmpty());
        QVERIFY(std::abs(picture.gaps.first().second - picture.gaps.first().first - 8) < 0.01);
        QCOMPARE(picture.traces.first().position.size(), 2);
    }

    void pauseHoldsThePictureNotTheRecording()
    {
        record(30);
        show();
        click("pushButton_pause");
        QCOMPARE(in("pushButton_pause")->text(), QStringLiteral("Live"));
        const qint64 to = plot()->toUs();
        const qint64 size = plot()->recording().sampleCount();
        recorder().positionAnswered(0, 7, m_now + 200ms);
        QTRY_COMPARE(plot()->recording().sampleCount(), size + 1);
        QCOMPARE(plot()->toUs(), to);
        click("pushButton_pause");
        QVERIFY(plot()->isLive());
        QVERIFY(plot()->toUs() > to);
    }

    void rangesAndKeys()
    {
        record(600);
        show();
        QCOMPARE(plot()->span(), qint64(60000000));
        click("pushButton_range10s");
        QCOMPARE(plot()->span(), qint64(10000000));
        QVERIFY(in("pushButton_range10s")->isChecked());
        click("pushButton_rangeAll");
        QCOMPARE(plot()->fromUs(), plot()->recording().startUs());
        click("pushButton_range1min");

        plot()->setFocus();
        const qint64 live = plot()->toUs();
        QTest::keyClick(plot(), Qt::Key_Left);
        QVERIFY(!plot()->isLive());
        QVERIFY(std::abs(live - 6000000 - plot()->toUs()) < 1000000);
        QTest::keyClick(plot(), Qt::Key_Plus);
        QVERIFY(!in("pushButton_range1min")->isChecked());
        QTest::keyClick(plot(), Qt::Key_Home);
        QCOMPARE(plot()->fromUs(), plot()->recording().startUs());
        QTest::keyClick(plot(), Qt::Key_End);
        QVERIFY(plot()->isLive());
        QTest::keyClick(plot(), Qt::Key_Space);
        QVERIFY(!plot()->isLive());
    }

    void wheelZoomsAboutThePointerAndDraggingShifts()
    {
        record(600);
        show();
        plot()->setLive(false);
        const PlotLayout layout{QRectF(plot()->rect())};
        const QPointF at(layout.position.left() + layout.position.width() / 4, layout.position.center().y());
        const auto timeThere = [&] { return plot()->fromUs() + (plot()->toUs() - plot()->fromUs()) / 4; };
        const qint64 there = timeThere();
        QWheelEvent wheel(
            at, plot()->mapToGlobal(at.toPoint()), {}, {0, 240}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
            false);
        QApplication::sendEvent(plot(), &wheel);
        QCOMPARE(plot()->span(), qint64(60000000 / 1.5625));
        QVERIFY(std::abs(timeThere() - there) < 1000);
        const qint64 to = plot()->toUs();
        QTest::mousePress(plot(), Qt::LeftButton, {}, at.toPoint());
        QMouseEvent drag(QEvent::MouseMove, at + QPointF(100, 0), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(plot(), &drag);
        QTest::mouseRelease(plot(), Qt::LeftButton, {}, at.toPoint() + QPoint(100, 0));
        QVERIFY(
            std::abs(to - plot()->toUs() - qint64(100 / layout.position.width() * double(plot()->span()))) < 100000);
    }

    void keysAndShiftedWheelMove_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<double>("moved"); // parts of what is shown
        QTest::newRow("left") << int(Qt::Key_Left) << -0.1;
        QTest::newRow("right") << int(Qt::Key_Right) << 0.1;
        QTest::newRow("page up") << int(Qt::Key_PageUp) << -1.0;
        QTest::newRow("page down") << int(Qt::Key_PageDown) << 1.0;
        QTest::newRow("wheel with shift") << 0 << -0.1;
    }
    void keysAndShiftedWheelMove()
    {
        QFETCH(int, key);
        QFETCH(double, moved);
        record(600);
        show();
        plot()->showTime(recorder().usOf(m_now - 300s));
        const qint64 to = plot()->toUs();
        const QPointF at = plot()->rect().center();
        QWheelEvent wheel(
            at, plot()->mapToGlobal(at.toPoint()), {}, {0, 120}, Qt::NoButton, Qt::ShiftModifier, Qt::NoScrollPhase,
            false);
        if (key)
            QTest::keyClick(plot(), Qt::Key(key));
        else
            QApplication::sendEvent(plot(), &wheel);
        QVERIFY(!plot()->isLive());
        QCOMPARE(double(plot()->toUs() - to) / 60e6, moved);
    }

    void keysZoomAboutTheMiddle_data()
    {
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<qint64>("span"); // µs
        QTest::newRow("up") << Qt::Key_Up << qint64(40000000);
        QTest::newRow("plus") << Qt::Key_Plus << qint64(40000000);
        QTest::newRow("plus without shift") << Qt::Key_Equal << qint64(40000000);
        QTest::newRow("down") << Qt::Key_Down << qint64(90000000);
        QTest::newRow("minus") << Qt::Key_Minus << qint64(90000000);
    }
    void keysZoomAboutTheMiddle()
    {
        QFETCH(Qt::Key, key);
        record(600);
        show();
        plot()->showTime(recorder().usOf(m_now - 300s));
        const qint64 middle = (plot()->fromUs() + plot()->toUs()) / 2;
        QTest::keyClick(plot(), key);
        QTEST(plot()->span(), "span");
        QVERIFY(std::abs((plot()->fromUs() + plot()->toUs()) / 2 - middle) <= 1);
    }

    void movingBeyondNowIsLiveAgain()
    {
        record(600);
        show();
        for (const auto &back : std::vector<std::function<void()>>{
                 [this] { QTest::keyClick(plot(), Qt::Key_PageDown); },
                 [this] { QTest::mouseDClick(plot(), Qt::LeftButton); }}) {
            plot()->showTime(recorder().usOf(m_now - 40s));
            QVERIFY(!plot()->isLive());
            back();
            QVERIFY(plot()->isLive());
        }
    }

    void barLeadsToAnyTime()
    {
        record(600);
        show();
        const QRectF bar = PlotLayout{QRectF(plot()->rect())}.bar;
        const QPoint quarter(int(bar.left() + bar.width() / 4), int(bar.center().y()));
        const auto middle = [this] {
            return double((plot()->fromUs() + plot()->toUs()) / 2 - plot()->recording().startUs()) / 1e6;
        };
        QTest::mousePress(plot(), Qt::LeftButton, {}, quarter); // beside its handle
        QVERIFY2(std::abs(middle() - 150) < 2, qPrintable(QString::number(middle())));
        const QPointF half(bar.center());
        QMouseEvent drag(QEvent::MouseMove, half, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(plot(), &drag);
        QTest::mouseRelease(plot(), Qt::LeftButton, {}, half.toPoint());
        QVERIFY2(std::abs(middle() - 300) < 2, qPrintable(QString::number(middle())));
    }

    void cursorReadsTheSampleUnderIt()
    {
        record(60);
        show();
        plot()->setLive(false);
        QCOMPARE(in<AxisRow>("axisRow_0")->texts().at(2), QStringLiteral("–"));
        const PlotLayout layout{QRectF(plot()->rect())};
        QTest::mouseMove(plot(), layout.position.center().toPoint());
        QTRY_VERIFY(plot()->cursorSample(0)); // Windows tells of the mouse in its own time
        const auto sample = plot()->cursorSample(0);
        QCOMPARE(in<AxisRow>("axisRow_0")->texts().at(2), QString::number(sample->position, 'f', 3));
        QVERIFY(plot()->picture(plot()->width()).traces.first().cursorPosition);
        QTest::mouseMove(plot(), QPoint(2, 2));
        QTRY_VERIFY(!plot()->cursorSample(0));
    }

    void eventsAreListedNewestFirstAndLeadToTheirTime()
    {
        record(600);
        recorder().commandAnswered({0, OPERATION_TYPE_DRIVE, 1}, m_now - 300s);
        recorder().commandAnswered({1, OPERATION_TYPE_STOP, 0, MotionCommand::StopAll}, m_now - 10s);
        show();
        auto *list = in<EventList>("listView_events");
        QCOMPARE(list->texts().size(), 2);
        QVERIFY(list->texts().at(0).endsWith(QStringLiteral(" Axis2 is told to stop (stop all)")));
        QVERIFY(list->texts().at(1).endsWith(QStringLiteral(" Axis1 drives +")));
        QCOMPARE(plot()->picture(800).marks.size(), 1); // in the last minute
        emit list->activated(list->model()->index(1, 0));
        QVERIFY(!plot()->isLive());
        QCOMPARE((plot()->fromUs() + plot()->toUs()) / 2, recorder().usOf(m_now - 300s));
    }

    void eventsAreToldInWords_data()
    {
        using Event = RecorderEvent;
        using Source = MotionCommand;
        QTest::addColumn<RecorderEvent>("event");
        QTest::addColumn<QString>("words");
        const std::pair<Event, const char *> rows[] = {
            {{0, Event::Command, 0, OPERATION_TYPE_HOME, 0, Source::Console}, "Axis1 starts homing (console)"},
            {{0, Event::Command, 0, OPERATION_TYPE_JOG, -1, Source::Holder}, "Axis1 jogs − (sequence)"},
            {{0, Event::Arrived, 1}, "Axis2 arrived"},
            {{0, Event::Stopped, 1}, "Axis2 stopped"},
            {{0, Event::Homed, 1}, "Axis2 homed"},
            {{0, Event::Limit, 0, 0, 1}, "Axis1 positive limit"},
            {{0, Event::Limit, 0, 0, -1}, "Axis1 negative limit"},
            {{0, Event::Failure, 0, Event::OptoFault, -1}, "Axis1 negative opto-coupler failed"},
            {{0, Event::Failure, 0, Event::OptoFault, 0}, "Axis1 origin opto-coupler failed"},
            {{0, Event::Failure, 0, Event::OptoFault, 1}, "Axis1 positive opto-coupler failed"},
            {{0, Event::Failure, 0, OPERATION_TYPE_LOOP, 1, Source::Request, -1000},
             "Axis1 loops + was refused: -1000"},
            {{0, Event::Failure, Event::AllAxes, Event::BoardMessage, 0, Source::Request, moverMessages::OnHold},
             "The board was put on hold (button or safety door): all axes are stopped"},
            {{0, Event::Failure, 1, Event::BoardMessage, 0, Source::Request, moverMessages::PositionLost},
             "Axis2 The board has restarted, the position is lost: home"},
            {{0, Event::LinkLost}, "Link lost"},
            {{0, Event::LinkLost, 0}, "Axis1 link lost"},
            {{0, Event::LinkBack, Event::AllAxes, 0, 0, Source::Request, 0, 1540000}, "Link back after 1.5 s"},
            {{0, Event::LinkBack, 1, 0, 0, Source::Request, 0, 1540000}, "Axis2 Link back after 1.5 s"},
        };
        for (const auto &[event, words] : rows)
            QTest::newRow(words) << event << QString::fromUtf8(words);
        const auto step = [](const SequenceStep &step, const char *words) {
            Event event{0, Event::StepBegun};
            event.sequence = std::make_shared<SequenceNote>(SequenceNote{QStringLiteral("Scan"), 2, step});
            QTest::newRow(words) << event << QString::fromUtf8(words);
        };
        step({SequenceStep::MoveTo, 1, 60}, "Step 3: Move to Axis2 60.000");
        step({SequenceStep::Wait, 0, 1.5}, "Step 3: Wait 1.5 s");
        step({SequenceStep::SetSpeed, 0, 4}, "Step 3: Set speed Axis1 4");
        step({SequenceStep::Ask, 0, 0, 0, 0, QStringLiteral("Lamp\non?")}, "Step 3: Ask Lamp on?");
        Event end{0, Event::SequenceEnded};
        end.sequence = std::make_shared<SequenceNote>(
            SequenceNote{QStringLiteral("Scan"), 2, {}, SequenceEnd{SequenceEnd::PanelClosed, 2, 1}});
        QTest::newRow("end") << end << "Sequence \"Scan\" ended at step 3: The panel of Axis2 was closed";
    }
    void eventsAreToldInWords()
    {
        QFETCH(RecorderEvent, event);
        QTEST(EventWords::of(event), "words");
    }

    /** By its shape alone, for those who do not see colours. */
    void eventsAreToldByShape_data()
    {
        using Event = RecorderEvent;
        using Shape = PlotPicture::Shape;
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("shape");
        QTest::addColumn<bool>("isAlarm");
        const struct {
            const char *name;
            Event::Kind kind;
            Shape shape;
            bool isAlarm;
        } rows[] = {
            {"command", Event::Command, Shape::Command, false}, {"arrived", Event::Arrived, Shape::Arrival, false},
            {"homed", Event::Homed, Shape::Arrival, false},     {"stopped", Event::Stopped, Shape::Stop, false},
            {"limit", Event::Limit, Shape::Limit, true},        {"failure", Event::Failure, Shape::Cross, true},
            {"link lost", Event::LinkLost, Shape::Cross, true}, {"link back", Event::LinkBack, Shape::Ring, false},
            {"step", Event::StepBegun, Shape::Bar, false},
        };
        for (const auto &row : rows)
            QTest::newRow(row.name) << int(row.kind) << int(row.shape) << row.isAlarm;
    }
    void eventsAreToldByShape()
    {
        QFETCH(int, kind);
        QFETCH(int, shape);
        RecorderEvent event{2500000, RecorderEvent::Kind(kind), 0, 0, 1};
        const PlotPicture::Mark mark = EventWords::markOf(event, plotColours());
        QCOMPARE(mark.at, 2.5);
        QCOMPARE(int(mark.shape), shape);
        QTEST(mark.isAlarm, "isAlarm");
        QCOMPARE(mark.colour, QColor(mark.isAlarm ? Qt::red : Qt::green));
        QSet<QByteArray> pictures;
        for (int each = 0; each <= int(PlotPicture::Shape::Bar); ++each) {
            QImage image(16, 16, QImage::Format_RGB32);
            image.fill(Qt::black);
            QPainter painter(&image);
            drawMark(&painter, {8, 8}, PlotPicture::Shape(each), 1, Qt::white);
            painter.end();
            pictures.insert(QByteArray(reinterpret_cast<const char *>(image.constBits()), int(image.sizeInBytes())));
        }
        QCOMPARE(pictures.size(), int(PlotPicture::Shape::Bar) + 1);
    }

    void theCursorGoesWithTheMouse()
    {
        record(10);
        show();
        QTest::mouseMove(plot(), plot()->rect().center());
        QVERIFY(plot()->picture(800).cursor);
        QEvent leaves(QEvent::Leave);
        QCoreApplication::sendEvent(plot(), &leaves);
        QVERIFY(!plot()->picture(800).cursor);
    }

    void hiddenItLooksAtNothing()
    {
        record(10);
        show();
        m_view->hide();
        const qint64 size = plot()->recording().sampleCount();
        record(0.3);
        QTest::qWait(200); // four times what it takes while it is shown
        QCOMPARE(plot()->recording().sampleCount(), size);
        m_view->show();
        QVERIFY(plot()->recording().sampleCount() > size);
    }

    void tablesAreWrittenBesideTheWindow_data()
    {
        QTest::addColumn<QString>("action");
        QTest::addColumn<int>("filter");
        QTest::addColumn<int>("rows");
        QTest::addColumn<QString>("first");
        QTest::newRow("shown") << "shown" << 0 << 1200 << "\uFEFFtime,seconds,";
        QTest::newRow("all") << "all" << 1 << 6002 << "\uFEFFtime;seconds;";
    }
    void tablesAreWrittenBesideTheWindow()
    {
        QFETCH(QString, action);
        QFETCH(int, filter);
        QFETCH(int, rows);
        QFETCH(QString, first);
        record(300);
        show();
        plot()->setLive(false);
        QFile file(exported(action.toLatin1().constData(), QStringLiteral("a"), filter) + QStringLiteral(".csv"));
        QTRY_VERIFY(!m_view->isExporting());
        QVERIFY(text("label_note").startsWith(QStringLiteral("Saved: ")));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString all = QString::fromUtf8(file.readAll());
        QVERIFY(all.startsWith(first));
        QVERIFY(std::abs(all.count(QStringLiteral("\r\n")) - 1 - rows) <= 12); // what is shown moves while it opens
    }

    void aTableCanBeCancelled()
    {
        for (int k = 0; k < 800000; ++k)
            recorder().positionAnswered(0, k, AnswerListener::Time::clock::now() - 80000s + k * 100ms);
        show();
        const QString path = exported("all", QStringLiteral("a.csv"), 0);
        QVERIFY(m_view->isExporting());
        QVERIFY(!in("pushButton_exportCsv")->isEnabled());
        QVERIFY(in("pushButton_cancelExport")->isVisible());
        click("pushButton_cancelExport");
        QTRY_VERIFY(!m_view->isExporting());
        QCOMPARE(text("label_note"), QStringLiteral("Export cancelled"));
        QVERIFY(!QFile::exists(path));
    }

    void pictures_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("filter");
        QTest::newRow("png") << "a.png" << 0;
        QTest::newRow("svg") << "a.svg" << 0;
        QTest::newRow("by the filter") << "b" << 1;
    }
    void pictures()
    {
        QFETCH(QString, name);
        QFETCH(int, filter);
        record(30);
        show();
        QString path = exported("picture", name, filter);
        if (filter == 1)
            path += QStringLiteral(".svg");
        if (path.endsWith(QLatin1String("png"))) {
            QCOMPARE(QImage(path).size(), plot()->size() * 2);
        } else {
            QSvgRenderer svg(path);
            QVERIFY(svg.isValid());
            QCOMPARE(svg.viewBox().size(), plot()->size());
        }
    }

    void aPictureGoesWhereTheDialogSays()
    {
        record(30);
        show();
        const QString path = m_folder->filePath(QStringLiteral("c.png"));
        chooseFile(path);
        click("pushButton_exportPicture");
        QCOMPARE(QImage(path).size(), plot()->size() * 2);
    }

    void whatCannotBeWrittenIsSaid()
    {
        record(30);
        show();
        for (const char *action : {"picture", "all"}) {
            OnMessageBox box;
            exported(action, QStringLiteral("no/a.csv"), 0);
            QTRY_COMPARE(box.shown(), 1);
            QVERIFY(box.text().startsWith(QStringLiteral("The file cannot be saved: ")));
            QVERIFY(!m_view->isExporting());
        }
    }

    void aPictureThatCannotBeMadeIsNotSavedEmpty()
    {
        record(30);
        show();
        plot()->setFixedHeight(0); // no image has this size
        OnMessageBox box;
        const QString path = exported("picture", QStringLiteral("a.png"), 0);
        QTRY_COMPARE(box.shown(), 1);
        QCOMPARE(box.text(), QStringLiteral("The file cannot be saved: ") + QDir::toNativeSeparators(path));
        QVERIFY(!QFile::exists(path));
    }

    void aHigherRateIsAskedOfTheShownAxes()
    {
        record(1);
        show();
        SerialComDev::instance()->setOpened(true);
        recorder().positionAnswered(0, 1, AnswerListener::Time::clock::now());
        recorder().positionAnswered(1, 1, AnswerListener::Time::clock::now());
        QTRY_COMPARE(m_view->findChildren<AxisRow *>().size(), 2);
        click("pushButton_rate100");
        in<AxisRow>("axisRow_1")->click();
        QTest::qWait(20);
        simulator::clearJournal();
        QTRY_VERIFY(simulator::callCount("getCurrentPos") > 20);
        for (const simulator::Call &call : simulator::journal())
            QCOMPARE(call.arguments, std::string("1001, 0"));
        click("pushButton_rate10");
        QTest::qWait(30);
        simulator::clearJournal();
        QTest::qWait(50);
        QCOMPARE(simulator::callCount("getCurrentPos"), 0);
        SerialComDev::instance()->setOpened(false);
    }
};

QTEST_MAIN(tst_RecorderView)
#include "tst_RecorderView.moc"
