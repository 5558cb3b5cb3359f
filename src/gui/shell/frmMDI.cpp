#include "gui/shell/frmMDI.h"

#include <cstdlib>

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDate>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLibrary>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>
#include <QMoveEvent>
#include <QPainter>
#include <QPlainTextEdit>
#include <QResizeEvent>
#include <QScreen>
#include <QStatusBar>
#include <QStyle>
#include <QTextEdit>
#include <QTime>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/QtDialogs.h"
#include "gui/shell/SectionView.h"
#include "gui/shell/ShieldFilter.h"
#include "gui/shell/frmAbout.h"
#include "gui/shell/frmTip.h"
#include "shell/SessionGuards.h"
#include "shell/frmOptions.h"
#include "ui/Services.h"

namespace km::gui {

namespace {

QString itemKey(const QString &name, int index) {
    return name + QLatin1Char('#') + QString::number(index);
}

// The padlock of the Lock button, drawn so that no picture file is needed.
QIcon lockIcon() {
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(QColor(0x55, 0x55, 0x55), 3));
    p.drawArc(QRectF(9, 3, 14, 16), 0, 180 * 16);
    p.drawLine(QPointF(9, 11), QPointF(9, 15));
    p.drawLine(QPointF(23, 11), QPointF(23, 15));
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0xc8, 0x96, 0x1e));
    p.drawRoundedRect(QRectF(5, 14, 22, 16), 3, 3);
    p.setBrush(QColor(0x40, 0x30, 0x10));
    p.drawEllipse(QRectF(14, 19, 4, 4));
    return QIcon(pixmap);
}

// The keyboard's lock lights, read from the X server where there is one.
bool readKeyLocks(bool &caps, bool &num) {
    auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->display()) return false;
    using GetIndicatorState = int (*)(void *, unsigned, unsigned *);
    static const auto get = reinterpret_cast<GetIndicatorState>(
        QLibrary::resolve(QStringLiteral("X11"), 6, "XkbGetIndicatorState"));
    if (!get) return false;
    unsigned state = 0;
    constexpr unsigned UseCoreKeyboard = 0x0100;
    if (get(x11->display(), UseCoreKeyboard, &state) != 0) return false;
    caps = state & 1;
    num = state & 2;
    return true;
}

QLabel *panel(QWidget *parent, int minimumWidth) {
    auto *label = new QLabel(parent);
    label->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    label->setMinimumWidth(minimumWidth);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

// The focused text control as Cut, Copy and Paste see it: its real text (a
// masked box's too, which only the program's Copy may take whole) and its
// selection.
ActiveControl readFocused() {
    ActiveControl c;
    QWidget *focus = QApplication::focusWidget();
    c.recordValue = isRecordValue(focus);
    if (auto *edit = qobject_cast<QLineEdit *>(focus)) {
        c.present = true;
        c.text = edit->text();
        c.selStart = edit->hasSelectedText() ? edit->selectionStart() : edit->cursorPosition();
        c.selLength = edit->hasSelectedText() ? edit->selectionLength() : 0;
        c.masked = edit->echoMode() != QLineEdit::Normal;
    } else if (auto *plain = qobject_cast<QPlainTextEdit *>(focus)) {
        c.present = true;
        c.text = plain->toPlainText();
        c.selStart = plain->textCursor().selectionStart();
        c.selLength = plain->textCursor().selectionEnd() - c.selStart;
    } else if (auto *rich = qobject_cast<QTextEdit *>(focus)) {
        c.present = true;
        c.text = rich->toPlainText();
        c.selStart = rich->textCursor().selectionStart();
        c.selLength = rich->textCursor().selectionEnd() - c.selStart;
    }
    return c;
}

template <class Edit> void selectIn(Edit *edit, const ActiveControl &c) {
    QTextCursor cursor = edit->textCursor();
    cursor.setPosition(c.selStart);
    cursor.setPosition(c.selStart + c.selLength, QTextCursor::KeepAnchor);
    edit->setTextCursor(cursor);
}

// Writes back after the command: the text only where it changed (Cut,
// Paste), so that a Copy is no edit of the box; then the selection, which
// shows what Copy took.
void writeFocused(const ActiveControl &c) {
    QWidget *focus = QApplication::focusWidget();
    if (auto *edit = qobject_cast<QLineEdit *>(focus)) {
        if (edit->isReadOnly()) return;
        if (edit->text() != c.text) edit->setText(c.text);
        edit->setSelection(c.selStart, c.selLength);
    } else if (auto *plain = qobject_cast<QPlainTextEdit *>(focus)) {
        if (plain->isReadOnly()) return;
        if (plain->toPlainText() != c.text) plain->setPlainText(c.text);
        selectIn(plain, c);
    } else if (auto *rich = qobject_cast<QTextEdit *>(focus)) {
        if (rich->isReadOnly()) return;
        if (rich->toPlainText() != c.text) rich->setPlainText(c.text);
        selectIn(rich, c);
    }
}

// The user's guide: installed under share/doc beside the program's bin
// folder, or beside the program, or in the source tree above a build folder
// at any depth.
QString helpFile() {
    const QString guide = QStringLiteral("docs/help/index.html");
    QDir dir(QCoreApplication::applicationDirPath());
    const QString installed = dir.filePath(QStringLiteral("../share/doc/kestrelmondarin/help/index.html"));
    if (QFileInfo::exists(installed)) return QFileInfo(installed).canonicalFilePath();
    for (int up = 0; up < 5; ++up) {
        if (QFileInfo::exists(dir.filePath(guide))) return QFileInfo(dir.filePath(guide)).canonicalFilePath();
        if (!dir.cdUp()) break;
    }
    return QString();
}

} // namespace

