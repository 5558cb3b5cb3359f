#include "gui/shell/frmOptions.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/UpDown.h"

#include "gui/shell/ShieldFilter.h"

namespace km::gui {

namespace {

// Radio buttons of one option array in a frame; the button ids are the
// array's indexes, from firstId on.
QButtonGroup *radios(QGroupBox *frame, const QStringList &captions, int firstId = 0) {
    auto *group = new QButtonGroup(frame);
    auto *layout = new QVBoxLayout(frame);
    for (int i = 0; i < captions.size(); ++i) {
        auto *b = new QRadioButton(captions.at(i), frame);
        group->addButton(b, firstId + i);
        layout->addWidget(b);
    }
    layout->addStretch();
    return group;
}

void check(QButtonGroup *group, int id) {
    const QSignalBlocker block(group);
    if (QAbstractButton *b = group->button(id)) b->setChecked(true);
}

void check(QCheckBox *box, bool on) {
    const QSignalBlocker block(box);
    box->setChecked(on);
}

QLineEdit *readOnlyBox(QWidget *parent, int width) {
    auto *box = new QLineEdit(parent);
    box->setReadOnly(true);
    box->setFixedWidth(width);
    box->setAlignment(Qt::AlignCenter);
    box->setFocusPolicy(Qt::NoFocus);
    return box;
}

} // namespace

frmOptions::frmOptions(km::frmOptions &model, QWidget *parent) : ModelDialog(model, parent), m_model(model) {
    SSTab1 = new QTabWidget(this);
    SSTab1->addTab(startupTab(), km::frmOptions::TabNames.at(km::frmOptions::TabStartup));
    SSTab1->addTab(calendarTab(), km::frmOptions::TabNames.at(km::frmOptions::TabCalendar));
    SSTab1->addTab(listsTab(), km::frmOptions::TabNames.at(km::frmOptions::TabLists));
    SSTab1->addTab(budgetTab(), km::frmOptions::TabNames.at(km::frmOptions::TabBudget));
    SSTab1->addTab(pinTab(), km::frmOptions::TabNames.at(km::frmOptions::TabPin));
    connect(SSTab1, &QTabWidget::currentChanged, this,
            [this](int tab) { command([&] { m_model.SSTab1_Click(tab); }); });

    cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdOK->setDefault(true);
    cmdCancel = new QPushButton(QStringLiteral("Cancel"), this);
    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(cmdOK, QDialogButtonBox::AcceptRole);
    buttons->addButton(cmdCancel, QDialogButtonBox::RejectRole);
    connect(cmdOK, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdOK_Click(); }); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { reject(); });

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(SSTab1);
    layout->addWidget(buttons);
    resize(560, 420);
    InstallShield(this);
}

frmOptions::~frmOptions() {
    const QSignalBlocker block(PIN);
    PIN->clear();
}

