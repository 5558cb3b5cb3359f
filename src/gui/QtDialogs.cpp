#include "gui/QtDialogs.h"

#include <memory>

#include <QApplication>
#include <QCursor>
#include <QEventLoop>
#include <QFileDialog>
#include <QMessageBox>
#include <QTimer>

#include "gui/ModelDialog.h"
#include "gui/shell/frmOptions.h"
#include "gui/shell/frmTip.h"
#include "gui/store/frmEditCategories.h"
#include "gui/store/frmInputbox.h"
#include "gui/store/frmMenuDB.h"
#include "gui/store/frmPW.h"
#include "store/frmInputbox.h"

namespace km::gui {

namespace {

QMessageBox::StandardButton standardButton(Answer a) {
    switch (a) {
    case Answer::OK:
        return QMessageBox::Ok;
    case Answer::Cancel:
        return QMessageBox::Cancel;
    case Answer::Yes:
        return QMessageBox::Yes;
    case Answer::No:
        return QMessageBox::No;
    case Answer::Retry:
        return QMessageBox::Retry;
    case Answer::Abort:
        return QMessageBox::Abort;
    case Answer::Ignore:
        return QMessageBox::Ignore;
    }
    return QMessageBox::Ok;
}

QList<Answer> answersOf(Buttons buttons) {
    switch (buttons) {
    case Buttons::OK:
        return {Answer::OK};
    case Buttons::OKCancel:
        return {Answer::OK, Answer::Cancel};
    case Buttons::YesNo:
        return {Answer::Yes, Answer::No};
    case Buttons::YesNoCancel:
        return {Answer::Yes, Answer::No, Answer::Cancel};
    case Buttons::RetryCancel:
        return {Answer::Retry, Answer::Cancel};
    case Buttons::AbortRetryIgnore:
        return {Answer::Abort, Answer::Retry, Answer::Ignore};
    }
    return {Answer::OK};
}

QMessageBox::Icon messageIcon(Icon icon) {
    switch (icon) {
    case Icon::None:
        return QMessageBox::NoIcon;
    case Icon::Critical:
        return QMessageBox::Critical;
    case Icon::Question:
        return QMessageBox::Question;
    case Icon::Exclamation:
        return QMessageBox::Warning;
    case Icon::Information:
        return QMessageBox::Information;
    }
    return QMessageBox::NoIcon;
}

// "*.*" means every file where the filters come from; on Linux many names have no dot.
QStringList nameFilters(const QStringList &filters) {
    QStringList out;
    for (QString f : filters)
        out.append(f.replace(QLatin1String("(*.*)"), QLatin1String("(*)")));
    return out;
}

std::optional<QString> runFileDialog(QWidget *parent, const FileDialogSpec &spec, bool save) {
    QFileDialog dialog(parent, spec.title, spec.directory);
    const QStringList filters = nameFilters(spec.filters);
    if (!filters.isEmpty()) {
        dialog.setNameFilters(filters);
        dialog.selectNameFilter(filters.value(spec.selectedFilter, filters.first()));
    }
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(!save && spec.mustExist ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
    if (save && !spec.overwritePrompt) dialog.setOption(QFileDialog::DontConfirmOverwrite);
    if (!spec.fileName.isEmpty()) dialog.selectFile(spec.fileName);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
    return dialog.selectedFiles().first();
}

} // namespace

QtDialogs::QtDialogs() {
    addWindow<km::frmPW, frmPW>();
    addWindow<km::frmInputbox, frmInputbox>();
    addWindow<km::frmMenuDB, frmMenuDB>();
    addWindow<km::frmEditCategories, frmEditCategories>();
    addWindow<km::frmTip, frmTip>();
    addWindow<km::frmOptions, frmOptions>();
}

QWidget *QtDialogs::dialogParent() const {
    if (QWidget *modal = QApplication::activeModalWidget()) return modal;
    if (m_main && m_main->isVisible()) return m_main;
    return QApplication::activeWindow();
}

Answer QtDialogs::message(const QString &text, Buttons buttons, Answer defaultButton, Icon icon,
                          const QString &title) {
    QMessageBox box(dialogParent());
    box.setWindowTitle(title.isEmpty() ? QString::fromLatin1(MessageCaption) : title);
    box.setText(QString(text).replace(QLatin1String("\r\n"), QLatin1String("\n")));
    box.setIcon(messageIcon(icon));
    const QList<Answer> answers = answersOf(buttons);
    QMessageBox::StandardButtons standard;
    for (Answer a : answers)
        standard |= standardButton(a);
    box.setStandardButtons(standard);
    box.setDefaultButton(standardButton(answers.contains(defaultButton) ? defaultButton : answers.first()));
    const int clicked = box.exec();
    for (Answer a : answers)
        if (clicked == standardButton(a)) return a;
    // Closed by Esc or the title bar: the box's escape answer.
    if (answers.contains(Answer::Cancel)) return Answer::Cancel;
    if (answers.contains(Answer::No)) return Answer::No;
    return answers.first();
}

std::optional<QString> QtDialogs::inputBox(const QString &title, const QString &prompt,
                                           const QString &value) {
    km::frmInputbox model;
    model.Caption = title;
    model.lblPrompt = prompt;
    model.txtInput = value;
    frmInputbox window(model, dialogParent());
    window.runModal();
    if (model.DialogCancelled || !model.closeRequested) return std::nullopt;
    return model.DialogResult;
}

std::optional<QString> QtDialogs::openFile(const FileDialogSpec &spec) {
    return runFileDialog(dialogParent(), spec, false);
}

std::optional<QString> QtDialogs::saveFile(const FileDialogSpec &spec) {
    return runFileDialog(dialogParent(), spec, true);
}

std::optional<QString> QtDialogs::pickFolder(const QString &title, const QString &start) {
    const QString folder = QFileDialog::getExistingDirectory(dialogParent(), title, start);
    if (folder.isEmpty()) return std::nullopt;
    return folder;
}

ModelDialog *QtDialogs::createWindow(WindowModel &window, QWidget *parent) const {
    for (const Factory &factory : m_factories)
        if (ModelDialog *dialog = factory(window, parent)) return dialog;
    return nullptr;
}

bool QtDialogs::showModal(WindowModel &window) {
    std::unique_ptr<ModelDialog> dialog(createWindow(window, dialogParent()));
    if (!dialog) return false;
    return dialog->runModal();
}

void QtDialogs::standBy(int ms) {
    // Nothing can be typed during the pause, but timers keep running: it is
    // an event-loop pause, never a sleep.
    QPointer<QWidget> active = QApplication::activeWindow();
    if (active) active->setEnabled(false);
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    status(QStringLiteral("Stand By"));
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    status(QString());
    QGuiApplication::restoreOverrideCursor();
    if (active) active->setEnabled(true);
}

void QtDialogs::status(const QString &text) {
    if (m_comment) m_comment(text);
}

bool QtDialogs::mainWindowUp() const {
    return m_main && m_main->isVisible();
}

void QtDialogs::setMainWindow(QWidget *window, std::function<void(const QString &)> comment) {
    m_main = window;
    m_comment = std::move(comment);
}

} // namespace km::gui
