#include "gui/Controls.h"

#include <QSignalBlocker>

namespace km::gui {

void drawList(QListWidget *widget, const ListBox &model) {
    const QSignalBlocker block(widget);
    const auto &entries = model.entries();
    bool same = widget->count() == entries.size();
    for (int i = 0; same && i < widget->count(); ++i)
        same = widget->item(i)->text() == entries.at(i).text;
    if (!same) {
        widget->clear();
        for (const ListEntry &e : entries)
            widget->addItem(e.text);
    }
    widget->setCurrentRow(model.ListIndex());
}

void drawCombo(QComboBox *widget, const ComboBox &model) {
    const QSignalBlocker block(widget);
    const auto &entries = model.entries();
    bool same = widget->count() == entries.size();
    for (int i = 0; same && i < widget->count(); ++i)
        same = widget->itemText(i) == entries.at(i).text;
    if (!same) {
        widget->clear();
        for (const ListEntry &e : entries)
            widget->addItem(e.text);
    }
    widget->setCurrentIndex(model.ListIndex());
    if (widget->isEditable()) drawText(widget->lineEdit(), model.Text());
}

void drawText(QLineEdit *widget, const QString &text) {
    if (widget->text() == text) return;
    const QSignalBlocker block(widget);
    widget->setText(text);
}

} // namespace km::gui
