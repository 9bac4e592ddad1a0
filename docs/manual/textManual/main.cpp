// SPDX-License-Identifier: MIT
//
// textManual FONT OUTPUT.pdf SOURCE.md...
// Makes the user manual without its pictures, with nothing but Qt: what the help panel opens until the manual proper
// has been built.

#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPdfWriter>
#include <QRegularExpression>
#include <QTextDocument>
#include <QTextTable>

namespace {

/** The text as plain Markdown: without the attributes, boxes and pictures that only the manual proper knows. */
QString plain(QString text)
{
    static const struct {
        const char *pattern;
        const char *replacement;
    } rules[] = {
        {R"(\A---\ntitle: (.*)\nsubtitle: (.*)\n(?:.*\n)*?---\n)", "# \\1: \\2\n"},
        {R"((?m)^!\[.*\)\{.*\}$)", ""},
        {R"((?m)^:::.*$)", ""},
        {R"((?m) \{#[^}]*\}$)", ""},
        {R"(\[([^]]*)\]\(#[^)]*\))", "\\1"},
    };
    for (const auto &rule : rules)
        text.replace(QRegularExpression(QString::fromUtf8(rule.pattern)), QString::fromUtf8(rule.replacement));
    return text;
}

/** Tables as wide as the page, with thin lines; without this they are as wide as their longest row. */
void shapeTables(QTextFrame *frame)
{
    const QList<QTextFrame *> children = frame->childFrames();
    for (QTextFrame *child : children) {
        if (auto *table = qobject_cast<QTextTable *>(child)) {
            QTextTableFormat format = table->format();
            format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
            format.setBorder(0.5);
            format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
            format.setCellSpacing(0);
            format.setCellPadding(3);
            table->setFormat(format);
        }
        shapeTables(child);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() < 4)
        qFatal("usage: textManual FONT OUTPUT.pdf SOURCE.md...");

    QString text;
    const QStringList sources = arguments.mid(3);
    for (const QString &name : sources) {
        QFile source(name);
        if (!source.open(QIODevice::ReadOnly))
            qFatal("%s cannot be read", qPrintable(name));
        text += plain(QString::fromUtf8(source.readAll())) + QLatin1Char('\n');
    }

    const QStringList families =
        QFontDatabase::applicationFontFamilies(QFontDatabase::addApplicationFont(arguments[1]));
    QTextDocument document;
    document.setDefaultFont(QFont(families.value(0), 9));
    document.setMarkdown(text);
    shapeTables(document.rootFrame());

    QPdfWriter writer(arguments[2]);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setResolution(300);
    document.print(&writer);
    return 0;
}
