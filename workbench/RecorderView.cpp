// SPDX-License-Identifier: MIT
#include "workbench/RecorderView.h"

#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "session/Recorder.h"
#include "session/SmallFile.h"
#include "widgets/Form.h"
#include "widgets/MessageBox.h"
#include "workbench/AxisRow.h"
#include "workbench/PlotModule.h"

#include "ui_RecorderView.h"

#include <QBuffer>
#include <QDateTime>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLocale>
#include <QMenu>
#include <QStandardPaths>

#include <algorithm>

namespace {

constexpr int refreshMs = 50;
constexpr int progressMs = 100;
constexpr int noteMs = 10000;
constexpr qint64 rateOver = 2 * RecorderPlot::Second;
constexpr int basicRate = 10; // what the panels ask for
constexpr int largeRowHeight = 52;
constexpr int smallRowHeight = 44;
constexpr int mostLargeRows = 6;
constexpr int pictureScale = 2;

struct Range {
    QPushButton *Ui::RecorderView::*button;
    qint64 us;
};
constexpr Range ranges[] = {
    {&Ui::RecorderView::pushButton_range10s, 10 * RecorderPlot::Second},
    {&Ui::RecorderView::pushButton_range1min, 60 * RecorderPlot::Second},
    {&Ui::RecorderView::pushButton_range10min, 600 * RecorderPlot::Second},
    {&Ui::RecorderView::pushButton_range1h, 3600 * RecorderPlot::Second},
    {&Ui::RecorderView::pushButton_rangeAll, RecorderPlot::All},
};
struct Rate {
    QPushButton *Ui::RecorderView::*button;
    int hz;
};
constexpr Rate rates[] = {
    {&Ui::RecorderView::pushButton_rate10, basicRate},
    {&Ui::RecorderView::pushButton_rate50, 50},
    {&Ui::RecorderView::pushButton_rate100, 100},
};

QString askByDialog(QWidget *parent, const QString &suggested, const QStringList &filters, QString *filter)
{
    return QFileDialog::getSaveFileName(parent, QString(), suggested, filters.join(QStringLiteral(";;")), filter);
}

/** Two bars, or a triangle. */
QIcon pauseIcon(bool isPaused)
{
    QPixmap pixmap(40, 40);
    pixmap.setDevicePixelRatio(2);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0xE4, 0xE7, 0xEC), 1.7, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    if (isPaused) {
        const QPointF triangle[] = {{6.5, 5}, {6.5, 15}, {14.5, 10}};
        painter.drawPolygon(triangle, 3);
    } else {
        painter.drawLine(QPointF(7, 5), QPointF(7, 15));
        painter.drawLine(QPointF(13, 5), QPointF(13, 15));
    }
    return QIcon(pixmap);
}

QString withEnding(const QString &path, const QString &ending)
{
    return QFileInfo(path).suffix().isEmpty() ? path + QLatin1Char('.') + ending : path;
}

} // namespace

/** A table that is written in a thread of its own. */
struct RecorderView::Job {
    Recording recording;
    qint64 fromUs;
    qint64 toUs;
    RecordingCsv::Format format;
    QString path;
    std::atomic<int> permille{0};
    std::atomic<bool> isCancelled{false};
    RecordingCsv::Outcome outcome = RecordingCsv::Outcome::Failed; // once the thread has ended
    QString error;
};

RecorderView::RecorderView(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::RecorderView>(this))
    , m_session(ControlSession::instance())
    , m_askPath(askByDialog)
{
    ui->plot->ensurePolished(); // whose colours the others take
    ui->listView_events->setPlot(ui->plot);
    ui->plot->setAccessibleName(ui->label_axisHead->text());
    auto *rows = new QVBoxLayout(ui->widget_axisRows);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);

    for (const Range &range : ranges)
        connect(ui.get()->*range.button, &QPushButton::clicked, this, [this, us = range.us] { ui->plot->setSpan(us); });
    for (const Rate &rate : rates) {
        connect(ui.get()->*rate.button, &QPushButton::clicked, this, [this, hz = rate.hz] {
            m_iRateHz = hz;
            chooseCapture();
        });
    }
    connect(ui->plot, &RecorderPlot::signal_viewChanged, this, &RecorderView::showView);
    connect(ui->plot, &RecorderPlot::signal_cursorMoved, this, &RecorderView::refreshRows);
    connect(ui->listView_events, &EventList::signal_eventChosen, ui->plot, &RecorderPlot::showTime);
    connect(m_session.data(), &ControlSession::stateChanged, this, [this] {
        chooseCapture();
        if (isVisible())
            refresh();
    });

    auto *menu = new QMenu(ui->pushButton_exportCsv);
    menu->setObjectName(QStringLiteral("menu_exportCsv"));
    connect(menu->addAction(QString()), &QAction::triggered, this, [this] { exportCsv(false); });
    connect(menu->addAction(QString()), &QAction::triggered, this, [this] { exportCsv(true); });
    ui->pushButton_exportCsv->setMenu(menu);

    m_refresh.setInterval(refreshMs);
    connect(&m_refresh, &QTimer::timeout, this, &RecorderView::refresh);
    m_progress.setInterval(progressMs);
    connect(&m_progress, &QTimer::timeout, this, &RecorderView::showExport);
    m_noteEnd.setSingleShot(true);
    m_noteEnd.setInterval(noteMs);
    connect(&m_noteEnd, &QTimer::timeout, this, [this] { note(QString()); });
    ui->progressBar_export->setRange(0, 1000);
    note(QString());
    showView();
    refresh();
}

