#include "gui/calendar/frmEditCalendar.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/records/RecordsViews.h"
#include "gui/shell/ShieldFilter.h"

namespace km::gui {

namespace {

using Model = CALENDAR::frmEditCalendar;

QLineEdit *numberBox(QWidget *parent, int digits) {
    auto *box = new QLineEdit(parent);
    box->setAlignment(Qt::AlignRight);
    box->setFixedWidth(box->fontMetrics().horizontalAdvance(QString(digits + 1, QLatin1Char('0'))) + 12);
    return box;
}

QHBoxLayout *row(std::initializer_list<QWidget *> widgets, bool stretch = true) {
    auto *l = new QHBoxLayout;
    l->setContentsMargins(0, 0, 0, 0);
    for (QWidget *w : widgets)
        l->addWidget(w);
    if (stretch) l->addStretch();
    return l;
}

void drawDate(QDateEdit *edit, const QDate &date) {
    if (!date.isValid() || edit->date() == date) return;
    const QSignalBlocker block(edit);
    edit->setDate(date);
}

} // namespace

frmEditCalendar::frmEditCalendar(Model &model, QWidget *parent) : ModelDialog(model, parent), m_model(model) {
    setObjectName(QStringLiteral("appointment-editor"));
    InstallShield(this);

    ctlSubject = new QLineEdit(this);
    ctlLocation = new QLineEdit(this);
    ctlNotes = new QPlainTextEdit(this);
    ctlNotes->setTabChangesFocus(true);
    for (QWidget *w : {static_cast<QWidget *>(ctlSubject), static_cast<QWidget *>(ctlLocation),
                       static_cast<QWidget *>(ctlNotes)})
        showsRecordValue(w);
    ctlPrivate = new QCheckBox(QStringLiteral("Private"), this);

    auto *texts = new QGridLayout;
    texts->addWidget(new QLabel(QStringLiteral("Subject"), this), 0, 0);
    texts->addWidget(ctlSubject, 0, 1);
    texts->addWidget(new QLabel(QStringLiteral("Location"), this), 1, 0);
    texts->addWidget(ctlLocation, 1, 1);
    texts->setColumnStretch(1, 1);

    auto *top = new QHBoxLayout;
    top->addWidget(buildTimes(), 3);
    auto *reminder = new QGroupBox(QStringLiteral("Reminder"), this);
    ctlAlarmYN = new QCheckBox(QStringLiteral("Alarm"), reminder);
    ctlAlarmAnticipate = new QComboBox(reminder);
    auto *rl = new QVBoxLayout(reminder);
    rl->addWidget(ctlAlarmYN);
    rl->addWidget(ctlAlarmAnticipate);
    rl->addStretch();
    top->addWidget(reminder, 1);

    cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdEsc = new QPushButton(QStringLiteral("Esc"), this);
    cmdOK->setAutoDefault(false);
    cmdEsc->setAutoDefault(false);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(ctlPrivate);
    buttons->addStretch();
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdEsc);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(texts);
    layout->addLayout(top);
    layout->addWidget(buildRecurrence());
    layout->addWidget(new QLabel(QStringLiteral("Notes:"), this));
    layout->addWidget(ctlNotes, 1);
    layout->addLayout(buttons);
    resize(660, 700);

    onTextTyped(ctlSubject, [this](const QString &t) { m_model.ctlSubject = t; });
    onTextTyped(ctlLocation, [this](const QString &t) { m_model.ctlLocation = t; });
    onTextTyped(ctlNotes, [this](const QString &t) { m_model.ctlNotes = t; });
    connect(ctlPrivate, &QCheckBox::clicked, this, [this](bool on) { m_model.ctlPrivate = on; });
    connect(ctlAlarmYN, &QCheckBox::clicked, this,
            [this](bool on) { command([&] { m_model.ctlAlarmYN_Click(on); }); });
    connect(ctlAlarmAnticipate, &QComboBox::activated, this,
            [this](int i) { command([&] { m_model.ctlAlarmAnticipate_Click(i); }); });
    connect(cmdOK, &QPushButton::clicked, this, [this] {
        // A time box still being typed in takes effect first, as leaving it would.
        if (QWidget *f = focusWidget()) f->clearFocus();
        command([this] { m_model.cmdOK_Click(); });
    });
    connect(cmdEsc, &QPushButton::clicked, this, [this] { reject(); });
    m_duration.setTimerType(Qt::PreciseTimer);
    connect(&m_duration, &QTimer::timeout, this, [this] { command([this] { m_model.tmrDuration_Timer(); }); });
    ctlSubject->setFocus();
}