QWidget *frmOptions::startupTab() {
    auto *tab = new QWidget;
    auto *start = new QGroupBox(QStringLiteral("Start"), tab);
    StartScreen = radios(start, km::frmOptions::StartScreenCaptions);
    cboStartApp = new QComboBox(start);
    static_cast<QVBoxLayout *>(start->layout())->insertWidget(2, cboStartApp);
    connect(StartScreen, &QButtonGroup::idClicked, this,
            [this](int id) { command([&] { m_model.StartScreen_Click(id); }); });
    connect(cboStartApp, &QComboBox::currentIndexChanged, this,
            [this](int index) { m_model.cboStartApp.setListIndex(index); });

    auto *idle = new QGroupBox(QStringLiteral("Security"), tab);
    Idle = readOnlyBox(idle, 40);
    UpDownIdle = new UpDown(idle);
    cmdChangeIdle = new QPushButton(QStringLiteral("Change"), idle);
    cmdChangeIdle->setAutoDefault(false);
    chkShowPrivate = new QCheckBox(QStringLiteral("Show Private"), idle);
    auto *before = new QLabel(QString::fromLatin1(km::frmOptions::lblIdleBefore), idle);
    before->setWordWrap(true);
    auto *row = new QHBoxLayout;
    row->addWidget(Idle);
    row->addWidget(UpDownIdle);
    row->addWidget(new QLabel(QString::fromLatin1(km::frmOptions::lblIdleAfter), idle), 1);
    row->addWidget(cmdChangeIdle);
    auto *idleLayout = new QVBoxLayout(idle);
    idleLayout->addWidget(before);
    idleLayout->addLayout(row);
    idleLayout->addWidget(chkShowPrivate);
    connect(UpDownIdle, &UpDown::stepped, this,
            [this](bool up) { command([&] { m_model.UpDownIdle_Change(up); }); });
    connect(cmdChangeIdle, &QPushButton::clicked, this,
            [this] { command([this] { m_model.cmdChangeIdle_Click(); }); });
    connect(chkShowPrivate, &QCheckBox::toggled, this,
            [this](bool on) { command([&] { m_model.chkShowPrivate_Click(on); }); });

    cmdPWchange = new QPushButton(QStringLiteral("Change Master Passphrase"), tab);
    cmdPWchange->setAutoDefault(false);
    connect(cmdPWchange, &QPushButton::clicked, this,
            [this] { command([this] { m_model.cmdPWchange_Click(); }); });

    auto *layout = new QVBoxLayout(tab);
    layout->addWidget(start);
    layout->addWidget(idle);
    auto *last = new QHBoxLayout;
    last->addStretch();
    last->addWidget(cmdPWchange);
    layout->addLayout(last);
    layout->addStretch();
    return tab;
}

QWidget *frmOptions::calendarTab() {
    auto *tab = new QWidget;
    auto *view = new QGroupBox(QStringLiteral("Initial View"), tab);
    CalView = radios(view, km::frmOptions::CalViewCaptions);
    auto *duration = new QGroupBox(QStringLiteral("Appointment Duration"), tab);
    AppDuration = radios(duration, km::frmOptions::AppDurationCaptions, 1);
    auto *diary = new QGroupBox(QStringLiteral("Diary"), tab);
    DiaryShow = radios(diary, km::frmOptions::DiaryShowCaptions);
    connect(CalView, &QButtonGroup::idClicked, this, [this](int id) { m_model.CalView = id; });
    connect(AppDuration, &QButtonGroup::idClicked, this, [this](int id) { m_model.AppDuration = id; });
    connect(DiaryShow, &QButtonGroup::idClicked, this, [this](int id) { m_model.DiaryShow = id; });

    auto *times = new QGroupBox(QStringLiteral("Times"), tab);
    auto *grid = new QGridLayout(times);
    const QStringList names = {QStringLiteral("Workday start"), QStringLiteral("Workday end"),
                               QStringLiteral("Display from")};
    grid->addWidget(new QLabel(QStringLiteral("h"), times), 0, 2, Qt::AlignHCenter);
    grid->addWidget(new QLabel(QStringLiteral("min"), times), 0, 3, Qt::AlignHCenter);
    for (int i = 0; i < 3; ++i) {
        Times[static_cast<size_t>(i)] = readOnlyBox(times, 56);
        auto *hours = new UpDown(times);
        auto *minutes = new UpDown(times);
        grid->addWidget(new QLabel(names.at(i), times), i + 1, 0);
        grid->addWidget(Times[static_cast<size_t>(i)], i + 1, 1);
        grid->addWidget(hours, i + 1, 2);
        grid->addWidget(minutes, i + 1, 3);
        const auto box = static_cast<km::frmOptions::TimeBox>(i);
        connect(hours, &UpDown::stepped, this,
                [this, box](bool up) { command([&] { m_model.udHN_Change(box, true, up); }); });
        connect(minutes, &UpDown::stepped, this,
                [this, box](bool up) { command([&] { m_model.udHN_Change(box, false, up); }); });
    }
    grid->setRowStretch(4, 1);

    auto *layout = new QGridLayout(tab);
    layout->addWidget(view, 0, 0);
    layout->addWidget(duration, 0, 1, 2, 1);
    layout->addWidget(diary, 1, 0);
    layout->addWidget(times, 0, 2, 2, 1);
    return tab;
}