RecorderView::~RecorderView()
{
    if (m_export) {
        m_job->isCancelled = true;
        m_export->wait();
    }
}

RecorderPlot *RecorderView::plot() const
{
    return ui->plot;
}

void RecorderView::showEvent(QShowEvent *event)
{
    refresh();
    m_refresh.start();
    QWidget::showEvent(event);
}

void RecorderView::hideEvent(QHideEvent *event)
{
    m_refresh.stop();
    QWidget::hideEvent(event);
}

// ---- What is shown -------------------------------------------------------------------------------------------------

void RecorderView::refresh()
{
    const Recorder &recorder = m_session->recorder();
    const quint64 revision = recorder.revision();
    const quint64 eventRevision = recorder.eventRevision();
    const bool hasNewEvents = eventRevision != m_eventRevision;
    const qint64 now = recorder.usOf(AnswerListener::Time::clock::now());
    // A step of the picture is a pixel, and without new samples time passes all the same.
    const qint64 step = (ui->plot->toUs() - ui->plot->fromUs()) / std::max(1, ui->plot->width());
    const bool isLive = ui->plot->isLive() && recorder.isRecording();
    const bool isDue = hasNewEvents || (isLive && now - m_drawnUs >= step);
    if (revision == m_revision && !isDue)
        return;
    Recording recording = recorder.recording(hasNewEvents);
    if (!hasNewEvents)
        recording.events = ui->plot->recording().events;
    if (!recorder.isRecording())
        recording.nowUs = recording.endUs();
    m_revision = revision;
    m_eventRevision = eventRevision;
    const bool axesChanged =
        recording.axes.size() != m_rows.size() ||
        !std::equal(
            m_rows.begin(), m_rows.end(), recording.axes.begin(),
            [](const AxisRow *row, const Recording::Axis &axis) { return row->axis() == axis.description.index; });
    if (isDue || axesChanged || !isLive) {
        m_drawnUs = now;
        ui->plot->setRecording(recording);
    }
    if (axesChanged)
        rebuildRows();
    if (hasNewEvents) {
        ui->listView_events->setRecording(recording);
        ui->listView_events->setVisible(!recording.events.isEmpty());
        ui->label_noEvent->setVisible(recording.events.isEmpty());
    }
    refreshRows();
    showView();
    showFoot();
}

void RecorderView::rebuildRows()
{
    qDeleteAll(m_rows);
    m_rows.clear();
    const auto &axes = ui->plot->recording().axes;
    for (const Recording::Axis &axis : axes) {
        auto *row = new AxisRow(axis.description, ui->plot, ui->widget_axisRows);
        row->setObjectName(QStringLiteral("axisRow_%1").arg(axis.description.index));
        row->setFixedHeight(axes.size() > mostLargeRows ? smallRowHeight : largeRowHeight);
        row->setChecked(ui->plot->isAxisShown(axis.description.index));
        connect(row, &AxisRow::toggled, this, [this, index = axis.description.index](bool shown) {
            ui->plot->setAxisShown(index, shown);
            chooseCapture();
        });
        ui->widget_axisRows->layout()->addWidget(row);
        row->show();
        m_rows.append(row);
    }
    ui->widget_axisRows->setVisible(!m_rows.isEmpty());
    ui->label_noAxis->setVisible(m_rows.isEmpty());
    chooseCapture();
}

void RecorderView::refreshRows()
{
    const Recording &recording = ui->plot->recording();
    for (int k = 0; k < std::min(m_rows.size(), recording.axes.size()); ++k) {
        const Recording::Axis &axis = recording.axes.at(k);
        const bool isCurrent =
            m_session->recorder().isRecording() && recording.nowUs - axis.samples.endUs() < RecorderPlot::SilentAfter;
        m_rows.at(k)->setReadings(axis.samples.last(), isCurrent, ui->plot->cursorSample(axis.description.index));
    }
}

