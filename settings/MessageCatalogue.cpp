// SPDX-License-Identifier: MIT
#include "settings/MessageCatalogue.h"

#include <QDataStream>

namespace {

constexpr int magicLength = 16; // QTranslator compares it

enum Section : quint8 { Hashes = 0x42, Messages = 0x69, NumerusRules = 0x88, Language = 0xa7 };

enum Tag : quint8 { End = 1, Translation = 3, Obsolete = 5, SourceText = 6, Context = 7, Comment = 8 };

/** A number, and that many bytes after it: false when they are not all there. */
bool skipBlock(QDataStream &stream, QByteArray *block = nullptr)
{
    quint32 length = 0;
    stream >> length;
    if (stream.status() != QDataStream::Ok || length > stream.device()->bytesAvailable())
        return false;
    if (block)
        *block = stream.device()->read(length);
    else
        stream.skipRawData(int(length));
    return true;
}

bool isWholeMessage(QDataStream &stream)
{
    for (;;) {
        quint8 tag = 0;
        stream >> tag;
        switch (tag) {
        case End:
            return true;
        case Obsolete:
            if (stream.skipRawData(4) != 4)
                return false;
            break;
        case Translation:
        case SourceText:
        case Context:
        case Comment:
            if (!skipBlock(stream))
                return false;
            break;
        default: // also when there is nothing more to read
            return false;
        }
    }
}

} // namespace

bool MessageCatalogue::isWhole(const QByteArray &qm)
{
    QDataStream stream(qm);
    stream.skipRawData(magicLength);
    QByteArray hashes;
    QByteArray messages;
    while (!stream.atEnd()) {
        quint8 section = 0;
        stream >> section;
        QByteArray block;
        if (!skipBlock(stream, &block))
            return false;
        if (section == Hashes)
            hashes = block;
        else if (section == Messages)
            messages = block;
        else if (section != NumerusRules && section != Language)
            return false;
    }

    if (hashes.size() % 8 != 0)
        return false;
    QDataStream offsets(hashes);
    QDataStream message(messages);
    while (!offsets.atEnd()) {
        quint32 hash = 0;
        quint32 offset = 0;
        offsets >> hash >> offset;
        if (offset >= quint32(messages.size()) || !message.device()->seek(offset) || !isWholeMessage(message))
            return false;
    }
    return true;
}