QWidget *frmOptions::listsTab() {
    auto *tab = new QWidget;
    auto *categories = new QGroupBox(QStringLiteral("Category Listing"), tab);
    CatShow = radios(categories, km::frmOptions::CatShowCaptions);
    connect(CatShow, &QButtonGroup::idClicked, this, [this](int id) { m_model.CatShow = id; });
    auto *tasks = new QGroupBox(QStringLiteral("Todo List"), tab);
    TodoShowCompleted = new QCheckBox(QStringLiteral("Show Completed Items"), tasks);
    (new QVBoxLayout(tasks))->addWidget(TodoShowCompleted);
    connect(TodoShowCompleted, &QCheckBox::toggled, this,
            [this](bool on) { m_model.TodoShowCompleted = on; });

    auto *fields = new QGroupBox(QStringLiteral("User Defined Fields"), tab);
    auto *form = new QFormLayout(fields);
    for (int i = 0; i < 4; ++i) {
        auto *box = new QLineEdit(fields);
        txtUserDefined[static_cast<size_t>(i)] = box;
        form->addRow(QStringLiteral("User Def %1").arg(i + 1), box);
        onTextTyped(
            box, [this, i](const QString &text) { m_model.txtUserDefined[static_cast<size_t>(i)] = text; });
    }
    auto *layout = new QGridLayout(tab);
    layout->addWidget(categories, 0, 0);
    layout->addWidget(tasks, 1, 0);
    layout->addWidget(fields, 0, 1, 2, 1);
    layout->setRowStretch(2, 1);
    return tab;
}

QWidget *frmOptions::budgetTab() {
    auto *tab = new QWidget;
    auto *primary = new QGroupBox(QStringLiteral("Show First"), tab);
    BudgetPrimary =
        radios(primary, {QStringLiteral("Budget 1"), QStringLiteral("Budget 2"), QStringLiteral("Budget 3")});
    connect(BudgetPrimary, &QButtonGroup::idClicked, this, [this](int id) { m_model.BudgetPrimary = id; });
    auto *layout = new QHBoxLayout(tab);
    layout->addWidget(primary);
    for (int b = 0; b < 3; ++b) {
        auto *frame = new QGroupBox(QStringLiteral("Budget %1").arg(b + 1), tab);
        BudgetFrame[static_cast<size_t>(b)] = frame;
        auto *boxes = new QVBoxLayout(frame);
        for (int i = 0; i < 4; ++i) {
            const int index = 4 * b + i;
            auto *box = new QCheckBox(km::frmOptions::BudgetShowCaptions.at(i), frame);
            BudgetShow[static_cast<size_t>(index)] = box;
            boxes->addWidget(box);
            connect(box, &QCheckBox::toggled, this,
                    [this, index](bool on) { m_model.BudgetShow[static_cast<size_t>(index)] = on; });
        }
        boxes->addStretch();
        layout->addWidget(frame);
    }
    return tab;
}

