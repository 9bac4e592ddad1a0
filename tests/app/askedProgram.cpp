// SPDX-License-Identifier: MIT
// The whole program as it starts, with no motion library linked in, and a user who answers its boxes:
//     askedProgram BUTTON
// presses BUTTON in each, or closes one that has no such button. It writes what the boxes say, and, when the main
// window is there, which library is in use; then it is left.

#include "app/StartUp.h"
#include "device/MotionLibrary.h"
#include "shell/MoverWidget.h"
#include "support/MessageBoxes.h"
#include "support/TopLevel.h"

#include <cstdio>

namespace {

QString answer;

void say(const QString &text)
{
    std::puts(qUtf8Printable(text));
    std::fflush(stdout);
}

/** Runs when the application object has been created, long before the first box. */
void answerBoxes()
{
    auto *const poll = new QTimer(qApp);
    poll->callOnTimeout([poll] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            say(box->text());
            MessageBoxes::press(box, answer);
        } else if (auto *window = topLevel<MoverWidget>(); window && window->isVisible()) {
            poll->stop();
            say(QStringLiteral("in use: ") + MotionLibrary::inUse().description());
            window->close();
        }
    });
    poll->start(5);
}
Q_COREAPP_STARTUP_FUNCTION(answerBoxes)

} // namespace

int main(int argc, char *argv[])
{
    if (argc != 2)
        return 99;
    answer = QString::fromUtf8(argv[1]);
    return StartUp::run(1, argv);
}
