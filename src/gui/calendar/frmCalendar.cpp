#include "gui/calendar/frmCalendar.h"

#include <algorithm>
#include <cmath>

#include <QApplication>
#include <QCalendarWidget>
#include <QContextMenuEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTimer>
#include <QToolButton>
#include <QToolTip>
#include <QVBoxLayout>
#include <QWheelEvent>

#include "gui/Controls.h"
#include "gui/records/RecordsViews.h"
#include "gui/shell/ShieldFilter.h"
#include "gui/shell/frmMDI.h"
#include "platform/Clock.h"

namespace km::gui {

namespace {

using CALENDAR::CalendarBox;
using CALENDAR::LayoutRect;

constexpr double U = frmCalendar::UnitsPerPixel;
constexpr double RowPx = CALENDAR::RowHeight / U;
constexpr int EdgePx = 18;      // the auto-scroll zone at the grid's upper and lower edge
constexpr int ScrollDelayMs = 70; // one row per tick while the pointer stays there

const QColor WorkColour(255, 252, 226);  // working hours
const QColor RestColour(238, 241, 246);  // the other hours
const QColor GutterColour(246, 246, 246);
const QColor HourLine(196, 200, 208);
const QColor SlotLine(222, 225, 230);
const QColor BoxFill(220, 232, 250);
const QColor BoxFillPrivate(246, 226, 230);
const QColor BoxEdge(120, 150, 205);
const QColor BoxBar(70, 115, 195);
const QColor SelectedEdge(20, 40, 120);
const QColor SelectionFill(160, 190, 235, 140);
const QColor TodayRed(255, 0, 0);
const QColor SelectedBlue(0, 0, 128);

// The four marks, drawn in the colours they have always had: the alarm's
// bell and the private lock red, the recurrence arrow blue, the note in the
// window-text colour.
void paintMark(QPainter &p, QChar mark, const QRectF &r) {
    p.save();
    p.setRenderHint(QPainter::Antialiasing);
    const double w = r.width(), h = r.height();
    const double x = r.left(), y = r.top();
    switch (mark.unicode()) {
    case 'A': { // bell
        QPainterPath bell;
        bell.moveTo(x + 0.15 * w, y + 0.78 * h);
        bell.cubicTo(x + 0.28 * w, y + 0.62 * h, x + 0.18 * w, y + 0.12 * h, x + 0.5 * w, y + 0.12 * h);
        bell.cubicTo(x + 0.82 * w, y + 0.12 * h, x + 0.72 * w, y + 0.62 * h, x + 0.85 * w, y + 0.78 * h);
        bell.closeSubpath();
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(220, 0, 0));
        p.drawPath(bell);
        p.drawEllipse(QPointF(x + 0.5 * w, y + 0.86 * h), 0.11 * w, 0.11 * h);
        break;
    }
    case 'B': { // lock
        p.setPen(QPen(QColor(220, 0, 0), std::max(1.2, 0.12 * w)));
        p.setBrush(Qt::NoBrush);
        p.drawArc(QRectF(x + 0.27 * w, y + 0.08 * h, 0.46 * w, 0.5 * h), 0, 180 * 16);
        p.drawLine(QPointF(x + 0.27 * w, y + 0.33 * h), QPointF(x + 0.27 * w, y + 0.45 * h));
        p.drawLine(QPointF(x + 0.73 * w, y + 0.33 * h), QPointF(x + 0.73 * w, y + 0.45 * h));
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(220, 0, 0));
        p.drawRoundedRect(QRectF(x + 0.15 * w, y + 0.45 * h, 0.7 * w, 0.47 * h), 1, 1);
        break;
    }
    case 'C': { // recurrence
        QFont f = p.font();
        f.setPixelSize(static_cast<int>(h));
        p.setFont(f);
        p.setPen(QColor(0, 0, 230));
        p.drawText(r, Qt::AlignCenter, QString(QChar(0x27F3)));
        break;
    }
    default: { // note
        QFont f = p.font();
        f.setPixelSize(static_cast<int>(h));
        p.setFont(f);
        p.setPen(QApplication::palette().color(QPalette::WindowText));
        p.drawText(r, Qt::AlignCenter, QString(QChar(0x270E)));
        break;
    }
    }
    p.restore();
}

} // namespace