QDateEdit *frmEditCalendar::datePicker() {
    auto *d = new QDateEdit(this);
    d->setCalendarPopup(true);
    d->setDateRange(CALENDAR::DateOfDay(CALENDAR::FirstCalendarDay), CALENDAR::DateOfDay(CALENDAR::LastCalendarDay));
    d->setDisplayFormat(QStringLiteral("ddd ") + locale().dateFormat(QLocale::ShortFormat));
    return d;
}

QWidget *frmEditCalendar::buildTimes() {
    auto *box = new QGroupBox(QStringLiteral("Time"), this);
    auto *grid = new QGridLayout(box);
    ctlDate = datePicker();
    ctlDateEnd = new QLabel(box);
    ctlAllday = new QCheckBox(QStringLiteral("All day event"), box);
    grid->addWidget(new QLabel(QStringLiteral("Date"), box), 0, 0);
    grid->addLayout(row({ctlDate, ctlAllday}), 0, 1, 1, 4);
    static const char *names[3] = {"Start", "End", "Duration"};
    for (int r = 0; r < 3; ++r) {
        ctlHH[r] = numberBox(box, 2);
        ctlNN[r] = numberBox(box, 2);
        ctlHH[r]->setMaxLength(2);
        ctlNN[r]->setMaxLength(2);
        ctlHH[r]->installEventFilter(this);
        ctlNN[r]->installEventFilter(this);
        grid->addWidget(new QLabel(QString::fromLatin1(names[r]), box), r + 1, 0);
        grid->addLayout(row({ctlHH[r], new QLabel(QStringLiteral(":"), box), ctlNN[r]}), r + 1, 1);
        onTextTyped(ctlHH[r], [this, r](const QString &t) { m_model.ctlHH[r] = t; });
        onTextTyped(ctlNN[r], [this, r](const QString &t) { m_model.ctlNN[r] = t; });
        if (r < 2) {
            SliderHH[r] = new QSlider(Qt::Horizontal, box);
            SliderHH[r]->setRange(0, r == 0 ? 23 : 24);
            SliderHH[r]->setPageStep(1);
            SliderHH[r]->setToolTip(QStringLiteral("Hours"));
            SliderNN[r] = new QSlider(Qt::Horizontal, box);
            SliderNN[r]->setRange(0, 11);
            SliderNN[r]->setPageStep(1);
            SliderNN[r]->setToolTip(QStringLiteral("Minutes in steps of five"));
            grid->addWidget(SliderHH[r], r + 1, 2);
            grid->addWidget(SliderNN[r], r + 1, 3);
            connect(SliderHH[r], &QSlider::valueChanged, this,
                    [this, r](int v) { command([&] { m_model.SliderHH_Change(r, v); }); });
            connect(SliderNN[r], &QSlider::valueChanged, this,
                    [this, r](int v) { command([&] { m_model.SliderNN_Change(r, v); }); });
        }
    }
    grid->addWidget(ctlDateEnd, 2, 4);
    for (int i = 0; i < 2; ++i) {
        cmdDuration[i] = new QToolButton(box);
        cmdDuration[i]->setText(i == 0 ? QStringLiteral("\u2212") : QStringLiteral("+"));
        cmdDuration[i]->setToolTip(i == 0 ? QStringLiteral("Shorter (hold)") : QStringLiteral("Longer (hold)"));
        connect(cmdDuration[i], &QToolButton::pressed, this,
                [this, i] { command([&] { m_model.cmdDuration_MouseDown(i); }); });
        connect(cmdDuration[i], &QToolButton::released, this,
                [this] { command([this] { m_model.cmdDuration_MouseUp(); }); });
    }
    grid->addLayout(row({cmdDuration[0], cmdDuration[1]}), 3, 2, 1, 2);
    grid->setColumnStretch(2, 2);
    grid->setColumnStretch(3, 1);

    connect(ctlDate, &QDateEdit::dateChanged, this,
            [this](const QDate &d) { command([&] { m_model.ctlDate_Change(d); }); });
    connect(ctlAllday, &QCheckBox::clicked, this,
            [this](bool on) { command([&] { m_model.ctlAllday_Click(on); }); });
    return box;
}