frmMDI::frmMDI(km::frmMDI &model, QtDialogs &dialogs) : m_model(model), m_dialogs(dialogs) {
    setObjectName(QStringLiteral("frmMDI"));
    m_client = new QWidget(this);
    m_client->setObjectName(QStringLiteral("client"));
    m_client->setAutoFillBackground(true);
    QPalette pal = m_client->palette();
    pal.setColor(QPalette::Window, QColor(0x80, 0x80, 0x80));
    m_client->setPalette(pal);
    auto *layout = new QVBoxLayout(m_client);
    layout->setContentsMargins(0, 0, 0, 0);
    setCentralWidget(m_client);

    buildMenus();
    buildToolbar();
    buildSectionBar();
    buildStatusBar();

    auto &m = m_model;
    m_timers = {{&km::frmMDI::timerClipboard, [&m] { m.timerClipboard_Timer(); }},
                {&km::frmMDI::timerPW, [&m] { m.timerPW_Timer(); }},
                {&km::frmMDI::timerTimeout, [&m] { m.timerTimeout_Timer(); }},
                {&km::frmMDI::timerSplash, [&m] { m.timerSplash_Timer(); }}};
    for (TimerMirror &t : m_timers) {
        t.timer = new QTimer(this);
        connect(t.timer, &QTimer::timeout, this, [this, fire = t.fire] {
            fire();
            sync();
        });
    }
    m_clock = new QTimer(this);
    connect(m_clock, &QTimer::timeout, this, [this] { syncPanels(); });
    m_clock->start(1000);

    setHooks();
    SetShieldShell(&m_model);
    qApp->installEventFilter(this);
    resize(820, 588);
    sync();
}

frmMDI::~frmMDI() {
    SetShieldShell(nullptr);
    qApp->removeEventFilter(this);
    m_dialogs.setMainWindow(nullptr, {});
    m_model.onChanged = nullptr;
    m_model.unloadWindow = nullptr;
    m_model.readActiveControl = nullptr;
    m_model.writeActiveControl = nullptr;
}