// ---- The window ----

frmCalendar::frmCalendar(CALENDAR::frmCalendar &model, QWidget *parent) : SectionView(parent), m_model(model) {
    DrawOnWindowColour(this);
    setFocusPolicy(Qt::StrongFocus);

    cmdPrevious = new QToolButton(this);
    cmdPrevious->setArrowType(Qt::LeftArrow);
    cmdPrevious->setToolTip(QStringLiteral("Back"));
    cmdNext = new QToolButton(this);
    cmdNext->setArrowType(Qt::RightArrow);
    cmdNext->setToolTip(QStringLiteral("Forward"));
    cmdToday = new QPushButton(QStringLiteral("Today"), this);
    cmdToday->setObjectName(QStringLiteral("cmdToday"));
    lblRange = new QLabel(this);
    QFont big = lblRange->font();
    big.setPointSizeF(big.pointSizeF() * 1.25);
    big.setBold(true);
    lblRange->setFont(big);
    auto *nav = new QHBoxLayout;
    nav->addWidget(cmdToday);
    nav->addWidget(cmdPrevious);
    nav->addWidget(cmdNext);
    nav->addSpacing(8);
    nav->addWidget(lblRange, 1);

    DayFrame = new CalendarFrame(*this, CalendarFrame::Strip, this);
    DayFrame->setObjectName(QStringLiteral("DayFrame"));
    HourFrame = new CalendarFrame(*this, CalendarFrame::Grid, this);
    HourFrame->setObjectName(QStringLiteral("HourFrame"));
    vsbHours = new QScrollBar(Qt::Vertical, this);
    vsbHours->setSingleStep(static_cast<int>(RowPx));
    auto *frames = new QGridLayout;
    frames->setSpacing(0);
    frames->addWidget(DayFrame, 0, 0);
    frames->addWidget(HourFrame, 1, 0);
    frames->addWidget(vsbHours, 1, 1);
    frames->setRowStretch(1, 1);

    calDate = new QCalendarWidget(this);
    calDate->setObjectName(QStringLiteral("calDate"));
    calDate->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
    calDate->setGridVisible(false);
    calDate->setMinimumDate(CALENDAR::DateOfDay(CALENDAR::FirstCalendarDay - 1));
    calDate->setMaximumDate(CALENDAR::DateOfDay(CALENDAR::LastCalendarDay));
    calDate->setFixedWidth(250);
    calDate->setFixedHeight(190);
    // The task and contact lists stand under the picker once they come.
    listPane = new QWidget(this);
    listPane->setObjectName(QStringLiteral("listPane"));
    listPane->setFixedWidth(250);
    auto *side = new QVBoxLayout;
    side->addWidget(calDate);
    side->addWidget(listPane, 1);

    auto *main = new QVBoxLayout;
    main->addLayout(nav);
    main->addLayout(frames, 1);
    auto *layout = new QHBoxLayout(this);
    layout->addLayout(main, 1);
    layout->addLayout(side);

    tmrScrolldelay = new QTimer(this);
    tmrScrolldelay->setInterval(ScrollDelayMs);
    connect(tmrScrolldelay, &QTimer::timeout, HourFrame, [this] { HourFrame->autoScroll(); });
    connect(vsbHours, &QScrollBar::valueChanged, HourFrame, qOverload<>(&QWidget::update));
    connect(cmdToday, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdToday_Click(); }); });
    connect(cmdPrevious, &QToolButton::clicked, this, [this] { command([this] { m_model.Step(-1); }); });
    connect(cmdNext, &QToolButton::clicked, this, [this] { command([this] { m_model.Step(1); }); });
    connect(calDate, &QCalendarWidget::clicked, this,
            [this](const QDate &d) { command([this, d] { m_model.calDate_DateClick(d); }); });
    connect(calDate, &QCalendarWidget::activated, this,
            [this](const QDate &d) { command([this, d] { m_model.calDate_DateClick(d); }); });

    m_model.onChanged = [this] {
        DayFrame->update();
        HourFrame->update();
    };
    sync();
}

