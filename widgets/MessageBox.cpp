// SPDX-License-Identifier: MIT
#include "widgets/MessageBox.h"

#include <QCoreApplication>
#include <QFontMetrics>
#include <QGridLayout>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QStyle>

#include <algorithm>

namespace {

struct Look {
    bool cancelFirst;
    const char *boxSize;     // as the style sheet asks for it; QMessageBox does not look at it
    const char *labelHeight; // minimum height of the text
    QSize minimum;           // what the box is really given
};

Look lookOf(MessageBox::Kind kind)
{
    switch (kind) {
    case MessageBox::Kind::MotionPopup:
        // Asking for 60000 pixels is how these popups have always done it; it has no effect.
        return {false, "min-width: 60000px;min-height: 400px;", "100px", {600, 400}};
    case MessageBox::Kind::LoopRun:
        return {false, "min-width: 600px;min-height: 500px;", "120px", {600, 500}};
    case MessageBox::Kind::Tip:
        break;
    }
    return {true, "min-width: 600px;min-height: 400px;", "80px", {600, 400}};
}

constexpr char buttonSheet[] =
    ".QPushButton{color: #FFFFFF;font-size: 16px;border-radius: 3px;border: 2px solid #298DFF;min-width:70px;"
    "min-height: 30px;background-color: rgb(80, 80, 80);}"
    ".QPushButton:hover{background-color: rgb(50, 50, 50);}"
    ".QPushButton:pressed{background-color: rgb(22, 110, 215);}";

QString boxSheet(const Look &look, int labelWidth)
{
    return QStringLiteral("QMessageBox {background-color: #F2F2F2;font-size: 14px;%1}"
                          "QMessageBox QLabel#qt_msgbox_label {color: #000000;"
                          "background-color: transparent;min-width: %2px;min-height: %3;font-size: 18px;}"
                          "QMessageBox QLabel#qt_msgboxex_icon_label {width: 20px;height: 20px;}"
                          "QMessageBox QDialogButtonBox#qt_msgbox_buttonbox {button-layout: 0;}")
        .arg(QLatin1String(look.boxSize), QString::number(labelWidth), QLatin1String(look.labelHeight));
}

int widestLine(const QString &text)
{
    QFont font;
    font.setPixelSize(18);
    const QFontMetrics metrics(font);
    int widest = 0;
    for (const QString &line : text.split(QLatin1Char('\n')))
        widest = std::max(widest, metrics.horizontalAdvance(line));
    return widest;
}

/** QMessageBox takes its size from its layout alone: a spacer column and row hold it open. */
void setMinimumSize(QMessageBox &box, QSize size)
{
    auto *layout = qobject_cast<QGridLayout *>(box.layout());
    if (!layout)
        return;
    const QMargins margins = layout->contentsMargins();
    layout->addItem(
        new QSpacerItem(size.width() - margins.left() - margins.right(), 0, QSizePolicy::Minimum, QSizePolicy::Fixed),
        layout->rowCount(), 0, 1, layout->columnCount());
    layout->setRowMinimumHeight(0, size.height() - margins.top() - margins.bottom() - 80);
}

} // namespace

int MessageBox::exec(QWidget *parent, const QString &text, Kind kind)
{
    const Look look = lookOf(kind);

    // Not on the stack: whoever owns the parent may destroy it, and the box with it, while the event loop runs.
    const QPointer<QMessageBox> box = new QMessageBox(parent);
    box->setWindowIcon(box->style()->standardIcon(QStyle::SP_MessageBoxInformation));
    box->setWindowTitle(QCoreApplication::translate("MessageBox", "提示"));
    box->setText(text);

    const auto addButton = [&box](const QString &label, QMessageBox::ButtonRole role) {
        QPushButton *button = box->addButton(label, role);
        button->setStyleSheet(QLatin1String(buttonSheet));
        return button;
    };
    const QString cancelText = QCoreApplication::translate("MessageBox", "取消");
    if (look.cancelFirst)
        addButton(cancelText, QMessageBox::RejectRole);
    QPushButton *const confirm = addButton(QCoreApplication::translate("MessageBox", "确认"), QMessageBox::AcceptRole);
    if (!look.cancelFirst)
        addButton(cancelText, QMessageBox::RejectRole);
    box->setDefaultButton(confirm);

    box->setStyleSheet(boxSheet(look, widestLine(text) + 100));
    setMinimumSize(*box, look.minimum);
    box->exec();
    // Not the result of exec(): a box whose event loop was ended from outside has neither consented nor refused.
    const bool confirmed = box && box->clickedButton() == confirm;
    delete box;
    return confirmed == look.cancelFirst ? 1 : 0;
}