QWidget *frmEditCalendar::buildRecurrence() {
    auto *frame = new QGroupBox(QStringLiteral("Recurrence"), this);
    auto *v = new QVBoxLayout(frame);
    auto *options = new QHBoxLayout;
    auto *optionGroup = new QButtonGroup(frame);
    static const char *names[5] = {"None", "Weekly", "Daily", "Monthly", "Yearly"};
    for (int i = 0; i < 5; ++i) {
        Redo[i] = new QRadioButton(QString::fromLatin1(names[i]), frame);
        optionGroup->addButton(Redo[i], i);
        options->addWidget(Redo[i]);
    }
    options->addStretch();
    v->addLayout(options);
    connect(optionGroup, &QButtonGroup::idClicked, this, [this](int i) { command([&] { m_model.Redo_Click(i); }); });

    redoRows = new QStackedWidget(frame);
    redoRows->addWidget(new QWidget(redoRows)); // None: no row
    for (int i = 0; i < 4; ++i) {
        QQ[i] = numberBox(frame, 3);
        QQ[i]->setMaxLength(3);
        onTextTyped(QQ[i], [this, i](const QString &t) { command([&] { m_model.QQ_Change(i, t); }); });
    }

    // Weekly.
    auto *weekly = new QWidget(redoRows);
    auto *wl = new QHBoxLayout(weekly);
    wl->setContentsMargins(0, 0, 0, 0);
    wl->addWidget(new QLabel(QStringLiteral("every"), weekly));
    wl->addWidget(QQ[1]);
    wl->addWidget(new QLabel(QStringLiteral("week on:"), weekly));
    for (int d = 0; d < 7; ++d) {
        RedoWD[d] = new QCheckBox(m_model.weekdayLetter(d), weekly);
        wl->addWidget(RedoWD[d]);
        connect(RedoWD[d], &QCheckBox::clicked, this,
                [this, d](bool on) { command([&] { m_model.RedoWD_Click(d, on); }); });
    }
    wl->addStretch();
    redoRows->addWidget(weekly);

    const auto altPage = [&](int option, QLayout *first, QLayout *second) {
        auto *page = new QWidget(redoRows);
        auto *grid = new QGridLayout(page);
        grid->setContentsMargins(0, 0, 0, 0);
        auto *group = new QButtonGroup(page);
        for (int a = 0; a < 2; ++a) {
            RedoAlt[option - 2][a] = new QRadioButton(page);
            group->addButton(RedoAlt[option - 2][a], a);
            grid->addWidget(RedoAlt[option - 2][a], a, 0);
            grid->addLayout(a == 0 ? first : second, a, 1);
        }
        grid->setColumnStretch(1, 1);
        connect(group, &QButtonGroup::idClicked, this, [this](int a) { command([&] { m_model.RedoAlt_Click(a); }); });
        redoRows->addWidget(page);
    };
    const auto label = [frame](const char *text) { return new QLabel(QString::fromLatin1(text), frame); };
    const auto combo = [this, frame](void (Model::*click)(int)) {
        auto *c = new QComboBox(frame);
        connect(c, &QComboBox::activated, this, [this, click](int i) { command([&] { (m_model.*click)(i); }); });
        return c;
    };
    for (int k = 0; k < 2; ++k) {
        cboRedoWhen[k] = combo(&Model::cboRedoWhen_Click);
        cboRedoWeekday[k] = combo(&Model::cboRedoWeekday_Click);
    }
    cboRedoMonth = combo(&Model::cboRedoMonth_Click);
    monthDay = new QLabel(frame);
    yearDay = new QLabel(frame);

    altPage(Model::OptionDaily, row({label("every"), QQ[0], label("day(s)")}), row({label("every workday")}));
    altPage(Model::OptionMonthly, row({label("day"), monthDay, label("every"), QQ[2], label("month(s)")}),
            row({label("the"), cboRedoWhen[0], cboRedoWeekday[0], label("every"), QQ[3], label("month/s")}));
    altPage(Model::OptionYearly, row({yearDay, label("every year")}),
            row({label("the"), cboRedoWhen[1], cboRedoWeekday[1], cboRedoMonth}));
    v->addWidget(redoRows);

    // The series' range.
    rangeBox = new QWidget(frame);
    auto *range = new QGridLayout(rangeBox);
    range->setContentsMargins(0, 0, 0, 0);
    ctlDateStartRedo = datePicker();
    ctlDateEndRedo = datePicker();
    occ = numberBox(frame, 4);
    occ->setMaxLength(4);
    auto *endGroup = new QButtonGroup(rangeBox);
    RedoEnd[0] = new QRadioButton(QStringLiteral("no end date"), rangeBox);
    RedoEnd[1] = new QRadioButton(QStringLiteral("after"), rangeBox);
    RedoEnd[2] = new QRadioButton(QStringLiteral("end date"), rangeBox);
    for (int i = 0; i < 3; ++i)
        endGroup->addButton(RedoEnd[i], i);
    range->addWidget(new QLabel(QStringLiteral("Start"), rangeBox), 0, 0);
    range->addWidget(ctlDateStartRedo, 0, 1);
    range->addWidget(RedoEnd[0], 0, 2);
    range->addLayout(row({RedoEnd[1], occ, label("occurrencies")}), 1, 2);
    range->addLayout(row({RedoEnd[2], ctlDateEndRedo}), 2, 2);
    range->setColumnStretch(3, 1);
    v->addWidget(rangeBox);

    connect(endGroup, &QButtonGroup::idClicked, this, [this](int i) { command([&] { m_model.RedoEnd_Click(i); }); });
    onTextTyped(occ, [this](const QString &t) { command([&] { m_model.occ_Change(t); }); });
    connect(ctlDateStartRedo, &QDateEdit::dateChanged, this,
            [this](const QDate &d) { command([&] { m_model.ctlDateStartRedo_Change(d); }); });
    connect(ctlDateEndRedo, &QDateEdit::dateChanged, this,
            [this](const QDate &d) { command([&] { m_model.ctlDateEndRedo_Change(d); }); });
    return frame;
}