void frmCalendar::command(const std::function<void()> &fn) {
    fn();
    sync();
}

void frmCalendar::showContextMenu(const QString &name, const QPoint &global) {
    auto *main = qobject_cast<gui::frmMDI *>(window());
    if (!main) return;
    if (QMenu *menu = main->contextMenu(name)) menu->exec(global);
}

void frmCalendar::scrollToRow(int row) {
    vsbHours->setValue(static_cast<int>(row * RowPx));
}

int frmCalendar::scrollOffset() const {
    return vsbHours->value();
}

void frmCalendar::updateWidth() {
    const double width = HourFrame->width() * U;
    if (std::abs(width - m_model.visibleWidth) < 1) return;
    m_model.visibleWidth = width;
    m_model.DrawAppointments();
}

void frmCalendar::resizeEvent(QResizeEvent *event) {
    SectionView::resizeEvent(event);
    vsbHours->setRange(0, std::max(0, static_cast<int>(m_model.gridHeight() / U) - HourFrame->height()));
    vsbHours->setPageStep(HourFrame->height());
    updateWidth();
    if (!m_scrolledOnce && HourFrame->height() > 0) {
        m_scrolledOnce = true;
        scrollToRow(m_model.displayFromRow);
    }
}

void frmCalendar::keyPressEvent(QKeyEvent *event) {
    const int box = m_model.selectedBox;
    if (event->key() == Qt::Key_Delete && box >= 0) {
        command([this, box] { m_model.DeleteBox(box); });
        return;
    }
    if (event->key() == Qt::Key_Escape && txtBoxEdit) {
        setFocus(); // the line loses the focus: what was typed is dropped
        return;
    }
    if (event->key() == Qt::Key_F2 && box >= 0) {
        editSubject(box);
        return;
    }
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && box >= 0) {
        command([this, box] { m_model.OpenBox(box); });
        return;
    }
    if (event->key() == Qt::Key_Escape && m_model.drag.kind != CALENDAR::frmCalendar::DragKind::None) {
        m_model.CancelDrag();
        sync();
        return;
    }
    SectionView::keyPressEvent(event);
}

void frmCalendar::editSubject(int box) {
    if (box < 0 || box >= static_cast<int>(m_model.boxes.size()) || txtBoxEdit) return;
    const CALENDAR::CalendarBox &b = m_model.boxes[static_cast<size_t>(box)];
    CalendarFrame *frame = b.allDay ? DayFrame : HourFrame;
    auto *edit = new QLineEdit(frame);
    txtBoxEdit = edit;
    showsRecordValue(edit);
    InstallPaneShield(edit);
    edit->setText(b.subject);
    edit->selectAll();
    edit->setGeometry(frame->toPixels(b.box).toRect().adjusted(1, 1, -1, 0));
    edit->setMinimumHeight(edit->sizeHint().height());
    const qint64 id = b.id;
    const qint32 start = b.start;
    // Ends the typing once: Enter writes (when the box still stands where it
    // was), anything else drops what was typed.
    const auto finish = [this, edit, id, start](bool write) {
        if (txtBoxEdit != edit) return;
        txtBoxEdit = nullptr;
        QString text = edit->text();
        edit->clear();
        edit->hide();
        edit->deleteLater();
        if (write) {
            const auto &boxes = m_model.boxes;
            const auto it = std::find_if(boxes.begin(), boxes.end(), [&](const CALENDAR::CalendarBox &x) {
                return x.id == id && x.start == start;
            });
            if (it != boxes.end() && it->subject != text) {
                const int index = static_cast<int>(it - boxes.begin());
                command([&] { m_model.SaveBoxChange(index, CALENDAR::frmCalendar::ModeSubject, it->start, it->end, text); });
            }
        }
        km::wipe(text);
        setFocus();
    };
    connect(edit, &QLineEdit::returnPressed, this, [finish] { finish(true); });
    connect(qApp, &QApplication::focusChanged, edit, [finish, edit](QWidget *old, QWidget *) {
        if (old == edit) finish(false);
    });
    edit->show();
    edit->setFocus();
}

