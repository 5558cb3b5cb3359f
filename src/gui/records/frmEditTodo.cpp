#include "gui/records/frmEditTodo.h"

#include <QCalendarWidget>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/records/RecordsViews.h"

namespace km::gui {

frmEditTodo::frmEditTodo(km::frmEditTodo &model, QWidget *parent)
    : RecordEditorDialog(model, parent), m_model(model) {
    setObjectName(QStringLiteral("task-editor"));
    ctlTask = new QLineEdit(this);
    ctlNote = new QPlainTextEdit(this);
    ctlNote->setTabChangesFocus(true);
    showsRecordValue(ctlTask);
    showsRecordValue(ctlNote);
    cboCategory = new QComboBox(this);
    cmdEditCat = new QToolButton(this);
    cmdEditCat->setText(QStringLiteral("..."));
    cmdEditCat->setToolTip(QStringLiteral("Edit categories"));
    auto *priority = new QGroupBox(QStringLiteral("Priority"), this);
    auto *priorityLayout = new QHBoxLayout(priority);
    const char *const captions[] = {"High", "Normal", "Low"};
    for (int i = 0; i < 3; ++i) {
        ctlPri[i] = new QRadioButton(QString::fromLatin1(captions[i]), priority);
        priorityLayout->addWidget(ctlPri[i]);
        connect(ctlPri[i], &QRadioButton::clicked, this, [this, i] { edited([&] { m_model.ctlPri = i; }); });
    }
    chkDateDue = new QCheckBox(QStringLiteral("Due Date:"), this);
    ctlDateDue = new QDateEdit(this);
    chkDateCompleted = new QCheckBox(QStringLiteral("Completed"), this);
    ctlDateCompleted = new QDateEdit(this);
    for (QDateEdit *d : {ctlDateDue, ctlDateCompleted}) {
        d->setCalendarPopup(true);
        d->setDisplayFormat(QLocale().dateFormat(QLocale::ShortFormat));
    }
    ctlPrivate = new QCheckBox(QStringLiteral("Private"), this);

    auto *grid = new QGridLayout;
    grid->addWidget(new QLabel(QStringLiteral("Description"), this), 0, 0);
    grid->addWidget(ctlTask, 0, 1, 1, 3);
    grid->addWidget(new QLabel(QStringLiteral("Category"), this), 1, 0);
    grid->addWidget(cboCategory, 1, 1, 1, 2);
    grid->addWidget(cmdEditCat, 1, 3);
    grid->addWidget(chkDateDue, 2, 0);
    grid->addWidget(ctlDateDue, 2, 1);
    grid->addWidget(chkDateCompleted, 3, 0);
    grid->addWidget(ctlDateCompleted, 3, 1);
    grid->setColumnStretch(2, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(priority);
    layout->addWidget(new QLabel(QStringLiteral("Notes:"), this));
    layout->addWidget(ctlNote, 1);
    layout->addLayout(buttonRow(ctlPrivate));
    resize(520, 440);

    onTextTyped(ctlTask, [this](const QString &text) { edited([&] { m_model.ctlTask = text; }); });
    onTextTyped(ctlNote, [this](const QString &text) { edited([&] { m_model.ctlNote = text; }); });
    connect(cboCategory, &QComboBox::activated, this,
            [this](int index) { edited([&] { m_model.cboCategory.setListIndex(index); }); });
    connect(cmdEditCat, &QToolButton::clicked, this, [this] { command([this] { m_model.cmdEditCat_Click(); }); });
    connect(ctlPrivate, &QCheckBox::clicked, this, [this](bool on) { edited([&] { m_model.ctlPrivate = on; }); });
    connect(chkDateDue, &QCheckBox::clicked, this, [this] { pickerChanged(true); });
    connect(ctlDateDue, &QDateEdit::dateChanged, this, [this] { pickerChanged(true); });
    connect(chkDateCompleted, &QCheckBox::clicked, this, [this] { pickerChanged(false); });
    connect(ctlDateCompleted, &QDateEdit::dateChanged, this, [this] { pickerChanged(false); });
    for (QWidget *w : std::initializer_list<QWidget *>{ctlTask, ctlNote})
        w->installEventFilter(this);
    installEventFilter(this);
    ctlTask->setFocus();
}

void frmEditTodo::pickerChanged(bool due) {
    DatePicker &picker = due ? m_model.ctlDateDue : m_model.ctlDateCompleted;
    picker.hasDate = (due ? chkDateDue : chkDateCompleted)->isChecked();
    if (picker.hasDate && !picker.compact) picker.value = (due ? ctlDateDue : ctlDateCompleted)->date();
    command([this, due] { due ? m_model.ctlDateDue_Change() : m_model.ctlDateCompleted_Change(); });
}

bool frmEditTodo::eventFilter(QObject *watched, QEvent *event) {
    // Ctrl+Enter is OK from anywhere in the dialog, the notes box included,
    // where a plain Enter is a line end.
    if (event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride) {
        auto *key = static_cast<QKeyEvent *>(event);
        if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) &&
            (key->modifiers() & Qt::ControlModifier)) {
            if (event->type() == QEvent::KeyPress) command([this] { m_model.keyCtrlEnter(); });
            event->accept();
            return true;
        }
    }
    return RecordEditorDialog::eventFilter(watched, event);
}

void frmEditTodo::sync() {
    drawText(ctlTask, m_model.ctlTask);
    drawPlain(ctlNote, m_model.ctlNote);
    for (int i = 0; i < 3; ++i)
        ctlPri[i]->setChecked(m_model.ctlPri == i);
    drawCombo(cboCategory, m_model.cboCategory);
    ctlPrivate->setChecked(m_model.ctlPrivate);
    const auto draw = [](QCheckBox *box, QDateEdit *edit, const DatePicker &p) {
        const QSignalBlocker b1(box), b2(edit);
        box->setChecked(p.hasDate);
        edit->setDate(p.value);
        // Compact: the picker shows no date at all.
        edit->setVisible(!p.compact);
    };
    draw(chkDateDue, ctlDateDue, m_model.ctlDateDue);
    draw(chkDateCompleted, ctlDateCompleted, m_model.ctlDateCompleted);
}

frmChooseDate::frmChooseDate(km::frmChooseDate &model, QWidget *parent) : ModelDialog(model, parent), m_model(model) {
    setWindowTitle(model.caption());
    calendar = new QCalendarWidget(this);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(calendar);
    layout->addWidget(buttons);
    connect(calendar, &QCalendarWidget::clicked, this, [this](QDate d) { m_model.value = d; });
    connect(calendar, &QCalendarWidget::activated, this, [this](QDate d) {
        command([this, d] {
            m_model.value = d;
            m_model.cmdOK_Click();
        });
    });
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        command([this] {
            m_model.value = calendar->selectedDate();
            m_model.cmdOK_Click();
        });
    });
    connect(buttons, &QDialogButtonBox::rejected, this, [this] { command([this] { m_model.cmdCancel_Click(); }); });
}

void frmChooseDate::sync() {
    const QSignalBlocker block(calendar);
    calendar->setSelectedDate(m_model.value);
}

} // namespace km::gui
