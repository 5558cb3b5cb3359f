// The calendar section over its model: a navigation row, the day headers and
// the all-day strip (DayFrame), the scrolled time grid (HourFrame) and, on
// the right, the month picker calDate above the place of the task and contact
// lists. Both frames are painted here from the model's boxes; every press,
// move, release and double-click goes to the model in layout units (15 to a
// pixel), and the view redraws what the model then holds.
#pragma once

#include "calendar/frmCalendar.h"
#include "gui/shell/SectionView.h"

class QCalendarWidget;
class QLabel;
class QLineEdit;
class QPushButton;
class QScrollBar;
class QTimer;
class QToolButton;

namespace km::gui {

class CalendarFrame;

class frmCalendar : public SectionView {
    Q_OBJECT
public:
    // Layout units per pixel.
    static constexpr double UnitsPerPixel = 15;

    frmCalendar(CALENDAR::frmCalendar &model, QWidget *parent = nullptr);
    void sync() override;

    CALENDAR::frmCalendar &model() { return m_model; }
    // Scrolls the grid so that the row stands at the top.
    void scrollToRow(int row);
    int scrollOffset() const; // pixels of the grid above the visible part

    CalendarFrame *DayFrame = nullptr;  // headers and the all-day strip
    CalendarFrame *HourFrame = nullptr; // the time grid
    QScrollBar *vsbHours = nullptr;
    QCalendarWidget *calDate = nullptr;
    QPushButton *cmdToday = nullptr;
    QToolButton *cmdPrevious = nullptr;
    QToolButton *cmdNext = nullptr;
    QLabel *lblRange = nullptr;
    QWidget *listPane = nullptr; // the tasks and contacts, when they come
    QTimer *tmrScrolldelay = nullptr;

    // Runs a model command, then redraws.
    void command(const std::function<void()> &fn);
    // Typing a new subject straight into a box (F2 on the selected box): a
    // shielded line over the box; Enter writes it, Esc or leaving it drops it.
    void editSubject(int box);
    QLineEdit *txtBoxEdit = nullptr; // while a subject is typed into a box
    // Shows the main window's context menu of that name at a global point.
    void showContextMenu(const QString &name, const QPoint &global);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void updateWidth();
    CALENDAR::frmCalendar &m_model;
    bool m_scrolledOnce = false;
};

// One of the two painted frames of the calendar.
class CalendarFrame : public QWidget {
    Q_OBJECT
public:
    enum Part { Strip, Grid };
    CalendarFrame(frmCalendar &view, Part part, QWidget *parent);
    Part part() const { return m_part; }
    // The header's height above the strip, in pixels.
    static constexpr int HeaderHeight = 38;

    // A point of this frame in layout units of the model's coordinates.
    QPointF toUnits(const QPointF &pixel) const;
    // Whether a pixel point of this frame lies over the all-day strip.
    bool overStrip(const QPointF &pixel) const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    bool event(QEvent *event) override;

private:
    friend class frmCalendar;
    void paintGrid(QPainter &p);
    void paintStrip(QPainter &p);
    void paintBox(QPainter &p, const CALENDAR::CalendarBox &box, const QRectF &r, bool selected);
    QRectF toPixels(const CALENDAR::LayoutRect &r) const;
    void autoScroll();

    frmCalendar &m_view;
    Part m_part;
    bool m_selecting = false;
    QPointF m_selectFrom;
    QPointF m_lastPixel; // the pointer during a drag, for the auto-scroll
};

// Registers the calendar's view with the main window.
void RegisterCalendarViews();

} // namespace km::gui