void frmCalendar::sync() {
    updateWidth();
    vsbHours->setRange(0, std::max(0, static_cast<int>(m_model.gridHeight() / U) - HourFrame->height()));
    {
        const QSignalBlocker block(calDate);
        calDate->setSelectedDate(m_model.state.calDate);
    }
    const QLocale locale;
    const CALENDAR::DateRange &r = m_model.range;
    if (r.first == r.last)
        lblRange->setText(locale.toString(r.first, QLocale::LongFormat));
    else
        lblRange->setText(locale.toString(r.first, QStringLiteral("d MMMM")) + QStringLiteral(" – ") +
                          locale.toString(r.last, QStringLiteral("d MMMM yyyy")));
    DayFrame->setFixedHeight(CalendarFrame::HeaderHeight + static_cast<int>(CALENDAR::StripRowHeight / U));
    DayFrame->update();
    HourFrame->update();
}

// ---- The frames ----

CalendarFrame::CalendarFrame(frmCalendar &view, Part part, QWidget *parent)
    : QWidget(parent), m_view(view), m_part(part) {
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumHeight(part == Grid ? 120 : HeaderHeight);
}

QPointF CalendarFrame::toUnits(const QPointF &pixel) const {
    if (m_part == Grid) return {pixel.x() * U, (pixel.y() + m_view.scrollOffset()) * U};
    return {pixel.x() * U, (pixel.y() - HeaderHeight) * U};
}

bool CalendarFrame::overStrip(const QPointF &pixel) const {
    if (m_part == Grid) return pixel.y() < 0 && pixel.y() >= -(CALENDAR::StripRowHeight / U);
    return pixel.y() >= HeaderHeight - 4 && pixel.y() < height() + 4;
}

QRectF CalendarFrame::toPixels(const LayoutRect &r) const {
    const double top = m_part == Grid ? r.top / U - m_view.scrollOffset() : r.top / U + HeaderHeight;
    return {r.left / U, top, r.width / U, r.height / U};
}

void CalendarFrame::paintEvent(QPaintEvent *) {
    QPainter p(this);
    QFont f = font();
    f.setPointSizeF(8.5);
    p.setFont(f);
    if (m_part == Grid)
        paintGrid(p);
    else
        paintStrip(p);
}