void frmMDI::setHooks() {
    m_model.onChanged = [this] { sync(); };
    m_model.unloadWindow = [this] {
        // Under a modal dialog the window cannot close; the caller then ends directly.
        if (QApplication::activeModalWidget()) return false;
        close();
        return true;
    };
    m_model.endProgram = [] {
        // Nothing runs on after the store is closed and the clipboard wiped:
        // not the caller of a modal dialog, not a pending event.
        std::exit(0);
    };
    m_model.showTip = [] { frmTip::ShowAtStart(); };
    m_model.showOptions = [] {
        km::frmOptions options;
        options.Form_Load();
        ui().showModal(options);
    };
    m_model.changePassphrase = [] {
        km::frmOptions options;
        options.cmdPWchange_Click();
    };
    m_model.showAbout = [this] {
        frmAbout about(m_dialogs.dialogParent());
        about.exec();
    };
    m_model.showHelp = [] {
        const QString file = helpFile();
        if (file.isEmpty() || !desktop().openUrl(QUrl::fromLocalFile(file).toString()))
            ShowMessage(167, Buttons::OK, Answer::OK, Icon::Exclamation);
    };
    m_model.readActiveControl = [] { return readFocused(); };
    m_model.writeActiveControl = [](const ActiveControl &c) { writeFocused(c); };
    m_dialogs.setMainWindow(this, [this](const QString &text) {
        m_model.panelComment = text;
        staBar1[comment]->setText(text);
        staBar1[comment]->repaint();
    });
}

// ---- Menus ----

void frmMDI::buildMenus() {
    for (const MenuItem &top : m_model.menus()) {
        if (top.separator) continue;
        auto *menu = new QMenu(top.caption, this);
        m_menus[top.name] = menu;
        m_actions[itemKey(top.name, top.index)] = menu->menuAction();
        addMenuItems(menu, top.children);
        menuBar()->addMenu(menu);
    }
}

void frmMDI::addMenuItems(QMenu *menu, const std::vector<MenuItem> &items) {
    for (const MenuItem &item : items) {
        if (item.separator) {
            menu->addSeparator();
            continue;
        }
        QAction *action = nullptr;
        if (item.isSubmenu()) {
            QMenu *sub = menu->addMenu(item.caption);
            addMenuItems(sub, item.children);
            action = sub->menuAction();
        } else {
            action = menu->addAction(item.caption);
            if (!item.shortcut.isEmpty())
                action->setShortcut(QKeySequence(item.shortcut, QKeySequence::PortableText));
            connect(action, &QAction::triggered, this, [this, name = item.name, index = item.index] {
                m_model.menuClick(name, index);
                sync();
            });
        }
        m_actions[itemKey(item.name, item.index)] = action;
    }
}

void frmMDI::syncMenus(const std::vector<MenuItem> &items) {
    for (const MenuItem &item : items) {
        if (item.separator) continue;
        if (QAction *action = menuAction(item.name, item.index)) {
            action->setText(item.caption);
            action->setVisible(item.visible);
            action->setEnabled(item.enabled);
            action->setCheckable(item.checked);
            action->setChecked(item.checked);
        }
        syncMenus(item.children);
    }
}

QAction *frmMDI::menuAction(const QString &name, int index) const {
    const auto it = m_actions.find(itemKey(name, index));
    return it == m_actions.end() ? nullptr : it->second;
}

QMenu *frmMDI::contextMenu(const QString &name) const {
    const auto it = m_menus.find(name);
    return it == m_menus.end() ? nullptr : it->second;
}

// ---- Bars ----

void frmMDI::buildSectionBar() {
    m_optSection = new QToolBar(QStringLiteral("optSection"), this);
    m_optSection->setObjectName(QStringLiteral("optSection"));
    m_optSection->setMovable(false);
    m_optSection->setOrientation(Qt::Vertical);
    for (size_t i = 0; i < m_model.optSection.size(); ++i) {
        const SectionButton &b = m_model.optSection[i];
        auto *button = new QToolButton(m_optSection);
        button->setObjectName(b.key);
        button->setCheckable(true);
        button->setMinimumSize(104, 46);
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);
        if (b.caption.isEmpty()) {
            button->setIcon(style()->standardIcon(QStyle::SP_DirHomeIcon));
            button->setToolButtonStyle(Qt::ToolButtonIconOnly);
            button->setToolTip(QStringLiteral("Startscreen"));
        } else {
            button->setText(b.caption.trimmed());
        }
        connect(button, &QToolButton::clicked, this, [this, index = static_cast<int>(i) + 1] {
            m_model.optSection_ButtonClick(index);
            sync();
        });
        m_optSection->addWidget(button);
        m_sectionButtons.push_back(button);
    }
    addToolBar(Qt::LeftToolBarArea, m_optSection);
}