void frmEditCalendar::showEvent(QShowEvent *event) {
    ModelDialog::showEvent(event);
    if (m_activated) return;
    m_activated = true;
    // The row is loaded once the window stands, so that question 11 and a
    // close on No come over a window that is up.
    QTimer::singleShot(0, this, [this] { command([this] { m_model.Form_Activate(); }); });
}

bool frmEditCalendar::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::FocusOut) {
        for (int r = 0; r < 3; ++r) {
            for (const bool hours : {true, false}) {
                QLineEdit *box = hours ? ctlHH[r] : ctlNN[r];
                if (watched != box) continue;
                bool ok = true;
                command([&] { ok = hours ? m_model.ctlHH_Validate(r, box->text()) : m_model.ctlNN_Validate(r, box->text()); });
                // Not a number: the box keeps the focus.
                if (!ok && isVisible()) QTimer::singleShot(0, box, [box] { box->setFocus(); });
            }
        }
    }
    return ModelDialog::eventFilter(watched, event);
}

bool frmEditCalendar::cancelCommand() {
    m_model.cmdEsc_Click();
    return true;
}

void frmEditCalendar::sync() {
    const Model &m = m_model;
    drawText(ctlSubject, m.ctlSubject);
    drawText(ctlLocation, m.ctlLocation);
    drawPlain(ctlNotes, m.ctlNotes);
    ctlPrivate->setChecked(m.ctlPrivate);
    drawDate(ctlDate, m.ctlDate);
    // The end's day only where it is another day than the start's: an end at
    // 24:00 is already told by its hour.
    const bool atMidnight = m.times.end == m.dayBase + CALENDAR::MinutesPerDay;
    ctlDateEnd->setText(m.ctlDateEnd != m.ctlDate && m.ctlDateEnd.isValid() && !atMidnight
                            ? locale().toString(m.ctlDateEnd, QLocale::ShortFormat)
                            : QString());
    for (int r = 0; r < 3; ++r) {
        if (!ctlHH[r]->hasFocus()) drawText(ctlHH[r], m.ctlHH[r]);
        if (!ctlNN[r]->hasFocus()) drawText(ctlNN[r], m.ctlNN[r]);
        const bool timed = !m.ctlAllday;
        ctlHH[r]->setEnabled(timed);
        ctlNN[r]->setEnabled(timed);
    }
    for (int r = 0; r < 2; ++r) {
        const QSignalBlocker b1(SliderHH[r]), b2(SliderNN[r]);
        SliderHH[r]->setValue(m.SliderHH[r]);
        SliderNN[r]->setValue(m.SliderNN[r]);
        SliderHH[r]->setEnabled(!m.ctlAllday);
        SliderNN[r]->setEnabled(!m.ctlAllday);
    }
    cmdDuration[0]->setEnabled(!m.ctlAllday);
    cmdDuration[1]->setEnabled(!m.ctlAllday);
    ctlAllday->setChecked(m.ctlAllday);
    ctlAlarmYN->setChecked(m.ctlAlarmYN);
    drawCombo(ctlAlarmAnticipate, m.ctlAlarmAnticipate);
    ctlAlarmAnticipate->setEnabled(m.alarmEnabled());

    // The duration button's repeat.
    if (!m.tmrDuration.Enabled)
        m_duration.stop();
    else if (!m_duration.isActive())
        m_duration.start(m.tmrDuration.Interval);

    // The rule frame: the row of the chosen option, and the range while there is a rule.
    Redo[m.redoOption]->setChecked(true);
    redoRows->setCurrentIndex(m.redoOption);
    rangeBox->setVisible(m.redoOption != Model::OptionNone);
    redoRows->setVisible(m.redoOption != Model::OptionNone);
    for (int o = 0; o < 3; ++o)
        RedoAlt[o][m.redoAlt]->setChecked(true);
    for (int i = 0; i < 4; ++i)
        drawText(QQ[i], m.QQ[i]);
    for (int d = 0; d < 7; ++d)
        RedoWD[d]->setChecked(m.weekFlags[static_cast<size_t>(d)]);
    for (int k = 0; k < 2; ++k) {
        drawCombo(cboRedoWhen[k], m.cboRedoWhen);
        drawCombo(cboRedoWeekday[k], m.cboRedoWeekday);
    }
    drawCombo(cboRedoMonth, m.cboRedoMonth);
    // Both rows of an option stay readable; the one not chosen is greyed.
    QQ[0]->setEnabled(m.redoAlt == 0);
    QQ[2]->setEnabled(m.redoAlt == 0);
    QQ[3]->setEnabled(m.redoAlt == 1);
    for (int k = 0; k < 2; ++k) {
        cboRedoWhen[k]->setEnabled(m.redoAlt == 1);
        cboRedoWeekday[k]->setEnabled(m.redoAlt == 1);
    }
    cboRedoMonth->setEnabled(m.redoAlt == 1);
    monthDay->setText(QString::number(m.redoStart.day()));
    yearDay->setText(QStringLiteral("%1  %2").arg(m.redoDate.day()).arg(locale().monthName(m.redoDate.month())));
    drawDate(ctlDateStartRedo, m.ctlDateStartRedo());
    drawDate(ctlDateEndRedo, m.ctlDateEndRedo());
    RedoEnd[std::clamp(m.redoEndOption, 0, 2)]->setChecked(true);
    drawText(occ, m.occ);
    occ->setEnabled(m.occEnabled());
    ctlDateEndRedo->setEnabled(m.dateEndRedoEnabled());
}

} // namespace km::gui