void CalendarFrame::paintGrid(QPainter &p) {
    CALENDAR::frmCalendar &m = m_view.model();
    const int off = m_view.scrollOffset();
    const double gutter = CALENDAR::HourGutter / U;
    const double colPx = m.colWidth() / U;
    const int days = m.daysShown();
    p.fillRect(rect(), RestColour);

    const int firstRow = std::max(0, static_cast<int>(off / RowPx));
    const int lastRow = std::min(m.rowCount() - 1, static_cast<int>((off + height()) / RowPx) + 1);
    for (int row = firstRow; row <= lastRow; ++row) {
        const double y = row * RowPx - off;
        if (row >= m.workStartRow && row < m.workEndRow)
            p.fillRect(QRectF(gutter, y, width() - gutter, RowPx), WorkColour);
    }
    // The selected rows.
    const auto &sel = m.selection;
    if (sel.active && !sel.allDay) {
        p.fillRect(QRectF(gutter + sel.column * colPx, sel.firstRow * RowPx - off, colPx,
                          (sel.lastRow - sel.firstRow + 1) * RowPx),
                   SelectionFill);
    }
    for (int row = firstRow; row <= lastRow + 1; ++row) {
        const double y = std::floor(row * RowPx - off) + 0.5;
        const bool hour = row % m.rowsPerHour() == 0;
        p.setPen(QPen(hour ? HourLine : SlotLine, 1, hour ? Qt::SolidLine : Qt::DotLine));
        p.drawLine(QPointF(gutter, y), QPointF(width(), y));
    }
    for (int c = 0; c <= days; ++c) {
        const double x = std::floor(gutter + c * colPx) + 0.5;
        p.setPen(HourLine);
        p.drawLine(QPointF(x, 0), QPointF(x, height()));
    }

    // Boxes, then the drag's shadow on top.
    p.setClipRect(QRectF(gutter, 0, width() - gutter, height()));
    for (size_t i = 0; i < m.boxes.size(); ++i) {
        const CalendarBox &b = m.boxes[i];
        if (b.allDay) continue;
        const QRectF r = toPixels(b.box);
        if (r.bottom() < 0 || r.top() > height()) continue;
        paintBox(p, b, r, static_cast<int>(i) == m.selectedBox);
    }
    const auto &drag = m.drag;
    if (drag.started && drag.valid &&
        (drag.kind == CALENDAR::frmCalendar::DragKind::Move || drag.kind == CALENDAR::frmCalendar::DragKind::Resize)) {
        p.setRenderHint(QPainter::Antialiasing);
        p.setPen(QPen(SelectedEdge, 1.5, Qt::DashLine));
        p.setBrush(QColor(70, 115, 195, 60));
        p.drawRoundedRect(toPixels(drag.shadow).adjusted(0.5, 0.5, -0.5, -0.5), 3, 3);
        p.setRenderHint(QPainter::Antialiasing, false);
    }
    // Now, as a red line across today's column.
    const QDateTime now = Clock::now();
    const int today = m.columnOfDate(now.date());
    if (today >= 0) {
        const double y = (now.time().hour() * 60 + now.time().minute()) / 60.0 * m.rowsPerHour() * RowPx - off;
        p.setPen(QPen(TodayRed, 1.5));
        p.drawLine(QPointF(gutter + today * colPx, y), QPointF(gutter + (today + 1) * colPx, y));
    }
    p.setClipping(false);

    // The hour labels in the system's form.
    p.fillRect(QRectF(0, 0, gutter, height()), GutterColour);
    p.setPen(QColor(90, 90, 90));
    for (int h = 0; h < 24; ++h) {
        const double y = h * m.rowsPerHour() * RowPx - off;
        if (y < -RowPx || y > height()) continue;
        p.drawText(QRectF(0, y + 1, gutter - 5, RowPx), Qt::AlignRight | Qt::AlignTop, m.HourLabel(h));
    }
    p.setPen(HourLine);
    p.drawLine(QPointF(gutter - 0.5, 0), QPointF(gutter - 0.5, height()));
}