void RecorderView::showView()
{
    const bool isLive = ui->plot->isLive();
    const bool isEmpty = ui->plot->recording().isEmpty();
    ui->pushButton_pause->setChecked(!isLive);
    ui->pushButton_pause->setText(isLive ? tr("暂停") : tr("实时"));
    ui->pushButton_pause->setIcon(pauseIcon(!isLive));
    ui->pushButton_pause->setEnabled(!isEmpty);
    ui->label_live->setEnabled(isLive && !isEmpty);
    const bool isLit = isLive && !isEmpty && m_session->recorder().isRecording();
    const QString lamp = QStringLiteral(".QLabel#label_lamp{border-image: url(:/image/%1Pot.png);}")
                             .arg(QLatin1String(isLit ? "green" : "gray"));
    if (ui->label_lamp->styleSheet() != lamp)
        ui->label_lamp->setStyleSheet(lamp);
    for (const Range &range : ranges) {
        QPushButton *button = ui.get()->*range.button;
        button->setAutoExclusive(false); // none, for a span that is zoomed to
        button->setChecked(range.us == ui->plot->span());
        button->setAutoExclusive(true);
    }
    for (const Rate &rate : rates)
        (ui.get()->*rate.button)->setChecked(rate.hz == m_iRateHz);
    ui->pushButton_exportCsv->setEnabled(!isEmpty && !m_job);
    ui->pushButton_exportPicture->setEnabled(!isEmpty && PlotModule::functions());
    const auto actions = ui->pushButton_exportCsv->menu()->actions();
    actions.at(0)->setText(tr("当前显示的时段 …"));
    actions.at(1)->setText(tr("全部记录 …"));
}

void RecorderView::showFoot()
{
    const Recording &recording = ui->plot->recording();
    if (recording.isEmpty()) {
        ui->label_held->setText(tr("已记录：无"));
    } else {
        const qint64 seconds =
            (recording.endUs() - recording.startUs() + RecorderPlot::Second / 2) / RecorderPlot::Second;
        const QString time = seconds >= 3600 ? tr("%1 小时 %2 分").arg(seconds / 3600).arg(seconds / 60 % 60)
                             : seconds >= 60 ? tr("%1 分 %2 秒").arg(seconds / 60).arg(seconds % 60)
                                             : tr("%1 秒").arg(seconds);
        QString count = QString::number(recording.sampleCount());
        for (int at = count.size() - 3; at > 0; at -= 3)
            count.insert(at, QChar(0x202F)); // a thin space
        ui->label_held->setText(tr("已记录 %1，%2 个采样点").arg(time, count));
    }

    // The slowest of the axes that are shown and polled.
    double reached = 0;
    for (const Recording::Axis &axis : recording.axes) {
        const qint64 end = axis.samples.endUs();
        if (!ui->plot->isAxisShown(axis.description.index) || recording.nowUs - end > RecorderPlot::SilentAfter)
            continue;
        const qint64 begin = std::max(axis.samples.startUs(), end - rateOver);
        const int count = axis.samples.countBetween(begin, end);
        if (count < 2 || end <= begin)
            continue;
        const double rate = (count - 1) * 1e6 / double(end - begin);
        reached = reached > 0 ? std::min(reached, rate) : rate;
    }
    if (!m_session->recorder().isRecording())
        ui->label_reached->setText(tr("未连接"));
    else if (reached > 0)
        ui->label_reached->setText(tr("实际每秒 %1 个采样点").arg(QString::number(reached, 'f', 1)));
    else
        ui->label_reached->clear();
}

void RecorderView::on_pushButton_pause_clicked()
{
    ui->plot->setLive(!ui->plot->isLive());
}

/** More than the panels ask for, of the axes that are shown. */
void RecorderView::chooseCapture()
{
    QVector<int> axes;
    for (const AxisRow *row : qAsConst(m_rows)) {
        if (row->isChecked())
            axes.append(row->axis());
    }
    SerialComDev::instance()->setCapture(axes, m_iRateHz > basicRate && m_session->isConnected() ? m_iRateHz : 0);
    showView();
}

// ---- Files ---------------------------------------------------------------------------------------------------------

QString RecorderView::suggestedPath(const QString &ending) const
{
    const QString folder =
        m_sFolder.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) : m_sFolder;
    const QString time = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd-HHmmss"));
    return QDir(folder).filePath(QStringLiteral("mover-%1.%2").arg(time, ending));
}

