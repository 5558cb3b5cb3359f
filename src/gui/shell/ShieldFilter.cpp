#include "gui/shell/ShieldFilter.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTableView>
#include <QTextEdit>
#include <QTreeView>

#include "shell/SHIELD.h"
#include "shell/SectionContext.h"

namespace km::gui {

namespace {

// The text box that has the focus, as the shield writes into it: a line edit
// (an editable combo box's included) or a text edit; nullptr for any other
// control or a read-only box.
QWidget *textBoxOf(QWidget *focus) {
    if (auto *combo = qobject_cast<QComboBox *>(focus)) focus = combo->lineEdit();
    if (auto *line = qobject_cast<QLineEdit *>(focus)) return line->isReadOnly() ? nullptr : line;
    if (auto *text = qobject_cast<QTextEdit *>(focus)) return text->isReadOnly() ? nullptr : text;
    if (auto *plain = qobject_cast<QPlainTextEdit *>(focus)) return plain->isReadOnly() ? nullptr : plain;
    return nullptr;
}

SHIELD::TextControl readControl(QWidget *box) {
    SHIELD::TextControl c;
    if (auto *line = qobject_cast<QLineEdit *>(box)) {
        c.Text = line->text();
        c.SelStart = line->hasSelectedText() ? line->selectionStart() : line->cursorPosition();
        c.SelLength = line->hasSelectedText() ? line->selectionLength() : 0;
        return c;
    }
    QTextCursor cursor = qobject_cast<QTextEdit *>(box) ? qobject_cast<QTextEdit *>(box)->textCursor()
                                                        : qobject_cast<QPlainTextEdit *>(box)->textCursor();
    c.Text = qobject_cast<QTextEdit *>(box) ? qobject_cast<QTextEdit *>(box)->toPlainText()
                                            : qobject_cast<QPlainTextEdit *>(box)->toPlainText();
    c.SelStart = cursor.selectionStart();
    c.SelLength = cursor.selectionEnd() - cursor.selectionStart();
    return c;
}

// The character goes in as the box's own insert over the selection, the same
// text as the decision's, so that the box's undo and redo know it and its
// change signal fires as for a typed key. A text edit keeps its document, its
// formatting and the view's position.
void writeControl(QWidget *box, const SHIELD::TextControl &before, const SHIELD::ShieldAction &a) {
    if (auto *line = qobject_cast<QLineEdit *>(box)) {
        line->setSelection(before.SelStart, before.SelLength);
        line->insert(a.text);
        return;
    }
    auto *text = qobject_cast<QTextEdit *>(box);
    auto *plain = qobject_cast<QPlainTextEdit *>(box);
    QTextCursor cursor = text ? text->textCursor() : plain->textCursor();
    cursor.setPosition(before.SelStart);
    cursor.setPosition(before.SelStart + before.SelLength, QTextCursor::KeepAnchor);
    cursor.insertText(a.text);
    if (text)
        text->setTextCursor(cursor);
    else
        plain->setTextCursor(cursor);
}

template <class Box> void runOn(Box *box, SHIELD::EditCommand command) {
    switch (command) {
    case SHIELD::EditCommand::SelectAll:
        box->selectAll();
        break;
    case SHIELD::EditCommand::Undo:
        box->undo();
        break;
    case SHIELD::EditCommand::Redo:
        box->redo();
        break;
    case SHIELD::EditCommand::None:
        break;
    }
}

void runCommand(QWidget *box, SHIELD::EditCommand command) {
    if (auto *line = qobject_cast<QLineEdit *>(box))
        runOn(line, command);
    else if (auto *text = qobject_cast<QTextEdit *>(box))
        runOn(text, command);
    else if (auto *plain = qobject_cast<QPlainTextEdit *>(box))
        runOn(plain, command);
}

Shell *g_shell = nullptr;

void armWipe() {
    if (g_shell) g_shell->armClipboardWipe();
}

class ShieldFilter : public QObject {
public:
    // root: a whole top-level window, or one pane of it (whole false).
    ShieldFilter(QWidget *root, SHIELD::HookProc atLoad, bool whole)
        : QObject(root), m_root(root), m_whole(whole) {
        SHIELD::HookAtLoad(m_hook, atLoad);
        qApp->installEventFilter(this);
    }
    ~ShieldFilter() override { SHIELD::HookAtUnload(m_hook); }

protected:
    bool eventFilter(QObject *obj, QEvent *ev) override {
        if (m_root.isNull()) return false;
        // One filter on the application sees the window's own events and
        // those of its controls alike.
        QWidget *window = m_root->window();
        if (obj == window) frontChange(ev->type());
        switch (ev->type()) {
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::ShortcutOverride:
            break;
        default:
            return false;
        }
        if (m_forwarding || !obj->isWidgetType() || !window->isActiveWindow()) return false;
        if (!covers(static_cast<QWidget *>(obj))) return false;
        if (m_hook.installed == SHIELD::HookProc::None) return false;
        return key(static_cast<QWidget *>(obj), static_cast<QKeyEvent *>(ev));
    }

private:
    bool covers(const QWidget *w) const {
        return m_whole ? w->window() == m_root.data() : w == m_root.data() || m_root->isAncestorOf(w);
    }

