// SPDX-License-Identifier: MIT
//
// imageRenderer TABLE TOKENS TEMPLATES OUTPUT [FONT]: draws the program's images at build time.
// imageRenderer --icon NAME TABLE TOKENS TEMPLATES OUTPUT: draws the table's single image NAME as a desktop's icon, as
// OUTPUT/hicolor/… in the sizes and folders of an icon theme and as OUTPUT/NAME.ico.
//
// TABLE names every image: the template it is drawn from, its size and the token colour of each role in each state.
// In a template a role is written @role. Each image is written at its size and, as NAME@2x.png, at twice its size.

#include <QBuffer>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHash>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QRegularExpression>
#include <QSvgRenderer>

#include <cstdio>
#include <stdexcept>

namespace {

using Values = QHash<QString, QString>;

[[noreturn]] void fail(const QString &message)
{
    throw std::runtime_error(message.toStdString());
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        fail(QStringLiteral("cannot read %1: %2").arg(path, file.errorString()));
    }
    return file.readAll();
}

Values readTokens(const QString &path)
{
    static const QRegularExpression row(QStringLiteral("^(\\w+)\\s+(#[0-9A-Fa-f]{6})$"));
    Values tokens;
    const auto lines = QString::fromUtf8(readFile(path)).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const auto match = row.match(line);
        if (match.hasMatch()) {
            tokens.insert(match.captured(1), match.captured(2));
        }
    }
    return tokens;
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush()) {
        fail(QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
    }
}

