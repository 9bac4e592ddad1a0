// SPDX-License-Identifier: MIT
// A Qt program with nothing but a window, to compare the program's start with.
#include <QApplication>
#include <QWidget>

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    QWidget window;
    window.resize(1620, 910);
    window.show();
    return QApplication::exec();
}