    void frontChange(QEvent::Type type) {
        if (type == QEvent::WindowActivate)
            SHIELD::TimerHook(m_hook, true);
        else if (type == QEvent::WindowDeactivate || type == QEvent::Hide)
            SHIELD::TimerHook(m_hook, false);
        else
            return;
        if (!m_whole) return;
        const bool grab = m_hook.installed == SHIELD::HookProc::Shield;
        if (grab && QWidget::keyboardGrabber() != m_root.data())
            m_root->grabKeyboard();
        else if (!grab && QWidget::keyboardGrabber() == m_root.data())
            m_root->releaseKeyboard();
    }

    SHIELD::KeyEvent eventOf(const QKeyEvent &ke) {
        SHIELD::KeyEvent e;
        const bool press = ke.type() != QEvent::KeyRelease;
        const bool alt = ke.modifiers() & Qt::AltModifier;
        e.message =
            alt ? (press ? SHIELD::SysKeyDown : SHIELD::SysKeyUp) : (press ? SHIELD::KeyDown : SHIELD::KeyUp);
        e.vkCode = VirtualKeyOf(ke);
        e.ctrlDown = ke.modifiers() & Qt::ControlModifier;
        // Qt tells no lock state; a letter tells it: its case against Shift.
        if (e.vkCode >= 65 && e.vkCode <= 90 && !ke.text().isEmpty())
            m_capsOn = ke.text().at(0).isUpper() != bool(ke.modifiers() & Qt::ShiftModifier);
        e.capsOn = m_capsOn;
        return e;
    }

    bool key(QWidget *receiver, QKeyEvent *ke) {
        const SHIELD::KeyEvent e = eventOf(*ke);
        if (ke->type() == QEvent::ShortcutOverride) {
            // A text key is the text box's, never a shortcut's (Ctrl+A, Z
            // and Y the box's commands); Alt keys stay access keys, Ctrl+X, C
            // and V go their usual way.
            if (m_hook.installed != SHIELD::HookProc::Shield || e.message != SHIELD::KeyDown ||
                !SHIELD::IsTextKey(e.vkCode) || SHIELD::IsClipboardKey(e))
                return false;
            ke->accept();
            return true;
        }
        QWidget *window = m_root->window();
        QWidget *focus = window->focusWidget() ? window->focusWidget() : window;
        // A pane guards its own controls only.
        if (!m_whole && !covers(focus)) return false;
        if (m_hook.installed == SHIELD::HookProc::Watch) {
            if (SHIELD::WatchKeyProc(e).armWipe) armWipe();
            return false;
        }
        QWidget *box = textBoxOf(focus);
        const SHIELD::TextControl before = box ? readControl(box) : SHIELD::TextControl{};
        const SHIELD::ShieldAction a = SHIELD::ShieldKeyProc(e, box ? &before : nullptr);
        if (a.armWipe) armWipe();
        if (a.swallow && a.command != SHIELD::EditCommand::None) {
            runCommand(box, a.command);
            return true;
        }
        if (a.swallow && a.write) {
            writeControl(box, before, a);
            return true;
        }
        // Numbers and dates in a spin box hold no secret; swallowing their
        // digits would only make them untypeable.
        if (a.swallow && !qobject_cast<QAbstractSpinBox *>(focus)) return true;
        if (m_whole && receiver == m_root.data() && focus != m_root.data()) {
            // Under the grab every key arrives at the window itself: hand the
            // rest to the control that has the focus (or an open popup).
            QWidget *target = QApplication::activePopupWidget() ? QApplication::activePopupWidget() : focus;
            m_forwarding = true;
            QCoreApplication::sendEvent(target, ke);
            m_forwarding = false;
            return true;
        }
        return false;
    }