QByteArray png(QSvgRenderer &svg, QSize size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    svg.render(&painter);
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

/// A Windows icon file: a directory of pictures, then the pictures, here all in PNG.
QByteArray ico(QSvgRenderer &svg, const QVector<int> &sizes)
{
    constexpr int headerSize = 6;
    constexpr int entrySize = 16;
    QByteArray bytes;
    QByteArray pictures;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setByteOrder(QDataStream::LittleEndian);
    stream << quint16(0) << quint16(1) << quint16(sizes.size());
    for (const int size : sizes) {
        const QByteArray picture = png(svg, {size, size});
        const quint8 side = size == 256 ? 0 : quint8(size);
        stream << side << side << quint8(0) << quint8(0) << quint16(1) << quint16(32) << quint32(picture.size())
               << quint32(headerSize + entrySize * sizes.size() + pictures.size());
        pictures += picture;
    }
    return bytes + pictures;
}

QByteArray fillIn(const QString &text, const Values &values, const QString &name)
{
    static const QRegularExpression role(QStringLiteral("@(\\w+)"));
    QString filled;
    int end = 0;
    for (auto matches = role.globalMatch(text); matches.hasNext();) {
        const auto match = matches.next();
        if (!values.contains(match.captured(1))) {
            fail(QStringLiteral("%1: its template has a role @%2 that the table does not give")
                     .arg(name, match.captured(1)));
        }
        filled += text.midRef(end, match.capturedStart() - end);
        filled += values.value(match.captured(1)).toHtmlEscaped();
        end = match.capturedEnd();
    }
    filled += text.midRef(end);
    return filled.toUtf8();
}

class Renderer
{
public:
    Renderer(Values tokens, QString templates, QString output, QString fontFamily)
        : m_tokens(std::move(tokens))
        , m_templates(std::move(templates))
        , m_output(std::move(output))
        , m_fontFamily(std::move(fontFamily))
    {
    }

    /// Draws all states of one row of the table; a row without a palette is a single image.
    void drawRow(const QJsonObject &row, const QJsonObject &palettes) const
    {
        const QString base = row[QStringLiteral("base")].toString();
        if (!row.contains(QStringLiteral("palette"))) {
            draw(row, row[QStringLiteral("colours")].toObject(), base);
            return;
        }
        const QJsonObject palette = palettes[row[QStringLiteral("palette")].toString()].toObject();
        if (palette.isEmpty()) {
            fail(QStringLiteral("%1: no such palette").arg(base));
        }
        const QJsonObject spelling = row[QStringLiteral("spelling")].toObject();
        const QStringList states = palette.keys();
        for (const QString &state : states) {
            const QString name =
                base + QLatin1Char('_') + spelling[state].toString(state) + row[QStringLiteral("suffix")].toString();
            draw(row, palette[state].toObject(), name);
        }
    }

    void drawIcon(const QJsonObject &row) const
    {
        const QString name = row[QStringLiteral("base")].toString();
        const QByteArray source = fillTemplate(row, row[QStringLiteral("colours")].toObject(), name);
        QSvgRenderer svg(source);
        const QString theme = m_output + QStringLiteral("/hicolor/%1/apps/") + name;
        for (const int size : {16, 22, 24, 32, 48, 64, 128, 256, 512}) {
            writeFile(theme.arg(QStringLiteral("%1x%1").arg(size)) + QStringLiteral(".png"), png(svg, {size, size}));
        }
        writeFile(theme.arg(QStringLiteral("scalable")) + QStringLiteral(".svg"), source);
        writeFile(m_output + QLatin1Char('/') + name + QStringLiteral(".ico"), ico(svg, {16, 24, 32, 48, 64, 256}));
    }

private:
    QByteArray fillTemplate(const QJsonObject &row, const QJsonObject &colours, const QString &name) const
    {
        Values values;
        values.insert(QStringLiteral("font"), m_fontFamily);
        const QJsonObject texts = row[QStringLiteral("texts")].toObject();
        for (auto it = texts.begin(); it != texts.end(); ++it) {
            values.insert(it.key(), it->toString());
        }
        QString templateName = row[QStringLiteral("template")].toString(
            row[QStringLiteral("base")].toString().section(QLatin1Char('/'), -1));
        for (auto it = colours.begin(); it != colours.end(); ++it) {
            if (it.key() == QLatin1String("template")) {
                templateName = it->toString();
            } else if (!m_tokens.contains(it->toString())) {
                fail(QStringLiteral("%1: no colour is named %2").arg(name, it->toString()));
            } else {
                values.insert(it.key(), m_tokens.value(it->toString()));
            }
        }

        const QString source = QString::fromUtf8(readFile(QStringLiteral("%1/%2.svg").arg(m_templates, templateName)));
        QByteArray filled = fillIn(source, values, name);
        if (!QSvgRenderer(filled).isValid()) {
            fail(QStringLiteral("%1: its template is not a readable image").arg(name));
        }
        return filled;
    }

    void draw(const QJsonObject &row, const QJsonObject &colours, const QString &name) const
    {
        QSvgRenderer svg(fillTemplate(row, colours, name));
        const QJsonArray size = row[QStringLiteral("size")].toArray();
        for (int scale = 1; scale <= 2; ++scale) {
            const QString path =
                QStringLiteral("%1/%2%3.png").arg(m_output, name, scale == 2 ? QStringLiteral("@2x") : QString());
            writeFile(path, png(svg, QSize(size[0].toInt(), size[1].toInt()) * scale));
        }
    }

    Values m_tokens;
    QString m_templates;
    QString m_output;
    QString m_fontFamily;
};

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // The images must not depend on the scaling of the desktop that happens to build them.
    qunsetenv("QT_SCALE_FACTOR");
    QGuiApplication app(argc, argv);
    QStringList arguments = app.arguments();
    QString icon;
    if (arguments.size() > 2 && arguments[1] == QLatin1String("--icon")) {
        icon = arguments[2];
        arguments.erase(arguments.begin() + 1, arguments.begin() + 3);
    }
    if (arguments.size() < 5) {
        std::fprintf(stderr, "usage: imageRenderer [--icon NAME] TABLE TOKENS TEMPLATES OUTPUT [FONT]\n");
        return 2;
    }
    try {
        QString family = QStringLiteral("sans-serif");
        if (arguments.size() > 5) {
            const auto families =
                QFontDatabase::applicationFontFamilies(QFontDatabase::addApplicationFont(arguments[5]));
            if (families.isEmpty()) {
                fail(QStringLiteral("%1 is not a usable font").arg(arguments[5]));
            }
            family = families.first();
        }
        QJsonParseError error;
        const QJsonObject table = QJsonDocument::fromJson(readFile(arguments[1]), &error).object();
        if (error.error != QJsonParseError::NoError) {
            fail(QStringLiteral("%1, offset %2: %3").arg(arguments[1]).arg(error.offset).arg(error.errorString()));
        }
        const Renderer renderer(readTokens(arguments[2]), arguments[3], arguments[4], family);
        const QJsonArray rows = table[QStringLiteral("images")].toArray();
        bool iconDrawn = false;
        for (const QJsonValue &row : rows) {
            if (icon.isEmpty()) {
                renderer.drawRow(row.toObject(), table[QStringLiteral("palettes")].toObject());
            } else if (row[QStringLiteral("base")].toString() == icon) {
                renderer.drawIcon(row.toObject());
                iconDrawn = true;
            }
        }
        if (!icon.isEmpty() && !iconDrawn) {
            fail(QStringLiteral("no image is named %1").arg(icon));
        }
    } catch (const std::exception &error) {
        std::fprintf(stderr, "imageRenderer: %s\n", error.what());
        return 1;
    }
    return 0;
}
