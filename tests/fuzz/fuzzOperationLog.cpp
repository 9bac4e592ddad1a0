// SPDX-License-Identifier: MIT
// Entries of the operation log: their texts stand there as they are, and nothing in them is live.
#include "axis/OperationLog.h"
#include "device/SerialComDev.h"

#include "Application.h"

#include <QRegularExpression>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextFrame>

#include <algorithm>

namespace {

/** Characters that a document has a use of its own for. */
bool isPlain(QChar character)
{
    return character.unicode() >= 0x20 && character.unicode() != 0x7F && !character.isSurrogate() &&
           character != QChar::ParagraphSeparator && character != QChar::LineSeparator &&
           character != QChar::ObjectReplacementCharacter && character != QChar::Nbsp &&
           character.unicode() != 0xFDD0 && character.unicode() != 0xFDD1;
}

void checkNothingLive(const QTextDocument &document)
{
    Fuzz::require(document.rootFrame()->childFrames().isEmpty(), "a frame or table");
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        Fuzz::require(!block.textList(), "a list");
        for (QTextBlock::iterator at = block.begin(); !at.atEnd(); ++at) {
            const QTextCharFormat format = at.fragment().charFormat();
            Fuzz::require(!format.isAnchor() && format.anchorHref().isEmpty(), "a link:", at.fragment().text());
            Fuzz::require(format.objectType() == QTextFormat::NoObject && !format.isImageFormat(), "an object");
            Fuzz::require(!format.fontItalic() && !format.fontUnderline(), "a style:", at.fragment().text());
            const QColor color = format.foreground().color();
            Fuzz::require(color == Qt::white || color == Qt::red || color == Qt::black, "a colour:", color.name());
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    Fuzz::makeApplication();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QRegularExpression time(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d$"));
    static auto *const browser = new QTextBrowser;
    browser->clear();
    OperationLog log(browser);
    const QTextDocument &document = *browser->document();

    Fuzz::Input input(data, size);
    bool endsWithCount = false;
    int blocks = 0;
    for (int entry = 0; entry < 40 && !input.isEmpty(); ++entry) {
        const int type = input.take<uint8_t>() - '0'; // the codes of most entries are digits and what follows them
        const int state = input.take<uint8_t>() - '0';
        const bool count = type == OPERATION_TYPE_RUN_COUNT;
        const QByteArray line = input.takeLine();
        const QString text = count ? QString::number(qHash(line)) : QString::fromUtf8(line);
        log.append(type, text, state);

        if (!(count && endsWithCount))
            blocks += 2;
        endsWithCount = count;
        if (!std::all_of(text.begin(), text.end(), &isPlain)) {
            checkNothingLive(document);
            blocks = document.blockCount(); // a text may bring line ends of its own
            continue;
        }
        Fuzz::require(document.blockCount() == blocks, "other than two lines:", text);
        const QString shown = document.lastBlock().text();
        // The blank that ends an entry is the last character of its block.
        Fuzz::require(shown.contains(QLatin1Char(' ') + text + QLatin1Char(' ')), "another text:", shown);
        Fuzz::require(time.match(document.lastBlock().previous().text()).hasMatch(), "no time above it");
    }
    checkNothingLive(document);
    return 0;
}