void RecorderView::exportCsv(bool isAll)
{
    const QString csv = QStringLiteral(" (*.csv)");
    const QStringList filters{tr("CSV，逗号和小数点") + csv, tr("CSV，分号和小数逗号") + csv};
    QString filter = filters.at(QLocale::system().decimalPoint() == QLatin1Char(',') ? 1 : 0);
    auto job = std::make_shared<Job>();
    job->recording = m_session->recorder().recording();
    job->fromUs = isAll ? job->recording.startUs() : ui->plot->fromUs();
    job->toUs = isAll ? job->recording.nowUs : ui->plot->toUs();
    if (isAll && !job->recording.events.isEmpty())
        job->fromUs = std::min(job->fromUs, job->recording.events.first().us);
    const QString path = m_askPath(this, suggestedPath(QStringLiteral("csv")), filters, &filter);
    if (path.isEmpty() || m_job)
        return;
    m_sFolder = QFileInfo(path).path();
    job->path = withEnding(path, QStringLiteral("csv"));
    job->format = filter == filters.at(1) ? RecordingCsv::Comma : RecordingCsv::Point;
    m_job = job;
    m_export.reset(QThread::create([job] {
        job->outcome = RecordingCsv::save(
            job->recording, job->fromUs, job->toUs, job->format, job->path, &job->error, [&job](double part) {
                job->permille = int(part * 1000);
                return !job->isCancelled;
            });
    }));
    connect(m_export.get(), &QThread::finished, this, &RecorderView::endExport);
    m_export->start(QThread::LowPriority);
    m_progress.start();
    note(QString());
    showView();
}

void RecorderView::showExport()
{
    if (m_job)
        ui->progressBar_export->setValue(m_job->permille);
    ui->progressBar_export->setVisible(m_job != nullptr);
    ui->pushButton_cancelExport->setVisible(m_job != nullptr);
}

void RecorderView::on_pushButton_cancelExport_clicked()
{
    if (m_job)
        m_job->isCancelled = true;
}

void RecorderView::endExport()
{
    m_export->wait();
    m_export.reset();
    const auto job = std::exchange(m_job, nullptr);
    m_progress.stop();
    showView();
    switch (job->outcome) {
    case RecordingCsv::Outcome::Written:
        note(tr("已保存：%1").arg(QDir::toNativeSeparators(job->path)));
        break;
    case RecordingCsv::Outcome::Cancelled:
        note(tr("导出已取消"));
        break;
    case RecordingCsv::Outcome::Failed:
        note(QString());
        MessageBox::inform(this, tr("无法保存文件：%1").arg(job->error));
        break;
    }
}

void RecorderView::note(const QString &text)
{
    ui->label_note->setText(text);
    ui->label_note->setToolTip(text);
    if (!text.isEmpty())
        m_noteEnd.start();
    showExport();
}

void RecorderView::on_pushButton_exportPicture_clicked()
{
    const PlotFunctions *plots = PlotModule::functions();
    if (!plots)
        return;
    const PlotPicture picture = ui->plot->picture(ui->plot->width(), false);
    const QSize size = ui->plot->size();
    const QStringList filters{tr("PNG 图片") + QStringLiteral(" (*.png)"), tr("SVG 图片") + QStringLiteral(" (*.svg)")};
    QString filter = filters.first();
    const QString asked = m_askPath(this, suggestedPath(QStringLiteral("png")), filters, &filter);
    if (asked.isEmpty())
        return;
    m_sFolder = QFileInfo(asked).path();
    const QString ending = QFileInfo(asked).suffix().toLower();
    const bool isSvg = ending == QLatin1String("svg") || (ending != QLatin1String("png") && filter == filters.at(1));
    const QString path = withEnding(asked, isSvg ? QStringLiteral("svg") : QStringLiteral("png"));
    QBuffer bytes;
    bytes.open(QIODevice::WriteOnly);
    bool isDrawn = false;
    if (isSvg) {
        isDrawn = plots->writeSvg(&bytes, size, picture, m_session->serialNumber());
    } else {
        QImage image(size * pictureScale, QImage::Format_RGB32);
        if (!image.isNull()) { // it has a size, and there is memory for it
            image.setDevicePixelRatio(pictureScale);
            image.fill(picture.colours.well);
            QPainter painter(&image);
            painter.setFont(font());
            plots->draw(&painter, QRectF(QPointF(), QSizeF(size)), picture);
            painter.end();
            isDrawn = image.save(&bytes, "PNG");
        }
    }
    QString error = QDir::toNativeSeparators(path);
    if (isDrawn && SmallFile::save(path, bytes.data(), &error))
        note(tr("已保存：%1").arg(QDir::toNativeSeparators(path)));
    else
        MessageBox::inform(this, tr("无法保存文件：%1").arg(error));
}

void RecorderView::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
        showView();
        showFoot();
    }
    QWidget::changeEvent(event);
}
