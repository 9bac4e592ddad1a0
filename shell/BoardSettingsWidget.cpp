// SPDX-License-Identifier: MIT
#include "shell/BoardSettingsWidget.h"

#include "widgets/Form.h"
#include "session/SmallFile.h"

#include "ui_BoardSettingsWidget.h"

#include <QDateTime>
#include <QFileDialog>
#include <QHeaderView>

#include <cmath>
#include <optional>

namespace {

constexpr qint64 longestFile = 64 * 1024;
constexpr double same = 0.0006; // settings have three decimals
// What reports say: the library sets them as it needs them.
constexpr int ownSettings[] = {10, 13};

QString shown(double value)
{
    return QString::number(value, 'g', 10);
}

/** The settings of a back-up: lines "$100=250", others are comments that begin with ";". */
std::optional<BoardLink::Settings> read(const QByteArray &bytes)
{
    BoardLink::Settings settings;
    const QList<QByteArray> lines = bytes.split('\n');
    for (QByteArray line : lines) {
        line = line.trimmed();
        if (line.isEmpty() || line.startsWith(';'))
            continue;
        const int equals = line.indexOf('=');
        bool isNumber = false;
        bool isValue = false;
        const int number = line.mid(1, equals - 1).toInt(&isNumber);
        const double value = line.mid(equals + 1).toDouble(&isValue);
        if (!line.startsWith('$') || equals < 2 || !isNumber || number < 0 || !isValue || !std::isfinite(value))
            return std::nullopt;
        settings.insert(number, value);
    }
    return settings.isEmpty() ? std::nullopt : std::make_optional(settings);
}

} // namespace

BoardSettingsWidget::BoardSettingsWidget(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::BoardSettingsWidget>(this))
{
    qRegisterMetaType<BoardLink::Settings>("BoardLink::Settings");
    ui->tableWidget_settings->setColumnCount(3);
    ui->tableWidget_settings->setEditTriggers(QAbstractItemView::NoEditTriggers);
    ui->tableWidget_settings->setSelectionMode(QAbstractItemView::NoSelection);
    ui->tableWidget_settings->verticalHeader()->hide();
    ui->tableWidget_settings->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
}

BoardSettingsWidget::~BoardSettingsWidget() = default;

void BoardSettingsWidget::begin(BoardLink *link)
{
    m_link = link;
    m_proposed.clear();
    m_bProposes = false;
    m_bWrites = false;
    showBoard();
}

void BoardSettingsWidget::propose(const BoardLink::Settings &settings)
{
    m_proposed.clear();
    for (auto setting = settings.begin(); setting != settings.end(); ++setting) {
        const bool isOwn =
            std::find(std::begin(ownSettings), std::end(ownSettings), setting.key()) != std::end(ownSettings);
        const auto now = m_link->settings().find(setting.key());
        if (!isOwn && now != m_link->settings().end() && std::abs(*now - *setting) >= same)
            m_proposed.insert(setting.key(), setting.value());
    }
    m_bProposes = true;
    showBoard();
}

void BoardSettingsWidget::showBoard()
{
    if (!m_link)
        return;
    if (m_bWrites && m_link->isResting()) {
        m_bWrites = false;
        if (m_link->board().written < 0) {
            emit signal_refused(m_link->board().written);
        } else {
            m_bProposes = false;
            m_proposed.clear();
            emit signal_tell([] { return tr("控制板已写入参数"); });
        }
    }
    const bool hasDifferences = !m_proposed.isEmpty();
    ui->label_settingsHead->setText(
        hasDifferences ? tr("与控制板的差异：按“写入控制板”之前不会改变任何参数。")
        : m_bProposes  ? tr("没有差异。")
                       : tr("控制板现在的参数。"));
    ui->pushButton_backUp->setEnabled(!m_link->settings().isEmpty());
    ui->pushButton_restore->setEnabled(m_link->isResting());
    ui->pushButton_discard->setEnabled(m_bProposes && !m_bWrites);
    ui->pushButton_write->setEnabled(hasDifferences && m_link->isResting());

    QTableWidget *const table = ui->tableWidget_settings;
    table->setHorizontalHeaderLabels({tr("参数"), tr("现在"), tr("新值")});
    const BoardLink::Settings rows = m_bProposes ? m_proposed : m_link->settings();
    table->setColumnHidden(2, !hasDifferences);
    table->setRowCount(rows.size());
    int row = 0;
    for (auto setting = rows.begin(); setting != rows.end(); ++setting, ++row) {
        const QString texts[] = {
            QStringLiteral("$%1").arg(setting.key()), shown(m_link->setting(setting.key(), 0)),
            hasDifferences ? shown(setting.value()) : QString()};
        for (int column = 0; column < 3; ++column) {
            if (!table->item(row, column))
                table->setItem(row, column, new QTableWidgetItem);
            table->item(row, column)->setText(texts[column]);
        }
    }
}

bool BoardSettingsWidget::backUpTo(const QString &path) const
{
    QByteArray text = "; " + QByteArray(m_link->board().firmware) + "\n; " +
                      QDateTime::currentDateTime().toString(Qt::ISODate).toUtf8() + '\n';
    for (auto setting = m_link->settings().begin(); setting != m_link->settings().end(); ++setting)
        text += '$' + QByteArray::number(setting.key()) + '=' + QByteArray::number(setting.value(), 'f', 3) + '\n';
    return SmallFile::save(path, text);
}

bool BoardSettingsWidget::restoreFrom(const QString &path)
{
    const auto settings = read(SmallFile::read(path, longestFile));
    if (settings)
        propose(*settings);
    return settings.has_value();
}

void BoardSettingsWidget::on_pushButton_backUp_clicked()
{
    const QString path =
        QFileDialog::getSaveFileName(this, tr("备份控制板参数"), QStringLiteral("board.txt"), QStringLiteral("*.txt"));
    if (path.isEmpty())
        return;
    if (backUpTo(path))
        emit signal_tell([path] { return tr("参数已备份到 %1").arg(QDir::toNativeSeparators(path)); });
    else
        emit signal_tell([path] { return tr("无法写入 %1").arg(QDir::toNativeSeparators(path)); });
}

void BoardSettingsWidget::on_pushButton_restore_clicked()
{
    const QString path =
        QFileDialog::getOpenFileName(this, tr("恢复控制板参数"), QString(), QStringLiteral("*.txt;;*"));
    if (!path.isEmpty() && !restoreFrom(path))
        emit signal_tell([path] { return tr("%1 不是参数备份").arg(QDir::toNativeSeparators(path)); });
}

void BoardSettingsWidget::on_pushButton_discard_clicked()
{
    m_bProposes = false;
    m_proposed.clear();
    showBoard();
}

void BoardSettingsWidget::on_pushButton_write_clicked()
{
    m_bWrites = true;
    const int status = m_link->write(m_proposed);
    if (status < 0) {
        m_bWrites = false;
        emit signal_refused(status);
    }
    showBoard();
}

void BoardSettingsWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
        showBoard();
    }
    QWidget::changeEvent(event);
}