void CalendarFrame::paintStrip(QPainter &p) {
    CALENDAR::frmCalendar &m = m_view.model();
    const double gutter = CALENDAR::HourGutter / U;
    const double colPx = m.colWidth() / U;
    p.fillRect(rect(), palette().color(QPalette::Window));
    p.fillRect(QRectF(gutter, HeaderHeight, width() - gutter, height() - HeaderHeight), RestColour);

    const QLocale locale;
    const QDate today = Clock::today();
    QFont bold = p.font();
    bold.setBold(true);
    for (int c = 0; c < m.daysShown(); ++c) {
        const QDate d = m.dayOfColumn(c);
        const QRectF head(gutter + c * colPx, 0, colPx, HeaderHeight);
        const QColor colour = d == today ? TodayRed : d == m.state.calDate ? SelectedBlue : QColor(110, 110, 110);
        if (d == m.state.calDate) p.fillRect(head.adjusted(1, 1, -1, -1), QColor(228, 234, 246));
        p.setPen(colour);
        p.setFont(bold);
        // The weekday's full name, or its short one where the column is narrow.
        QString weekday = locale.toString(d, QStringLiteral("dddd"));
        if (QFontMetricsF(bold).horizontalAdvance(weekday) > colPx - 4)
            weekday = locale.toString(d, QStringLiteral("ddd"));
        p.drawText(head.adjusted(0, 3, 0, -HeaderHeight / 2), Qt::AlignHCenter | Qt::AlignVCenter, weekday);
        p.setFont(font());
        p.drawText(head.adjusted(0, HeaderHeight / 2 - 1, 0, -2), Qt::AlignHCenter | Qt::AlignVCenter,
                   locale.toString(d, QLocale::ShortFormat));
        p.setPen(HourLine);
        const double x = std::floor(head.left()) + 0.5;
        p.drawLine(QPointF(x, 0), QPointF(x, height()));
    }
    p.setPen(HourLine);
    p.drawLine(QPointF(gutter, HeaderHeight - 0.5), QPointF(width(), HeaderHeight - 0.5));
    p.drawLine(QPointF(0, height() - 0.5), QPointF(width(), height() - 0.5));
    QFont small = font();
    small.setPointSizeF(8);
    p.setFont(small);
    p.setPen(QColor(110, 110, 110));
    p.drawText(QRectF(0, HeaderHeight, gutter - 5, height() - HeaderHeight), Qt::AlignRight | Qt::AlignVCenter,
               QStringLiteral("All day"));

    const auto &sel = m.selection;
    if (sel.active && sel.allDay)
        p.fillRect(QRectF(gutter + sel.column * colPx, HeaderHeight, (sel.lastColumn - sel.column + 1) * colPx,
                          height() - HeaderHeight),
                   SelectionFill);
    p.setFont(font());
    for (size_t i = 0; i < m.boxes.size(); ++i) {
        const CalendarBox &b = m.boxes[i];
        if (!b.allDay) continue;
        paintBox(p, b, toPixels(b.box), static_cast<int>(i) == m.selectedBox);
    }
    const auto &drag = m.drag;
    if (drag.started && drag.valid && drag.kind == CALENDAR::frmCalendar::DragKind::MoveAllDay) {
        p.setPen(QPen(SelectedEdge, 1.5, Qt::DashLine));
        p.setBrush(QColor(70, 115, 195, 60));
        p.drawRect(toPixels(drag.shadow));
    }
}

void CalendarFrame::paintBox(QPainter &p, const CalendarBox &b, const QRectF &r, bool selected) {
    CALENDAR::frmCalendar &m = m_view.model();
    const QRectF box = r.adjusted(0.5, 0.5, -0.5, -0.5);
    p.save();
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(selected ? SelectedEdge : BoxEdge, selected ? 2 : 1));
    p.setBrush(b.isPrivate ? BoxFillPrivate : BoxFill);
    p.drawRoundedRect(box, 3, 3);
    p.setPen(Qt::NoPen);
    p.setBrush(BoxBar);
    p.drawRoundedRect(QRectF(box.left(), box.top(), 4, box.height()), 2, 2);
    p.setRenderHint(QPainter::Antialiasing, false);

    // A box too short for its text shows what fits; the tool tip has the rest.
    QRectF text = box.adjusted(7, 1, -3, -1);
    p.setClipRect(box.adjusted(1, 1, -1, -1), Qt::IntersectClip);
    const QFontMetricsF fm(p.font());
    const double line = fm.height();
    const QString marks = CALENDAR::BoxMarks(b);
    double x = text.left();
    const double markSize = std::min(line - 2, 12.0);
    for (const QChar mark : marks) {
        paintMark(p, mark, QRectF(x, text.top() + (line - markSize) / 2, markSize, markSize));
        x += markSize + 1;
    }
    if (!marks.isEmpty()) x += fm.horizontalAdvance(QStringLiteral("  ")) - 2;
    p.setPen(Qt::black);
    const QString first = b.subject;
    if (!b.allDay && text.height() >= 2 * line) {
        // The start time over the subject; the whole span is in the tool tip.
        QFont bold = p.font();
        bold.setBold(true);
        p.setFont(bold);
        const QString time = m.BoxTimeText(b).section(QStringLiteral(" - "), 0, 0);
        if (QFontMetricsF(bold).horizontalAdvance(time) <= text.right() - x)
            p.drawText(QRectF(x, text.top(), text.right() - x, line), Qt::AlignLeft | Qt::AlignVCenter, time);
        p.setFont(font());
        p.setFont(QFont(p.font().family(), 8));
        const QRectF rest(text.left(), text.top() + line, text.width(), text.height() - line);
        QString body = b.subject;
        if (!b.location.isEmpty()) body += QStringLiteral(" (") + b.location + QLatin1Char(')');
        p.drawText(rest, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, body);
    } else {
        p.drawText(QRectF(x, text.top(), text.right() - x, line), Qt::AlignLeft | Qt::AlignVCenter,
                   fm.elidedText(first, Qt::ElideRight, text.right() - x));
    }
    p.restore();
}

