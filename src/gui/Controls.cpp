#include "gui/Controls.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QTextDocumentFragment>
#include <QTextEdit>

namespace km::gui {

namespace {

const char *const kRecordValue = "kmRecordValue";

// The keys of a record field that belong to the window's Edit menu.
class RecordFieldKeys : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject *, QEvent *event) override {
        if (event->type() != QEvent::ShortcutOverride) return false;
        const auto *key = static_cast<QKeyEvent *>(event);
        // Not taken: the key goes on to the window's shortcuts, and comes to
        // the box as a key press only when none of them has it.
        return key->matches(QKeySequence::Copy) || key->matches(QKeySequence::Cut);
    }
};

// The text a box has selected, as it goes to the selection.
QString selectedTextOf(const QWidget *box) {
    if (auto *line = qobject_cast<const QLineEdit *>(box)) return line->selectedText();
    if (auto *plain = qobject_cast<const QPlainTextEdit *>(box))
        return plain->textCursor().selection().toPlainText();
    if (auto *text = qobject_cast<const QTextEdit *>(box))
        return text->textCursor().selection().toPlainText();
    return QString();
}

} // namespace

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

void keepOutOfSelection(QWidget *box) {
    QClipboard *clipboard = QGuiApplication::clipboard();
    QObject::connect(clipboard, &QClipboard::selectionChanged, box, [box, clipboard] {
        if (!clipboard->ownsSelection()) return;
        const QString selected = selectedTextOf(box);
        if (!selected.isEmpty() && clipboard->text(QClipboard::Selection) == selected)
            clipboard->clear(QClipboard::Selection);
    });
}

void showsRecordValue(QWidget *field) {
    keepOutOfSelection(field);
    // The box's own menu would copy past the wipe; a field that offers the
    // program's Copy has set its own menu already.
    if (field->contextMenuPolicy() == Qt::DefaultContextMenu) field->setContextMenuPolicy(Qt::NoContextMenu);
    field->setProperty(kRecordValue, true);
    field->installEventFilter(new RecordFieldKeys(field));
}

bool isRecordValue(const QWidget *field) {
    return field && field->property(kRecordValue).toBool();
}

} // namespace km::gui
