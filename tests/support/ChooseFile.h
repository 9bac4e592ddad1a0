// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

#include <algorithm>

/** In the dialog for files that the next click opens; `with`: its button that is pressed. */
inline void chooseFile(
    const QString &file, QDialogButtonBox::StandardButtons with = QDialogButtonBox::Save | QDialogButtonBox::Open)
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); // as the program does
    QTimer::singleShot(0, qApp, [file, with] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"))->setText(file);
        auto *box = dialog->findChild<QDialogButtonBox *>();
        const auto buttons = box->buttons();
        const auto wanted = std::find_if(buttons.begin(), buttons.end(), [&](QAbstractButton *button) {
            return with.testFlag(box->standardButton(button));
        });
        (*wanted)->click();
    });
}