// ---- The pointer ----

void CalendarFrame::mousePressEvent(QMouseEvent *event) {
    CALENDAR::frmCalendar &m = m_view.model();
    m_view.setFocus();
    if (event->button() != Qt::LeftButton) return;
    const QPointF pixel = event->position();
    if (m_part == Strip && pixel.y() < HeaderHeight) {
        // A click on a day's header makes it the calendar's day.
        if (const auto moment = m.PointToMoment(pixel.x() * U, 0, true)) {
            const QDate day = CALENDAR::DateOfMoment(*moment);
            m_view.command([&m, day] { m.SetDate(day); });
        }
        return;
    }
    const QPointF u = toUnits(pixel);
    const int box = m.BoxAt(u.x(), u.y(), m_part == Strip);
    if (box >= 0) {
        m.BoxPress(box, u.x(), u.y());
        m_lastPixel = pixel;
    } else {
        m.selectedBox = -1;
        m_selecting = true;
        m_selectFrom = u;
        m.SelectArea(u.x(), u.y(), u.x(), u.y(), m_part == Strip);
    }
    m_view.sync();
}

void CalendarFrame::mouseMoveEvent(QMouseEvent *event) {
    CALENDAR::frmCalendar &m = m_view.model();
    const QPointF pixel = event->position();
    const QPointF u = toUnits(pixel);
    if (m.drag.kind != CALENDAR::frmCalendar::DragKind::None) {
        m_lastPixel = pixel;
        m.DragMove(u.x(), u.y(), overStrip(pixel));
        if (m_part == Grid) {
            const bool nearEdge = pixel.y() < EdgePx || pixel.y() > height() - EdgePx;
            if (nearEdge && m.drag.started && !overStrip(pixel) && !m_view.tmrScrolldelay->isActive())
                m_view.tmrScrolldelay->start();
            else if (!nearEdge)
                m_view.tmrScrolldelay->stop();
        }
        m_view.DayFrame->update();
        m_view.HourFrame->update();
        return;
    }
    if (m_selecting && (event->buttons() & Qt::LeftButton)) {
        m.SelectArea(m_selectFrom.x(), m_selectFrom.y(), u.x(), u.y(), m_part == Strip);
        m_lastPixel = pixel;
        update();
        return;
    }
    // The pointer's form tells a resize from a move.
    const int box = m.BoxAt(u.x(), u.y(), m_part == Strip);
    if (box >= 0 && m.InResizeZone(box, u.y()))
        setCursor(Qt::SizeVerCursor);
    else if (box >= 0)
        setCursor(Qt::SizeAllCursor);
    else
        unsetCursor();
}

