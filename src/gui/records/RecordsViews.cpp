#include "gui/records/RecordsViews.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QSignalBlocker>

#include "gui/QtDialogs.h"
#include "gui/records/frmClassified.h"
#include "gui/records/frmEditConfidential.h"
#include "gui/records/frmEditNotepad.h"
#include "gui/records/frmEditText.h"
#include "gui/records/frmEditTodo.h"
#include "gui/records/frmNotepad.h"
#include "gui/records/frmTodo.h"

namespace km::gui {

void RegisterRecordsViews(QtDialogs &dialogs) {
    RegisterSectionView([](SectionWindow &model, QWidget *parent) -> SectionView * {
        if (auto *memo = dynamic_cast<km::frmNotepad *>(&model)) return new frmNotepad(*memo, parent);
        if (auto *data = dynamic_cast<km::frmClassified *>(&model)) return new frmClassified(*data, parent);
        if (auto *tasks = dynamic_cast<km::frmTodo *>(&model)) return new frmTodo(*tasks, parent);
        return nullptr;
    });
    dialogs.addWindow<km::frmEditNotepad, frmEditNotepad>();
    dialogs.addWindow<km::frmEditConfidential, frmEditConfidential>();
    dialogs.addWindow<km::frmEditText, frmEditText>();
    dialogs.addWindow<km::frmEditTodo, frmEditTodo>();
    dialogs.addWindow<km::frmChooseDate, frmChooseDate>();
}

void ShowOnly(QWidget *control) {
    control->setAttribute(Qt::WA_TransparentForMouseEvents);
    control->setFocusPolicy(Qt::NoFocus);
}

void DrawOnWindowColour(QWidget *view) {
    QPalette palette = view->palette();
    palette.setColor(QPalette::Window, QApplication::palette().color(QPalette::Window));
    view->setPalette(palette);
    view->setAutoFillBackground(true);
}

void drawPlain(QPlainTextEdit *widget, const QString &text) {
    if (widget->toPlainText() == text) return;
    const QSignalBlocker block(widget);
    widget->setPlainText(text);
}

} // namespace km::gui