QWidget *frmOptions::pinTab() {
    auto *tab = new QWidget;
    cmdPIN = new QPushButton(QStringLiteral("Set PIN"), tab);
    cmdPIN->setAutoDefault(false);
    connect(cmdPIN, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdPIN_Click(); }); });

    PinFrame = new QGroupBox(QStringLiteral("PIN"), tab);
    PIN = new QLineEdit(PinFrame);
    PIN->setObjectName(QStringLiteral("PIN"));
    PIN->setContextMenuPolicy(Qt::NoContextMenu);
    keepOutOfSelection(PIN);
    onTextTyped(PIN, [this](const QString &text) { m_model.PIN = text; });
    auto *sections = new QGroupBox(QStringLiteral("Sections"), PinFrame);
    auto *grid = new QGridLayout(sections);
    for (int i = 0; i < 9; ++i) {
        auto *box = new QCheckBox(km::frmOptions::PinAppCaptions.at(i), sections);
        PinApp[static_cast<size_t>(i)] = box;
        grid->addWidget(box, i % 3, i / 3);
        connect(box, &QCheckBox::toggled, this,
                [this, i](bool on) { m_model.PinApp[static_cast<size_t>(i)] = on; });
    }
    auto *when = new QGroupBox(QStringLiteral("Request PIN"), PinFrame);
    PINeveryaccess = radios(when, km::frmOptions::PINeveryaccessCaptions);
    connect(PINeveryaccess, &QButtonGroup::idClicked, this, [this](int id) { m_model.PINeveryaccess = id; });
    cmdPINhide = new QPushButton(QStringLiteral("Hide"), PinFrame);
    cmdPINhide->setAutoDefault(false);
    connect(cmdPINhide, &QPushButton::clicked, this,
            [this] { command([this] { m_model.cmdPINhide_Click(); }); });

    auto *pinRow = new QHBoxLayout;
    pinRow->addWidget(new QLabel(QStringLiteral("PIN:"), PinFrame));
    pinRow->addWidget(PIN, 1);
    pinRow->addWidget(cmdPINhide);
    auto *frameLayout = new QVBoxLayout(PinFrame);
    frameLayout->addLayout(pinRow);
    frameLayout->addWidget(new QLabel(QString::fromLatin1(km::frmOptions::lblPinHint), PinFrame));
    auto *lower = new QHBoxLayout;
    lower->addWidget(sections, 1);
    lower->addWidget(when);
    frameLayout->addLayout(lower);

    auto *layout = new QVBoxLayout(tab);
    auto *top = new QHBoxLayout;
    top->addWidget(cmdPIN);
    top->addStretch();
    layout->addLayout(top);
    layout->addWidget(PinFrame);
    layout->addStretch();
    return tab;
}

bool frmOptions::cancelCommand() {
    m_model.cmdCancel_Click();
    return true;
}

void frmOptions::sync() {
    const km::frmOptions &m = m_model;
    {
        const QSignalBlocker block(SSTab1);
        SSTab1->setCurrentIndex(m.SSTab1);
    }
    check(StartScreen, m.StartScreen);
    drawCombo(cboStartApp, m.cboStartApp);
    cboStartApp->setEnabled(m.cboStartAppEnabled);
    Idle->setText(QString::number(m.Idle));
    UpDownIdle->setEnabled(m.UpDownIdleEnabled);
    cmdChangeIdle->setEnabled(m.cmdChangeIdleEnabled);
    check(chkShowPrivate, m.chkShowPrivate);

    check(CalView, m.CalView);
    check(AppDuration, m.AppDuration);
    for (size_t i = 0; i < Times.size(); ++i)
        Times[i]->setText(km::frmOptions::TimeText(m.Times[i]));
    check(DiaryShow, m.DiaryShow);

    check(CatShow, m.CatShow);
    check(TodoShowCompleted, m.TodoShowCompleted);
    for (size_t i = 0; i < txtUserDefined.size(); ++i)
        drawText(txtUserDefined[i], m.txtUserDefined[i]);

    check(BudgetPrimary, m.BudgetPrimary);
    for (size_t i = 0; i < BudgetShow.size(); ++i)
        check(BudgetShow[i], m.BudgetShow[i]);
    for (QGroupBox *frame : BudgetFrame)
        frame->setVisible(m.BudgetFrameVisible);

    PinFrame->setVisible(m.PinFrameVisible);
    drawText(PIN, m.PIN);
    for (size_t i = 0; i < PinApp.size(); ++i)
        check(PinApp[i], m.PinApp[i]);
    check(PINeveryaccess, m.PINeveryaccess);
}

} // namespace km::gui