void frmMDI::buildToolbar() {
    m_toolbar = new QToolBar(QStringLiteral("Toolbar1"), this);
    m_toolbar->setObjectName(QStringLiteral("Toolbar1"));
    m_toolbar->setMovable(false);
    m_toolbar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    for (const ToolButton &b : m_model.Toolbar1) {
        if (b.separator) {
            m_toolActions.push_back(m_toolbar->addSeparator());
            continue;
        }
        QAction *action = m_toolbar->addAction(b.caption);
        action->setObjectName(b.key);
        action->setToolTip(b.tip.isEmpty() ? b.caption : b.tip);
        if (b.key == QLatin1String("Lock")) action->setIcon(lockIcon());
        if (b.key == QLatin1String("Reset"))
            action->setIcon(style()->standardIcon(QStyle::SP_DialogCloseButton));
        if (b.key == QLatin1String("Find"))
            action->setIcon(style()->standardIcon(QStyle::SP_FileDialogContentsView));
        if (b.key.startsWith(QLatin1String("btn"))) action->setCheckable(true);
        connect(action, &QAction::triggered, this, [this, key = b.key] {
            m_model.Toolbar1_ButtonClick(key);
            sync();
        });
        m_toolActions.push_back(action);
    }
    addToolBar(Qt::TopToolBarArea, m_toolbar);
}

void frmMDI::buildStatusBar() {
    staBar1 = {panel(this, 200), panel(this, 90), panel(this, 60),
               panel(this, 48),  panel(this, 48), panel(this, 170)};
    staBar1[comment]->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    staBar1[caps]->setText(QStringLiteral("CAPS"));
    staBar1[num]->setText(QStringLiteral("NUM"));
    staBar1[autoshutoff]->setToolTip(QString::fromLatin1(km::frmMDI::autoshutoffTip));
    statusBar()->setObjectName(QStringLiteral("staBar1"));
    statusBar()->setSizeGripEnabled(true);
    statusBar()->addPermanentWidget(staBar1[comment], 1);
    for (int p = date; p <= autoshutoff; ++p)
        statusBar()->addPermanentWidget(staBar1[static_cast<size_t>(p)]);
}

QToolButton *frmMDI::sectionButton(int button) const {
    if (button < 1 || button > static_cast<int>(m_sectionButtons.size())) return nullptr;
    return m_sectionButtons[static_cast<size_t>(button - 1)];
}

QAction *frmMDI::toolAction(const QString &key) const {
    for (QAction *a : m_toolActions)
        if (a->objectName() == key) return a;
    return nullptr;
}

void frmMDI::syncBars() {
    m_optSection->setEnabled(m_model.optSectionEnabled);
    for (size_t i = 0; i < m_sectionButtons.size() && i < m_model.optSection.size(); ++i) {
        m_sectionButtons[i]->setChecked(m_model.optSection[i].pressed);
        m_sectionButtons[i]->setEnabled(m_model.optSection[i].enabled);
    }
    for (size_t i = 0; i < m_toolActions.size() && i < m_model.Toolbar1.size(); ++i) {
        const ToolButton &b = m_model.Toolbar1[i];
        if (b.separator) continue;
        m_toolActions[i]->setEnabled(b.enabled);
        m_toolActions[i]->setText(b.caption);
        m_toolActions[i]->setToolTip(b.tip.isEmpty() ? b.caption : b.tip);
        if (m_toolActions[i]->isCheckable()) m_toolActions[i]->setChecked(b.pressed);
    }
}

// ---- Status bar, timers, placement, section ----

void frmMDI::updateKeyLocks() {
    bool capsOn = m_capsLock, numOn = m_numLock;
    if (readKeyLocks(capsOn, numOn)) {
        m_capsLock = capsOn;
        m_numLock = numOn;
    }
    staBar1[caps]->setEnabled(m_capsLock);
    staBar1[num]->setEnabled(m_numLock);
}

void frmMDI::syncPanels() {
    const QLocale locale = QLocale::system();
    const QDateTime now = QDateTime::currentDateTime();
    staBar1[comment]->setText(m_model.panelComment);
    staBar1[date]->setText(locale.toString(now.date(), QLocale::ShortFormat));
    staBar1[time]->setText(locale.toString(now.time(), QLocale::ShortFormat));
    staBar1[autoshutoff]->setText(m_model.panelAutoshutoff);
    updateKeyLocks();
}

