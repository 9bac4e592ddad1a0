// SPDX-License-Identifier: MIT
#include "widgets/MessageBox.h"

#include "widgets/Dialogs.h"

#include <QCoreApplication>
#include <QFontMetrics>
#include <QLayout>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QShowEvent>
#include <QStyle>

#include <algorithm>

namespace {

struct Look {
    bool cancelFirst;
    const char *boxSize;     // for the style sheet; QMessageBox ignores it
    const char *labelHeight; // minimum height of the text
    QSize minimum;           // what the box is really given
};

Look lookOf(MessageBox::Kind kind)
{
    switch (kind) {
    case MessageBox::Kind::MotionPopup:
        // Asks for 60000 pixels, which has no effect.
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
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString &line : lines)
        widest = std::max(widest, metrics.horizontalAdvance(line));
    return widest;
}

/**
 * QMessageBox gives itself a fixed size whenever it is shown or laid out again: smaller than its style sheet asks for,
 * never wider than 1000 pixels, and no higher than the text's minimum height, which cuts long texts. This one then
 * grows to its minimum size, or to what its contents need.
 */
class SizedMessageBox final : public QMessageBox
{
public:
    SizedMessageBox(QWidget *parent, QSize minimum)
        : QMessageBox(parent)
        , m_minimum(minimum)
    {
    }

protected:
    bool event(QEvent *event) override
    {
        const bool handled = QMessageBox::event(event);
        if (event->type() == QEvent::LayoutRequest || event->type() == QEvent::FontChange) {
            grow();
            // X may have reported the place from before showEvent() just now; resizing would ask for that place again.
            if (isVisible())
                place();
        }
        return handled;
    }
    void showEvent(QShowEvent *event) override
    {
        QMessageBox::showEvent(event);
        grow();
        // Its size is known only now, and the window manager would place it as it likes.
        place();
    }

private:
    void place()
    {
        if (parentWidget())
            Dialogs::centreOn(this, parentWidget()->window());
        Dialogs::keepOnScreen(this);
    }

    void grow()
    {
        const QSize size = this->size().expandedTo(layout()->totalMinimumSize()).expandedTo(m_minimum);
        // The text's minimum height is that of its sheet, however many lines it has.
        const int height = layout()->hasHeightForWidth() ? layout()->totalHeightForWidth(size.width())
                                                         : layout()->totalSizeHint().height();
        setFixedSize(size.expandedTo({0, height}));
    }

    QSize m_minimum;
};

} // namespace

bool MessageBox::confirm(QWidget *parent, const QString &text, Kind kind)
{
    const Look look = lookOf(kind);

    // Not on the stack: while the event loop runs, the parent may be destroyed, and the box with it.
    const QPointer<QMessageBox> box = new SizedMessageBox(parent, look.minimum);
    box->setWindowIcon(box->style()->standardIcon(QStyle::SP_MessageBoxInformation));
    box->setObjectName(QStringLiteral("messageBox")); // for the style sheet
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
    QPushButton *const consent = addButton(QCoreApplication::translate("MessageBox", "确认"), QMessageBox::AcceptRole);
    if (!look.cancelFirst)
        addButton(cancelText, QMessageBox::RejectRole);

    box->setStyleSheet(boxSheet(look, widestLine(text) + 100));
    box->exec();
    // Not the result of exec(): a box whose event loop was ended from outside has neither consented nor refused.
    const bool confirmed = box && box->clickedButton() == consent;
    delete box.data(); // null when it went with its parent
    return confirmed;
}

void MessageBox::inform(QWidget *parent, const QString &text, Kind kind)
{
    confirm(parent, text, kind);
}
