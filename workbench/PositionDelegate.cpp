// SPDX-License-Identifier: MIT
#include "workbench/PositionDelegate.h"

#include "workbench/PositionModel.h"

#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>

namespace {

constexpr int margin = 10;
constexpr int buttonMargin = 4;
constexpr int radius = 4;

} // namespace

PositionDelegate::PositionDelegate(const SequenceColours *colours, QObject *parent)
    : QStyledItemDelegate(parent)
    , m_colours(colours)
{
}

bool PositionDelegate::isButton(const QModelIndex &index)
{
    const auto *const model = qobject_cast<const PositionModel *>(index.model());
    return model && index.column() >= model->takeColumn();
}

QRect PositionDelegate::buttonOf(const QRect &cell)
{
    return cell.adjusted(buttonMargin, buttonMargin + 1, -buttonMargin, -buttonMargin - 2);
}

void PositionDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    painter->save();
    const bool isSelected = option.state & QStyle::State_Selected;
    const bool isEnabled = index.flags() & Qt::ItemIsEnabled;
    if (isSelected)
        painter->fillRect(option.rect, m_colours->action);
    painter->fillRect(QRect(option.rect.left(), option.rect.bottom(), option.rect.width(), 1), m_colours->line);
    painter->setFont(option.font);
    const QString text = index.data().toString();
    if (isButton(index)) {
        const bool isHovered = isEnabled && option.state & QStyle::State_MouseOver;
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(
            !isEnabled           ? m_colours->buttonDisabled
            : m_pressed == index ? m_colours->buttonPressed
            : isHovered          ? m_colours->buttonHover
                                 : m_colours->button);
        const QRect button = buttonOf(option.rect);
        painter->drawRoundedRect(button, radius, radius);
        if (option.state & QStyle::State_HasFocus) {
            painter->setBrush(Qt::NoBrush);
            painter->setPen(isSelected ? m_colours->text : m_colours->focus);
            painter->drawRoundedRect(QRectF(button).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
        }
        painter->setPen(isEnabled ? m_colours->text : m_colours->faint);
        painter->drawText(button, Qt::AlignCenter, text);
    } else {
        if (option.state & QStyle::State_HasFocus) {
            painter->setPen(isSelected ? m_colours->text : m_colours->focus);
            painter->drawRect(option.rect.adjusted(0, 0, -1, -2));
        }
        const bool isDash = index.column() > 0 && text == QStringLiteral("–");
        painter->setPen(isDash && !isSelected ? m_colours->faint : m_colours->text);
        painter->drawText(
            option.rect.adjusted(margin, 0, -margin, 0), index.data(Qt::TextAlignmentRole).toInt(),
            QFontMetrics(option.font).elidedText(text, Qt::ElideRight, option.rect.width() - 2 * margin));
    }
    painter->restore();
}

QWidget *PositionDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &, const QModelIndex &index) const
{
    auto *const editor = new QLineEdit(parent); // a number may be left out
    editor->setAlignment(Qt::Alignment(index.data(Qt::TextAlignmentRole).toInt()));
    return editor;
}

bool PositionDelegate::editorEvent(
    QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (!isButton(index) || !(index.flags() & Qt::ItemIsEnabled))
        return QStyledItemDelegate::editorEvent(event, model, option, index);
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: {
        const auto *const mouse = static_cast<QMouseEvent *>(event);
        if (mouse->button() == Qt::LeftButton && buttonOf(option.rect).contains(mouse->pos()))
            m_pressed = index;
        return m_pressed == index;
    }
    case QEvent::MouseButtonRelease: {
        const bool isClick =
            m_pressed == index && buttonOf(option.rect).contains(static_cast<QMouseEvent *>(event)->pos());
        m_pressed = QPersistentModelIndex();
        if (isClick)
            emit signal_clicked(index);
        return isClick;
    }
    default:
        return false;
    }
}
