// SPDX-License-Identifier: MIT
#include "settings/MessageCatalogue.h"

#include <QDataStream>

#include <vector>

namespace {

constexpr int magicLength = 16; // QTranslator compares it

enum Section : quint8 { Contexts = 0x2f, Hashes = 0x42, Messages = 0x69, Dependencies = 0x96 };

enum Tag : quint8 {
    End = 1,
    SourceText16 = 2,
    Translation = 3,
    Context16 = 4,
    Obsolete1 = 5,
    SourceText = 6,
    Context = 7,
    Comment = 8,
    Obsolete2 = 9,
};

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

/** Lists of parts in a section, each of which says how long it is. Any of them is walked once, whoever leads to it. */
class Parts
{
public:
    explicit Parts(const QByteArray &section)
        : m_stream(section)
        , m_seen(std::size_t(section.size()))
    {
    }

    enum class Step { GoesOn, Ends, LeadsOut };
    /** Whether the list that begins there ends in the section. `step` goes over one part. */
    bool isWhole(quint32 begin, Step (*step)(QDataStream &stream))
    {
        if (begin >= m_seen.size())
            return false;
        m_stream.device()->seek(begin);
        while (!m_stream.atEnd()) {
            auto seen = m_seen[std::size_t(m_stream.device()->pos())];
            if (seen)
                return true;
            seen = true;
            const Step done = step(m_stream);
            if (done != Step::GoesOn)
                return done == Step::Ends;
        }
        return false;
    }

private:
    QDataStream m_stream;
    std::vector<bool> m_seen;
};

Parts::Step messagePart(QDataStream &stream)
{
    quint8 tag = 0;
    stream >> tag;
    switch (tag) {
    case End:
    case SourceText16: // QTranslator reads no further
    case Context16:
    case Obsolete2:
        return Parts::Step::Ends;
    case Obsolete1:
        return stream.skipRawData(4) == 4 ? Parts::Step::GoesOn : Parts::Step::LeadsOut;
    case Translation:
        // QTranslator goes one byte back, finds no tag there and takes the message for one without a text.
        if (stream.device()->peek(4) == QByteArray(4, '\xff'))
            return Parts::Step::Ends;
        Q_FALLTHROUGH();
    case SourceText:
    case Context:
    case Comment:
        return skipBlock(stream) ? Parts::Step::GoesOn : Parts::Step::LeadsOut;
    default:
        return Parts::Step::LeadsOut;
    }
}

Parts::Step contextName(QDataStream &stream)
{
    quint8 length = 0;
    stream >> length;
    if (length == 0)
        return Parts::Step::Ends;
    return stream.skipRawData(length) == length ? Parts::Step::GoesOn : Parts::Step::LeadsOut;
}

/** A table of lists of names, by their hashes. QTranslator divides by its size. */
bool areWholeContexts(const QByteArray &contexts)
{
    QDataStream table(contexts);
    quint16 size = 0;
    table >> size;
    Parts names(contexts);
    for (int k = 0; k < size; ++k) {
        quint16 half = 0;
        table >> half;
        if (table.status() != QDataStream::Ok)
            return false;
        if (half != 0 && !names.isWhole(2 + 2 * (quint32(size) + half), &contextName))
            return false;
    }
    return size != 0;
}

bool areWholeMessages(const QByteArray &hashes, const QByteArray &messages)
{
    if (hashes.size() % 8 != 0)
        return false;
    QDataStream offsets(hashes);
    Parts parts(messages);
    while (!offsets.atEnd()) {
        quint32 hash = 0;
        quint32 offset = 0;
        offsets >> hash >> offset;
        if (!parts.isWhole(offset, &messagePart))
            return false;
    }
    return true;
}

} // namespace

bool MessageCatalogue::isWhole(const QByteArray &qm)
{
    QDataStream stream(qm);
    stream.skipRawData(magicLength);
    QByteArray contexts;
    QByteArray hashes;
    QByteArray messages;
    while (!stream.atEnd()) {
        quint8 section = 0;
        stream >> section;
        QByteArray block;
        if (!skipBlock(stream, &block))
            return false;
        if (section == 0 || block.isEmpty()) // QTranslator reads no further
            break;
        if (section == Contexts)
            contexts = block;
        else if (section == Hashes)
            hashes = block;
        else if (section == Messages)
            messages = block;
        else if (section == Dependencies)
            return false;
    }
    return (contexts.isEmpty() || areWholeContexts(contexts)) && areWholeMessages(hashes, messages);
}
