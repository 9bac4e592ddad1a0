// SPDX-License-Identifier: MIT
// Bytes as the two small files that the program keeps between runs: the language, and the place of the console.
#include "settings/LanguageStore.h"

#include "Application.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QWidget>

namespace {

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        Fuzz::fail("cannot write", path);
}

QByteArray read(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        Fuzz::fail("cannot read", path);
    return file.readAll();
}

void checkLanguage(const QByteArray &bytes)
{
    static const QTemporaryDir folder;
    static const QString path = folder.filePath(QStringLiteral("appConfig.ini"));
    const LanguageStore store(folder.path(), folder.filePath(QStringLiteral("user")));

    write(path, bytes);
    const int code = store.load();
    Fuzz::require(store.load() == code, "read twice it is another");
    store.save(code);
    Fuzz::require(store.load() == code, "saved and read again it is another");
    // Under a name of its own: QSettings takes a file of the same size and time for the one it knows.
    static int count = 0;
    const QString copy = folder.filePath(QString::number(++count));
    QFile::copy(path, copy);
    const QSettings settings(copy, QSettings::IniFormat);
    Fuzz::require(settings.value(QStringLiteral("language/type")).toInt() == code, "not as QSettings reads it");
    QFile::remove(copy);

    // Whatever is in the file, a choice comes into it, and once it is there it changes nothing else.
    write(path, bytes);
    const int chosen = int(bytes.size()) - 3;
    store.save(chosen);
    Fuzz::require(store.load() == chosen, "a choice over what was there");
    const QByteArray first = read(path);
    store.save(chosen + 1);
    store.save(chosen);
    Fuzz::require(read(path) == first, "a choice changes more than itself");
}

/** As the console does it with its own, when it is made. */
void checkPlace(const QByteArray &bytes)
{
    static auto *const window = new QWidget;
    window->restoreGeometry(bytes);
    Fuzz::require(window->width() >= 0 && window->height() >= 0, "size");
    Fuzz::require(window->width() <= QWIDGETSIZE_MAX && window->height() <= QWIDGETSIZE_MAX, "larger than a widget");
    Fuzz::require(!window->isVisible(), "shown by its place");
    // What a window says of its place can be given back to it.
    const QByteArray place = window->saveGeometry();
    Fuzz::require(window->restoreGeometry(place), "its own place is refused");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    Fuzz::makeApplication();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Fuzz::Input input(data, size);
    const char kind = input.take<char>();
    if (kind == 'P')
        checkPlace(QByteArray::fromHex(input.rest()));
    else
        checkLanguage(QByteArray(reinterpret_cast<const char *>(data), int(size)));
    return 0;
}
