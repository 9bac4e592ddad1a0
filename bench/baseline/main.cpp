// SPDX-License-Identifier: MIT
//
// bareWindow [idle|timers|numbers] [PANELS]
// The main window and its axis panels (three unless told otherwise) as bare widgets: the program's forms, style sheet,
// font and images, but none of its logic, no other window and no other thread. What the program costs beyond this is
// its own doing.
//   idle     does nothing
//   timers   has a timer of 100 ms for each panel that does nothing
//   numbers  changes the position of every panel 10 times a second
#include "baseline/BareWidgets.h"

#include "ui_MoverControlWidget.h"
#include "ui_MoverWidget.h"

#include <QApplication>
#include <QFile>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLocale>
#include <QTimer>

#include <cmath>
#include <cstring>
#include <vector>

namespace {

constexpr int pollIntervalMs = 100;

/** What the program does with font and style sheet. */
void installLook()
{
    const int id =
        QFontDatabase::addApplicationFont(QCoreApplication::applicationDirPath() + QLatin1String("/font.ttf"));
    QFont font = QApplication::font();
    font.setFamily(QFontDatabase::applicationFontFamilies(id).value(0));
    font.setPixelSize(16);
    QApplication::setFont(font);
    QFile file(QStringLiteral(":/style.qss"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no style sheet");
    qApp->setStyleSheet(QString::fromUtf8(file.readAll()));
}

/** A button of the menu bar for each panel, as the program has one. */
void addTab(const Ui::MoverWidget &form, int axis)
{
    auto *tab = new QPushButton(QStringLiteral("Axis%1").arg(axis + 1), form.widget_menuBar);
    tab->setCheckable(true);
    tab->setFixedSize(120, 60);
    form.horizontalLayout_menuBar->insertWidget(1 + axis, tab);
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    const QByteArray mode = argc > 1 ? argv[1] : "idle";
    const int panels = argc > 2 ? std::atoi(argv[2]) : 3;
    QLocale::setDefault(QLocale::c());
    installLook();

    MoverWidget window;
    Ui::MoverWidget form;
    form.setupUi(&window);
    window.setWindowFlag(Qt::FramelessWindowHint);
    form.radioButton_Rocker->hide();

    std::vector<Ui::MoverControlWidget> panelForms(static_cast<std::size_t>(panels));
    QTimer timers[8];
    auto *grid = new QGridLayout(form.widget_controls);
    for (int axis = 0; axis < panels; ++axis) {
        addTab(form, axis);
        auto *panel = new MoverControlWidget;
        Ui::MoverControlWidget &panelForm = panelForms[static_cast<std::size_t>(axis)];
        panelForm.setupUi(panel);
        for (QWidget *hidden :
             {static_cast<QWidget *>(panelForm.pushButton_expand), static_cast<QWidget *>(panelForm.pushButton_setting),
              static_cast<QWidget *>(panelForm.label_speed), static_cast<QWidget *>(panelForm.label_rockerSpeed)})
            hidden->hide();
        grid->addWidget(panel, axis / 2, axis % 2, Qt::AlignLeft | Qt::AlignTop);
        if (mode == "timers")
            timers[axis].start(pollIntervalMs);
    }

    double position = 0;
    QTimer change;
    change.callOnTimeout([&] {
        position += 0.987;
        for (const Ui::MoverControlWidget &panel : panelForms)
            panel.label_currentPos->setText(
                QStringLiteral("%1 %2").arg(QString::number(position, 'f', 3), QStringLiteral("mm")));
    });
    if (mode == "numbers")
        change.start(pollIntervalMs);

    window.show();
    return QApplication::exec();
}
