// SPDX-License-Identifier: MIT
#include "axis/OperationLog.h"

#include "device/SerialComDev.h"

#include <QGuiApplication>
#include <QTextBrowser>
#include <QTextCursor>
#include <QTime>

namespace {

struct Word {
    int code;
    const char *text;
};

constexpr Word typeWords[] = {
    {OPERATION_TYPE_DEVICE_PARAMS, QT_TRANSLATE_NOOP("OperationLog", "设置设备参数")},
    {OPERATION_TYPE_MOVE, QT_TRANSLATE_NOOP("OperationLog", "移动")},
    {OPERATION_TYPE_TARGET, QT_TRANSLATE_NOOP("OperationLog", "设置移动参数")},
    {OPERATION_TYPE_DRIVE, QT_TRANSLATE_NOOP("OperationLog", "推进")},
    {OPERATION_TYPE_DISPLACEMENT, QT_TRANSLATE_NOOP("OperationLog", "设置自动运行参数")},
    {OPERATION_TYPE_JOG, QT_TRANSLATE_NOOP("OperationLog", "步进")},
    {OPERATION_TYPE_JOG_PARAMS, QT_TRANSLATE_NOOP("OperationLog", "设置步进参数")},
    {OPERATION_TYPE_RESTORE, QT_TRANSLATE_NOOP("OperationLog", "还原")},
    {OPERATION_TYPE_STOP, QT_TRANSLATE_NOOP("OperationLog", "停止")},
    {OPERATION_TYPE_ENABLE, QT_TRANSLATE_NOOP("OperationLog", "使能设备")},
    {OPERATION_TYPE_RUN_COUNT, QT_TRANSLATE_NOOP("OperationLog", "当前运行次数")},
};

constexpr Word stateWords[] = {
    {OPERATION_STATE_RUNNING, QT_TRANSLATE_NOOP("OperationLog", "运行中")},
    {OPERATION_STATE_CANCELLED, QT_TRANSLATE_NOOP("OperationLog", "操作被取消")},
    {OPERATION_STATE_FAIL, QT_TRANSLATE_NOOP("OperationLog", "操作失败")},
    {OPERATION_STATE_OK, QT_TRANSLATE_NOOP("OperationLog", "操作成功")},
    {OPERATION_STATE_COMPLETED, QT_TRANSLATE_NOOP("OperationLog", "运行完成")},
};

template <std::size_t Count>
QString wordFor(const Word (&words)[Count], int code)
{
    for (const Word &word : words) {
        if (word.code == code)
            return QGuiApplication::translate("OperationLog", word.text);
    }
    return QString();
}

} // namespace

OperationLog::OperationLog(QTextBrowser *browser)
    : m_browser(browser)
{
    // Entries are preformatted text, but set in the program's own font.
    m_browser->document()->setDefaultStyleSheet(
        QStringLiteral("pre { margin: 0; white-space: pre-wrap; font-family: '%1'; }")
            .arg(QGuiApplication::font().family()));
}

void OperationLog::append(int type, const QString &text, int state)
{
    // Only ever the last entry, so that a live counter costs no more as the log grows.
    if (type == OPERATION_TYPE_RUN_COUNT && m_bEndsWithRunCount)
        removeLastEntry();
    m_bEndsWithRunCount = type == OPERATION_TYPE_RUN_COUNT;

    const QString entry = QTime::currentTime().toString(QStringLiteral("hh:mm:ss")) + QLatin1Char('\n') +
                          wordFor(typeWords, type) + QLatin1Char(' ') + text + QLatin1Char(' ') +
                          wordFor(stateWords, state);
    const QString wrapped = type == OPERATION_TYPE_WARNING
                                ? QStringLiteral("<pre><font color=red>%1</font></pre><font color=black> </font>")
                                : QStringLiteral("<pre><font color=white>%1</font></pre><font color=red> </font>");
    m_browser->append(wrapped.arg(entry.toHtmlEscaped()));
}

/** Removes the two lines of the last entry, and the line break before them. */
void OperationLog::removeLastEntry()
{
    QTextCursor cursor(m_browser->document());
    cursor.movePosition(QTextCursor::End);
    cursor.movePosition(QTextCursor::PreviousBlock, QTextCursor::KeepAnchor);
    cursor.movePosition(QTextCursor::PreviousCharacter, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
}

QString OperationLog::text() const
{
    return m_browser->toPlainText();
}
