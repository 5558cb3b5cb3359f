#include "gui/calendar/frmDiary.h"

#include <QButtonGroup>
#include <QDateEdit>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QToolButton>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/UpDown.h"
#include "gui/records/RecordsViews.h"
#include "gui/shell/ShieldFilter.h"

namespace km::gui {

frmDiary::frmDiary(km::frmDiary &model, QWidget *parent) : SectionView(parent), m_model(model) {
    setObjectName(QStringLiteral("diary"));
    lblTitel = new QLabel(this);
    QFont title = lblTitel->font();
    title.setPointSizeF(title.pointSizeF() * 1.6);
    title.setBold(true);
    lblTitel->setFont(title);
    calDate = new QDateEdit(this);
    calDate->setCalendarPopup(true);
    calDate->setDisplayFormat(QLocale().dateFormat(QLocale::LongFormat));
    diaMoveDay = new UpDown(this);
    diaMoveDay->up->setToolTip(QStringLiteral("Forward"));
    diaMoveDay->down->setToolTip(QStringLiteral("Back"));
    auto *period = new QButtonGroup(this);
    const char *const captions[] = {"1 Day", "7 Days"};
    for (int i = 0; i < 2; ++i) {
        diaPeriod[i] = new QPushButton(QString::fromLatin1(captions[i]), this);
        diaPeriod[i]->setCheckable(true);
        period->addButton(diaPeriod[i], i);
    }

    auto *top = new QHBoxLayout;
    top->addWidget(lblTitel);
    top->addStretch(1);
    top->addWidget(calDate);
    top->addWidget(diaMoveDay);
    top->addSpacing(12);
    top->addWidget(diaPeriod[0]);
    top->addWidget(diaPeriod[1]);

    // Each margin line stands in the row of its box, so the dates follow the
    // boxes whatever their heights.
    auto *pages = new QWidget(this);
    auto *grid = new QGridLayout(pages);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setColumnStretch(1, 1);
    for (int i = 0; i < 7; ++i) {
        txtMargin[static_cast<size_t>(i)] = new QPushButton(pages);
        QPushButton *margin = txtMargin[static_cast<size_t>(i)];
        margin->setFlat(true);
        margin->setFocusPolicy(Qt::NoFocus);
        margin->setStyleSheet(QStringLiteral("text-align: left; padding: 2px 6px;"));
        margin->setToolTip(QStringLiteral("Show this day"));
        txtInput[static_cast<size_t>(i)] = new QPlainTextEdit(pages);
        QPlainTextEdit *box = txtInput[static_cast<size_t>(i)];
        box->setTabChangesFocus(true);
        showsRecordValue(box);
        grid->addWidget(margin, i, 0, Qt::AlignTop);
        grid->addWidget(box, i, 1);
        connect(margin, &QPushButton::clicked, this, [this, i] { command([this, i] { m_model.txtMargin_Click(i); }); });
        onTextTyped(box, [this, i](const QString &text) { m_model.txtInput_Change(i, text); });
    }
    InstallPaneShield(pages);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(pages, 1);
    DrawOnWindowColour(this);

    connect(calDate, &QDateEdit::dateChanged, this,
            [this](QDate d) { command([this, d] { m_model.calDate_Click(d); }); });
    connect(diaMoveDay, &UpDown::stepped, this, [this](bool up) { command([this, up] { m_model.diaMoveDay(up); }); });
    connect(period, &QButtonGroup::idClicked, this,
            [this](int id) { command([this, id] { m_model.diaPeriod_Click(id); }); });
}

void frmDiary::command(const std::function<void()> &fn) {
    fn();
    sync();
    // After a change of date or mode the box of the chosen day takes the
    // keys; the main window's own redraws (its clock ticks) leave the focus
    // where the person put it.
    txtInput[static_cast<size_t>(m_model.dayIndex())]->setFocus();
}

void frmDiary::sync() {
    setEnabled(m_model.enabled);
    lblTitel->setText(m_model.lblTitel);
    {
        const QSignalBlocker block(calDate);
        calDate->setDate(m_model.calDate);
    }
    diaPeriod[0]->setChecked(m_model.diaPeriod == km::frmDiary::DayMode);
    diaPeriod[1]->setChecked(m_model.diaPeriod == km::frmDiary::WeekMode);
    const QList<int> shown = m_model.boxesShown();
    for (int i = 0; i < 7; ++i) {
        const bool visible = shown.contains(i);
        const size_t at = static_cast<size_t>(i);
        txtMargin[at]->setText(m_model.txtMargin.value(i));
        QFont font = txtMargin[at]->font();
        font.setBold(i == m_model.dayIndex()); // the chosen day
        txtMargin[at]->setFont(font);
        txtMargin[at]->setVisible(visible);
        txtInput[at]->setVisible(visible);
        drawPlain(txtInput[at], m_model.txtInput[at].text);
    }
    if (!m_focused && isVisible()) {
        m_focused = true;
        txtInput[static_cast<size_t>(m_model.dayIndex())]->setFocus();
    }
}

void RegisterDiaryView() {
    RegisterSectionView([](SectionWindow &model, QWidget *parent) -> SectionView * {
        if (auto *diary = dynamic_cast<km::frmDiary *>(&model)) return new frmDiary(*diary, parent);
        return nullptr;
    });
}

} // namespace km::gui
