#include <gtest/gtest.h>

#include <memory>

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include "gui/shell/ShieldFilter.h"
#include "shell/SHIELD.h"
#include "shell/frmMDI.h"

namespace {

void ensureApplication() {
    static int argc = 1;
    static char name[] = "ShieldFilterTest";
    static char *argv[] = {name, nullptr};
    if (!QApplication::instance()) new QApplication(argc, argv);
}

class ShieldFilterTest : public ::testing::Test {
protected:
    void SetUp() override {
        SHIELD::state() = {};
        box = new QLineEdit(&window);
        memo = new QPlainTextEdit(&window);
        button = new QPushButton(QStringLiteral("OK"), &window);
        auto *layout = new QVBoxLayout(&window);
        layout->addWidget(box);
        layout->addWidget(memo);
        layout->addWidget(button);
        km::gui::InstallShield(&window);
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        box->setFocus();
    }
    void TearDown() override { SHIELD::state() = {}; }

    // A key as the platform delivers it to the focused control.
    void send(QEvent::Type type, int key, Qt::KeyboardModifiers mods, const QString &text = QString()) {
        QKeyEvent e(type, key, mods, text);
        QApplication::sendEvent(QApplication::focusWidget(), &e);
    }
    void click(int key, Qt::KeyboardModifiers mods, const QString &text) {
        send(QEvent::KeyPress, key, mods, text);
        send(QEvent::KeyRelease, key, mods, text);
    }

    // Made after the application exists.
    std::unique_ptr<QWidget> windowPtr = (ensureApplication(), std::make_unique<QWidget>());
    QWidget &window = *windowPtr;
    QLineEdit *box = nullptr;
    QPlainTextEdit *memo = nullptr;
    QPushButton *button = nullptr;
};

TEST_F(ShieldFilterTest, TypedTextReachesTheBoxThroughTheShield) {
    box->setText(QStringLiteral("hello world"));
    box->setSelection(6, 5);
    click(Qt::Key_A, Qt::NoModifier, QStringLiteral("a"));
    send(QEvent::KeyPress, Qt::Key_Shift, Qt::ShiftModifier);
    click(Qt::Key_B, Qt::ShiftModifier, QStringLiteral("B"));
    send(QEvent::KeyRelease, Qt::Key_Shift, Qt::NoModifier);
    click(Qt::Key_1, Qt::NoModifier, QStringLiteral("1"));
    click(Qt::Key_B, Qt::ControlModifier, QStringLiteral("\x02"));
    EXPECT_EQ(box->text(), QStringLiteral("hello aB1b")) << "Ctrl+B writes a plain b";
    EXPECT_EQ(box->cursorPosition(), 10);
    EXPECT_FALSE(box->hasSelectedText());

    click(Qt::Key_Backspace, Qt::NoModifier, QString());
    EXPECT_EQ(box->text(), QStringLiteral("hello aB1")) << "other keys work as usual";

    button->setFocus();
    click(Qt::Key_K, Qt::NoModifier, QStringLiteral("k"));
    EXPECT_EQ(box->text(), QStringLiteral("hello aB1")) << "a letter on a button is gone";
}

// What the shield writes is the box's own edit: undo takes it back, redo
// brings it again, and select all selects it, in a line as in a memo, on any
// platform's key scheme (plain X11's has no Ctrl+Y).
TEST_F(ShieldFilterTest, SelectAllUndoAndRedoAreTheBoxsOwnCommands) {
    const auto typeAbc = [this] {
        for (const char *letter : {"a", "b", "c"})
            click(Qt::Key_A + (letter[0] - 'a'), Qt::NoModifier, QString::fromLatin1(letter));
    };
    const auto text = [](QWidget *w) {
        auto *line = qobject_cast<QLineEdit *>(w);
        return line ? line->text() : static_cast<QPlainTextEdit *>(w)->toPlainText();
    };
    for (QWidget *target : {static_cast<QWidget *>(box), static_cast<QWidget *>(memo)}) {
        SCOPED_TRACE(target->metaObject()->className());
        target->setFocus();
        typeAbc();
        ASSERT_EQ(text(target), QStringLiteral("abc"));
        click(Qt::Key_Z, Qt::ControlModifier, QStringLiteral("\x1a"));
        EXPECT_TRUE(QStringLiteral("ab").startsWith(text(target)))
            << "undone: " << text(target).toStdString();
        click(Qt::Key_Y, Qt::ControlModifier, QStringLiteral("\x19"));
        EXPECT_EQ(text(target), QStringLiteral("abc"));
        click(Qt::Key_Z, Qt::ControlModifier, QStringLiteral("\x1a"));
        send(QEvent::KeyPress, Qt::Key_Shift, Qt::ShiftModifier | Qt::ControlModifier);
        click(Qt::Key_Z, Qt::ShiftModifier | Qt::ControlModifier, QStringLiteral("\x1a"));
        send(QEvent::KeyRelease, Qt::Key_Shift, Qt::ControlModifier);
        EXPECT_EQ(text(target), QStringLiteral("abc")) << "Ctrl+Shift+Z redoes too";
        click(Qt::Key_A, Qt::ControlModifier, QStringLiteral("\x01"));
        click(Qt::Key_X, Qt::NoModifier, QStringLiteral("x"));
        EXPECT_EQ(text(target), QStringLiteral("x")) << "the x replaced all that select all chose";
    }
}

TEST_F(ShieldFilterTest, CopyArmsTheClipboardWipeAndStillCopies) {
    km::frmMDI main;
    km::gui::SetShieldShell(&main);
    main.timerClipboard.setEnabled(false);
    box->setText(QStringLiteral("secret"));
    box->setSelection(0, 3);
    send(QEvent::KeyPress, Qt::Key_Control, Qt::ControlModifier);
    click(Qt::Key_C, Qt::ControlModifier, QStringLiteral("\x03"));
    EXPECT_TRUE(main.timerClipboard.Enabled);
    EXPECT_EQ(box->text(), QStringLiteral("secret"));
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("sec"));
    km::gui::SetShieldShell(nullptr);
}

} // namespace

// The font library keeps a cache for the life of the process; it is not ours to free.
extern "C" __attribute__((weak)) const char *__lsan_default_suppressions() {
    return "leak:libfontconfig\n";
}