    QPointer<QWidget> m_root;
    bool m_whole = true;
    SHIELD::WindowHook m_hook;
    bool m_capsOn = false;
    bool m_forwarding = false;
};

int symbolKey(int qtKey, bool shift) {
    struct Symbol {
        char plain, shifted;
        int vk;
    };
    static constexpr Symbol symbols[] = {
        {'0', ')', 48},   {'1', '!', 49},  {'2', '@', 50},  {'3', '#', 51},   {'4', '$', 52},
        {'5', '%', 53},   {'6', '^', 54},  {'7', '&', 55},  {'8', '*', 56},   {'9', '(', 57},
        {';', ':', 186},  {'=', '+', 187}, {',', '<', 188}, {'-', '_', 189},  {'.', '>', 190},
        {'/', '?', 191},  {'`', '~', 192}, {'[', '{', 219}, {'\\', '|', 220}, {']', '}', 221},
        {'\'', '"', 222},
    };
    for (const Symbol &s : symbols)
        if (qtKey == (shift ? s.shifted : s.plain)) return s.vk;
    return 0;
}

// The one hooked control and what it was before.
struct Hooked {
    QPointer<QWidget> control;
    QPointer<QWidget> viewport;
    Qt::ContextMenuPolicy policy = Qt::DefaultContextMenu;
    Qt::ContextMenuPolicy viewportPolicy = Qt::DefaultContextMenu;
    QPointer<QHeaderView> header;
    QList<QHeaderView::ResizeMode> modes;
};
Hooked &hooked() {
    static Hooked h;
    return h;
}

QHeaderView *headerOf(QWidget *control) {
    if (auto *tree = qobject_cast<QTreeView *>(control)) return tree->header();
    if (auto *table = qobject_cast<QTableView *>(control)) return table->horizontalHeader();
    return nullptr;
}

} // namespace

void SetShieldShell(Shell *shell) {
    g_shell = shell;
}

void InstallShield(QWidget *window) {
    if (window) new ShieldFilter(window, SHIELD::HookProc::Shield, true);
}

void InstallPaneShield(QWidget *pane) {
    if (pane) new ShieldFilter(pane, SHIELD::HookProc::Shield, false);
}

void InstallWatch(QWidget *window) {
    if (window) new ShieldFilter(window, SHIELD::HookProc::Watch, true);
}

int VirtualKeyOf(const QKeyEvent &event) {
    const int key = event.key();
    const bool shift = event.modifiers() & Qt::ShiftModifier;
    if (event.modifiers() & Qt::KeypadModifier)
        return key >= Qt::Key_0 && key <= Qt::Key_9 ? 96 + key - Qt::Key_0 : 0;
    // The extra key beside the left Shift of European keyboards (X11 key code 94).
    if (event.nativeScanCode() == 94) return SHIELD::VkOem102;
    if (key >= Qt::Key_A && key <= Qt::Key_Z) return key;
    switch (key) {
    case Qt::Key_Shift:
        return SHIELD::VkLeftShift;
    case Qt::Key_Control:
        return SHIELD::VkCtrl;
    case Qt::Key_CapsLock:
        return SHIELD::VkCapsLock;
    case Qt::Key_Space:
        return SHIELD::VkSpace;
    default:
        return key < 0x80 ? symbolKey(key, shift) : 0;
    }
}

void HookControl(QWidget *control) {
    UnhookControl();
    if (!control) return;
    Hooked &h = hooked();
    h.control = control;
    h.policy = control->contextMenuPolicy();
    if (SHIELD::HookedControlReply(SHIELD::ContextMenu, 0) == 1) {
        control->setContextMenuPolicy(Qt::PreventContextMenu);
        if (auto *area = qobject_cast<QAbstractScrollArea *>(control)) {
            h.viewport = area->viewport();
            h.viewportPolicy = area->viewport()->contextMenuPolicy();
            area->viewport()->setContextMenuPolicy(Qt::PreventContextMenu);
        }
    }
    if (QHeaderView *header = headerOf(control);
        header && SHIELD::HookedControlReply(SHIELD::Notify, SHIELD::HeaderBeginTrack) == 1) {
        // Fixed sections answer neither a drag of a divider nor its double click.
        h.header = header;
        for (int i = 0; i < header->count(); ++i)
            h.modes.append(header->sectionResizeMode(i));
        header->setSectionResizeMode(QHeaderView::Fixed);
    }
}

void UnhookControl() {
    Hooked &h = hooked();
    if (h.control) h.control->setContextMenuPolicy(h.policy);
    if (h.viewport) h.viewport->setContextMenuPolicy(h.viewportPolicy);
    if (h.header)
        for (int i = 0; i < h.modes.size() && i < h.header->count(); ++i)
            h.header->setSectionResizeMode(i, h.modes.at(i));
    h = Hooked{};
}

} // namespace km::gui
