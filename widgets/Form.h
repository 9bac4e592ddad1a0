// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

class QWidget;

/** The controls of a form made by Qt Designer, set up on `window`, whose auto-connected slots are connected by it. */
template <typename Form>
std::unique_ptr<Form> makeForm(QWidget *window)
{
    auto form = std::make_unique<Form>();
    form->setupUi(window);
    return form;
}
