// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

class QWidget;

/** Sets up a form made by Qt Designer on `window`, connects the window's on_… slots and returns the form's controls. */
template <typename Form>
std::unique_ptr<Form> makeForm(QWidget *window)
{
    auto form = std::make_unique<Form>();
    form->setupUi(window);
    return form;
}