void frmMDI::syncTimers() {
    for (TimerMirror &t : m_timers) {
        const TimerModel &m = m_model.*(t.model);
        if (!m.Enabled) {
            t.timer->stop();
            continue;
        }
        // Enabling never restarts a running timer; a new start from disabled does.
        if (!t.timer->isActive() || t.generation != m.generation) {
            t.timer->start(m.Interval);
            t.generation = m.generation;
        }
    }
}

void frmMDI::syncPlacement() {
    const Placement &p = m_model.placement;
    if (m_placed && p.Top == m_applied.Top && p.Left == m_applied.Left && p.Width == m_applied.Width &&
        p.Height == m_applied.Height && p.positioned == m_applied.positioned)
        return;
    if (p.Width <= 0 || p.Height <= 0) return;
    const bool first = !m_placed;
    m_applied = p;
    m_placed = true;
    if (!p.positioned && first) {
        // No place kept yet: about two thirds of the screen, in its middle.
        if (const QScreen *screen = QGuiApplication::primaryScreen()) {
            const QRect area = screen->availableGeometry();
            const QSize size(area.width() * 2 / 3, area.height() * 2 / 3);
            resize(size);
            move(area.center() - QPoint(size.width() / 2, size.height() / 2));
            return;
        }
    }
    resize(p.Width / 15, p.Height / 15);
    if (p.positioned) move(p.Left / 15, p.Top / 15);
}

void frmMDI::readPlacement() {
    Placement &p = m_model.placement;
    if (isVisible()) p.shown = true;
    if (isMaximized())
        p.State = WindowState::Maximized;
    else if (isMinimized())
        p.State = WindowState::Minimized;
    else
        p.State = WindowState::Normal;
    if (p.State != WindowState::Normal) return;
    p.Left = x() * 15;
    p.Top = y() * 15;
    p.Width = width() * 15;
    p.Height = height() * 15;
}

void frmMDI::syncSection() {
    SectionWindow *model = m_model.section();
    if (model != m_viewModel) {
        if (m_view) {
            // The old view may be the sender of the click that switched: it
            // goes once control is back in the event loop, and draws nothing more.
            m_view->hide();
            m_view->deleteLater();
            m_view = nullptr;
        }
        m_viewModel = model;
        if (model) {
            m_view = CreateSectionView(*model, m_client);
            m_client->layout()->addWidget(m_view);
            m_view->show();
        }
    }
    if (m_view) m_view->sync();
}

void frmMDI::sync() {
    setWindowTitle(m_model.caption());
    setEnabled(m_model.enabled);
    syncMenus(m_model.menus());
    syncBars();
    syncPanels();
    syncTimers();
    syncPlacement();
    syncSection();
}

// ---- Events ----

void frmMDI::closeEvent(QCloseEvent *event) {
    readPlacement();
    m_model.Form_QueryUnload();
    event->accept();
}

void frmMDI::changeEvent(QEvent *event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange) readPlacement();
}

// The model always knows where the window stands, so that every way out can
// keep it.
void frmMDI::moveEvent(QMoveEvent *event) {
    QMainWindow::moveEvent(event);
    if (isVisible()) readPlacement();
}

void frmMDI::resizeEvent(QResizeEvent *event) {
    QMainWindow::resizeEvent(event);
    if (isVisible()) readPlacement();
}

bool frmMDI::eventFilter(QObject *watched, QEvent *event) {
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
        // Only events that reach a window of this program get here: activity
        // in other programs never counts.
        if (watched->isWidgetType()) SessionGuards::NoteActivity();
        break;
    default:
        break;
    }
    if (event->type() == QEvent::KeyPress && watched->isWidgetType()) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_CapsLock) m_capsLock = !m_capsLock;
        if (key == Qt::Key_NumLock) m_numLock = !m_numLock;
        if (key == Qt::Key_CapsLock || key == Qt::Key_NumLock) updateKeyLocks();
    }
    return QMainWindow::eventFilter(watched, event);
}

} // namespace km::gui
