#include "gui/Controls.h"

#include <QPlainTextEdit>
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

bool drawText(QLineEdit *widget, const QString &text) {
    if (widget->text() == text) return false;
    const QSignalBlocker block(widget);
    widget->setText(text);
    return true;
}

void onTextTyped(QLineEdit *box, std::function<void(const QString &)> changed) {
    QObject::connect(box, &QLineEdit::textChanged, box, std::move(changed));
}

void onTextTyped(QPlainTextEdit *box, std::function<void(const QString &)> changed) {
    QObject::connect(box, &QPlainTextEdit::textChanged, box,
                     [box, changed = std::move(changed)] { changed(box->toPlainText()); });
}

} // namespace km::gui