void CalendarFrame::mouseReleaseEvent(QMouseEvent *event) {
    CALENDAR::frmCalendar &m = m_view.model();
    m_view.tmrScrolldelay->stop();
    if (event->button() != Qt::LeftButton) return;
    const QPointF pixel = event->position();
    const QPointF u = toUnits(pixel);
    m_selecting = false;
    if (m.drag.kind != CALENDAR::frmCalendar::DragKind::None) {
        const bool onStrip = overStrip(pixel);
        m_view.command([&] { m.DragRelease(u.x(), u.y(), onStrip); });
    }
}

void CalendarFrame::mouseDoubleClickEvent(QMouseEvent *event) {
    CALENDAR::frmCalendar &m = m_view.model();
    if (event->button() != Qt::LeftButton) return;
    const QPointF pixel = event->position();
    if (m_part == Strip && pixel.y() < HeaderHeight) return;
    const QPointF u = toUnits(pixel);
    m.CancelDrag();
    const int box = m.BoxAt(u.x(), u.y(), m_part == Strip);
    if (box >= 0)
        m_view.command([&m, box] { m.OpenBox(box); });
    else
        m_view.command([&m, u, this] { m.NewAppointmentAt(u.x(), u.y(), m_part == Strip); });
}

void CalendarFrame::contextMenuEvent(QContextMenuEvent *event) {
    CALENDAR::frmCalendar &m = m_view.model();
    if (m_part == Strip && event->pos().y() < HeaderHeight) return;
    const QPointF u = toUnits(event->pos());
    const QString menu = m.ContextMenuAt(u.x(), u.y(), m_part == Strip);
    m_view.sync();
    m_view.showContextMenu(menu, event->globalPos());
}

void CalendarFrame::wheelEvent(QWheelEvent *event) {
    if (m_part != Grid) return;
    const int rows = event->angleDelta().y() / 120;
    m_view.vsbHours->setValue(m_view.vsbHours->value() - rows * 3 * static_cast<int>(RowPx));
}

bool CalendarFrame::event(QEvent *event) {
    if (event->type() == QEvent::ToolTip) {
        auto *help = static_cast<QHelpEvent *>(event);
        const QPointF u = toUnits(help->pos());
        const CALENDAR::frmCalendar &m = m_view.model();
        const int box = m_part == Strip && help->pos().y() < HeaderHeight ? -1 : m.BoxAt(u.x(), u.y(), m_part == Strip);
        if (box >= 0)
            QToolTip::showText(help->globalPos(), m.BoxToolTip(m.boxes[static_cast<size_t>(box)]), this);
        else
            QToolTip::hideText();
        return true;
    }
    return QWidget::event(event);
}

void CalendarFrame::autoScroll() {
    CALENDAR::frmCalendar &m = m_view.model();
    QScrollBar *bar = m_view.vsbHours;
    const int step = static_cast<int>(RowPx);
    if (m_lastPixel.y() < EdgePx)
        bar->setValue(bar->value() - step);
    else if (m_lastPixel.y() > height() - EdgePx)
        bar->setValue(bar->value() + step);
    else
        m_view.tmrScrolldelay->stop();
    // The shadow keeps to the pointer, which now stands over another row.
    const QPointF u = toUnits(m_lastPixel);
    if (m.drag.kind != CALENDAR::frmCalendar::DragKind::None)
        m.DragMove(u.x(), u.y(), overStrip(m_lastPixel));
    else if (m_selecting)
        m.SelectArea(m_selectFrom.x(), m_selectFrom.y(), u.x(), u.y(), false);
    update();
}

void RegisterCalendarViews() {
    RegisterSectionView([](SectionWindow &model, QWidget *parent) -> SectionView * {
        if (auto *calendar = dynamic_cast<CALENDAR::frmCalendar *>(&model)) return new frmCalendar(*calendar, parent);
        return nullptr;
    });
}

} // namespace km::gui
