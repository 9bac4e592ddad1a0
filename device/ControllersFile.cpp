// SPDX-License-Identifier: MIT
#include "device/ControllersFile.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

#include <algorithm>
#include <limits>

namespace {

constexpr int knownVersion = 1;
constexpr qint64 longest = 4 * 1024 * 1024;
constexpr int firstId = 2001;

const QString versionKey = QStringLiteral("version");
const QString libraryKey = QStringLiteral("library");
const QString lastIdKey = QStringLiteral("lastId");
const QString controllersKey = QStringLiteral("controllers");
const QString idKey = QStringLiteral("id");
const QString kindKey = QStringLiteral("kind");
const QString nameKey = QStringLiteral("name");
const QString portKey = QStringLiteral("port");
const QString axesKey = QStringLiteral("axes");
const QString letterKey = QStringLiteral("letter");
const QString stageKey = QStringLiteral("stage");
const QString grblKind = QStringLiteral("grbl");

bool replaceFile(const QString &path, const QJsonObject &content)
{
    const QByteArray bytes = QJsonDocument(content).toJson();
    QSaveFile file(path);
    // Unbuffered: commit() does not notice when the disk takes only a part of the buffer.
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(bytes) == bytes.size() &&
           file.commit();
}

QString faultOf(const QJsonDocument &document, const QJsonParseError &error)
{
    if (error.error != QJsonParseError::NoError)
        return QStringLiteral("%1 (byte %2)").arg(error.errorString()).arg(error.offset);
    if (!document.isObject())
        return QStringLiteral("no object {…}");
    const QJsonObject content = document.object();
    const int version = content.value(versionKey).toInt(knownVersion);
    if (version > knownVersion)
        return QStringLiteral("version %1").arg(version);
    const QJsonValue controllers = content.value(controllersKey);
    if (!controllers.isUndefined() && !controllers.isArray())
        return QStringLiteral("\"controllers\" has to be a list […]");
    return QString();
}

} // namespace

QString ControllersFile::path()
{
    // As the library for such boards finds it.
    QString named = qEnvironmentVariable("MOVER_CONTROLLERS");
    if (!named.isEmpty())
        return named;
#ifdef Q_OS_WIN
    const QString folder = qEnvironmentVariable("APPDATA");
#else
    const QString configuration = qEnvironmentVariable("XDG_CONFIG_HOME");
    const QString folder = configuration.isEmpty() ? QDir::homePath() + QStringLiteral("/.config") : configuration;
#endif
    return QDir::fromNativeSeparators(folder) + QStringLiteral("/mover/controllers.json");
}

ControllersFile::ControllersFile(const QString &path)
    : m_sPath(path)
{
    QFile file(path);
    const QFileInfo about(path);
    if (!about.exists())
        return;
    if (!about.isFile() || about.size() > longest || !file.open(QIODevice::ReadOnly)) {
        m_sFault = about.isFile() && about.size() <= longest ? file.errorString() : QStringLiteral("not such a file");
        return;
    }
    const QByteArray bytes = file.readAll();
    if (bytes.isEmpty())
        return;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    m_sFault = faultOf(document, error);
    if (m_sFault.isEmpty())
        m_content = document.object();
}

QString ControllersFile::library() const
{
    return m_content.value(libraryKey).toString();
}

void ControllersFile::setLibrary(const QString &word)
{
    if (word.isEmpty())
        m_content.remove(libraryKey);
    else
        m_content.insert(libraryKey, word);
}

QVector<ControllersFile::Board> ControllersFile::boards() const
{
    QVector<Board> boards;
    const QJsonArray controllers = m_content.value(controllersKey).toArray();
    for (const QJsonValue &value : controllers) {
        const QJsonObject controller = value.toObject();
        if (controller.value(kindKey).toString() != grblKind)
            continue;
        Board board{
            controller.value(idKey).toInt(),
            controller.value(nameKey).toString(),
            controller.value(portKey).toString(),
            {}};
        const QJsonArray axes = controller.value(axesKey).toArray();
        for (const QJsonValue &axis : axes) {
            const QString first(QLatin1Char("XYZABC"[std::min(board.axes.size(), 5)]));
            board.axes.append(
                {axis.toObject().value(letterKey).toString(first), axis.toObject().value(stageKey).toObject()});
        }
        boards.append(board);
    }
    return boards;
}

int ControllersFile::put(const Board &board)
{
    QJsonArray controllers = m_content.value(controllersKey).toArray();
    int place = controllers.size();
    const int id = board.id == 0 ? newId() : board.id;
    noteId(id);
    for (int i = 0; i < controllers.size(); ++i) {
        if (controllers.at(i).toObject().value(idKey).toInt() == id)
            place = i;
    }
    QJsonObject controller = place < controllers.size() ? controllers.at(place).toObject() : QJsonObject();
    const QJsonArray before = controller.value(axesKey).toArray();
    QJsonArray axes;
    for (const Axis &axis : board.axes) {
        QJsonObject one;
        for (const QJsonValue &other : before) { // what else was said of it
            if (other.toObject().value(letterKey).toString() == axis.letter)
                one = other.toObject();
        }
        one.insert(letterKey, axis.letter);
        one.remove(stageKey);
        if (!axis.stage.isEmpty())
            one.insert(stageKey, axis.stage);
        axes.append(one);
    }
    controller.insert(idKey, id);
    controller.insert(kindKey, grblKind);
    controller.insert(nameKey, board.name);
    controller.insert(portKey, board.port);
    controller.insert(axesKey, axes);
    if (place < controllers.size())
        controllers.replace(place, controller);
    else
        controllers.append(controller);
    m_content.insert(controllersKey, controllers);
    return id;
}

/** The number of a board that is new: one that no other has, nor ever had. */
int ControllersFile::newId() const
{
    const QJsonArray controllers = m_content.value(controllersKey).toArray();
    const auto isTaken = [&](int id) {
        return QFile::exists(keptPath(id)) || // of a file of controllers that is gone
               std::any_of(controllers.begin(), controllers.end(), [id](const QJsonValue &other) {
                   return other.toObject().value(idKey).toInt() == id;
               });
    };
    const int last = m_content.value(lastIdKey).toInt();
    int id = last < std::numeric_limits<int>::max() ? std::max(firstId, last + 1) : firstId;
    while (isTaken(id))
        ++id;
    return id;
}

void ControllersFile::noteId(int id)
{
    m_content.insert(lastIdKey, std::max(id, m_content.value(lastIdKey).toInt()));
}

void ControllersFile::remove(int id)
{
    noteId(id);
    const QJsonArray controllers = m_content.value(controllersKey).toArray();
    QJsonArray left;
    for (const QJsonValue &controller : controllers) {
        if (controller.toObject().value(idKey).toInt() != id)
            left.append(controller);
    }
    m_content.insert(controllersKey, left);
}

bool ControllersFile::save() const
{
    QDir().mkpath(QFileInfo(m_sPath).path());
    QJsonObject content = m_content;
    content.insert(versionKey, knownVersion);
    return replaceFile(m_sPath, content);
}

void ControllersFile::forgetKept(int id) const
{
    QFile::remove(keptPath(id));
}

QString ControllersFile::keptPath(int id) const
{
    return QFileInfo(m_sPath).path() + QStringLiteral("/board-%1.json").arg(id);
}

QString ControllersFile::setAside(const QString &path)
{
    QString aside = path + QStringLiteral(".bak");
    for (int number = 2; QFileInfo::exists(aside); ++number)
        aside = path + QStringLiteral(".bak%1").arg(number);
    return QFile::rename(path, aside) ? aside : QString();
}
