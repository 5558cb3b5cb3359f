// The main window over the frmMDI model: menu bar, section bar, Toolbar1, the
// status bar staBar1, the four timers and the one section window in the
// client area. It draws the model after each change and forwards every click;
// an application event filter feeds the idle clock with each key and mouse
// event of the program's own windows.
#pragma once

#include <array>
#include <functional>
#include <map>

#include <QMainWindow>
#include <QPointer>

#include "gui/shell/SectionView.h"
#include "shell/frmMDI.h"

class QAction;
class QLabel;
class QMenu;
class QTimer;
class QToolBar;
class QToolButton;

namespace km::gui {

class QtDialogs;

class frmMDI : public QMainWindow {
    Q_OBJECT
public:
    frmMDI(km::frmMDI &model, QtDialogs &dialogs);
    ~frmMDI() override;

    // Draws the whole model: menus, bars, panels, timers, placement, section.
    void sync();

    // The action of a menu item (a submenu's own action for a submenu).
    QAction *menuAction(const QString &name, int index = -1) const;
    QMenu *contextMenu(const QString &name) const;
    QToolButton *sectionButton(int button) const; // 1 to 8
    QAction *toolAction(const QString &key) const;
    SectionView *sectionView() const { return m_view; }

    enum Panel { comment = 0, date, time, caps, num, autoshutoff };
    std::array<QLabel *, 6> staBar1{};

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;
    void moveEvent(QMoveEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct TimerMirror {
        TimerModel km::frmMDI::*model;
        std::function<void()> fire;
        QTimer *timer = nullptr;
        int generation = -1;
    };

    void buildMenus();
    void addMenuItems(QMenu *menu, const std::vector<MenuItem> &items);
    void buildSectionBar();
    void buildToolbar();
    void buildStatusBar();
    void setHooks();
    void syncMenus(const std::vector<MenuItem> &items);
    void syncBars();
    void syncPanels();
    void syncTimers();
    void syncPlacement();
    void syncSection();
    void readPlacement();
    void updateKeyLocks();

    km::frmMDI &m_model;
    QtDialogs &m_dialogs;
    std::map<QString, QAction *> m_actions;
    std::map<QString, QMenu *> m_menus;
    QToolBar *m_optSection = nullptr;
    std::vector<QToolButton *> m_sectionButtons;
    QToolBar *m_toolbar = nullptr;
    std::vector<QAction *> m_toolActions;
    std::vector<TimerMirror> m_timers;
    QTimer *m_clock = nullptr;
    QWidget *m_client = nullptr;
    QPointer<SectionView> m_view;
    SectionWindow *m_viewModel = nullptr;
    Placement m_applied;
    bool m_placed = false;
    bool m_capsLock = false, m_numLock = false;
};

} // namespace km::gui
