// The windows on a display (offscreen): the main window over its model, the
// section switch, the modal frame's way of ending the program, the clipboard.
#include <gtest/gtest.h>

#include <functional>

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>

#include "gui/QtDialogs.h"
#include "gui/QtServices.h"
#include "gui/shell/frmMDI.h"
#include "gui/shell/frmSplash.h"
#include "gui/store/frmPW.h"
#include "shell/frmMDI.h"
#include "support/ScriptedDialogs.h"

namespace {

QApplication &app() {
    static int argc = 1;
    static char name[] = "test_gui";
    static char *argv[] = {name, nullptr};
    static QApplication instance(argc, argv);
    return instance;
}

class MainWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        app();
        model.endProgram = [] {};
    }
    km::frmMDI model;
    km::gui::QtDialogs dialogs;
};

TEST_F(MainWindowTest, ComesUpWithMenusBarsAndPanels) {
    km::gui::frmMDI window(model, dialogs);
    window.show();
    // The widget draws the model's tree as it stands: every item, its
    // caption and whether it shows (the captions themselves are the model's
    // test's business).
    int drawn = 0;
    std::function<void(const std::vector<km::MenuItem> &)> walk =
        [&](const std::vector<km::MenuItem> &items) {
            for (const km::MenuItem &m : items) {
                if (!m.separator) {
                    QAction *action = window.menuAction(m.name, m.index);
                    ASSERT_NE(action, nullptr) << m.name.toStdString() << m.index;
                    EXPECT_EQ(action->text(), m.caption) << m.name.toStdString();
                    EXPECT_EQ(action->isVisible(), m.visible) << m.name.toStdString();
                    ++drawn;
                }
                walk(m.children);
            }
        };
    walk(model.menus());
    EXPECT_GT(drawn, 100);
    for (int b = 1; b <= 8; ++b)
        EXPECT_NE(window.sectionButton(b), nullptr);
    EXPECT_EQ(window.sectionButton(9), nullptr);
    EXPECT_EQ(window.staBar1[km::gui::frmMDI::autoshutoff]->toolTip(),
              QStringLiteral("Idle Countdown to Shutdown"));
    EXPECT_EQ(window.staBar1[km::gui::frmMDI::caps]->text(), QStringLiteral("CAPS"));

    // The menus follow the model's state on its change notification.
    model.SetDatabaseMenus(false);
    model.changed();
    EXPECT_FALSE(window.menuAction(QStringLiteral("mnuFileCloseDB"))->isEnabled());
    EXPECT_TRUE(window.menuAction(QStringLiteral("mnuFileNew"))->isEnabled());
}

TEST_F(MainWindowTest, SectionSwitchShowsTheSectionsWindow) {
    km::gui::frmMDI window(model, dialogs);
    window.show();
    model.optSection_ButtonClick(4); // Memo
    window.sync();
    ASSERT_NE(window.sectionView(), nullptr);
    EXPECT_NE(qobject_cast<km::gui::frmSectionPlaceholder *>(window.sectionView()), nullptr);
    const auto labels = window.sectionView()->findChildren<QLabel *>();
    ASSERT_FALSE(labels.isEmpty());
    EXPECT_TRUE(labels.first()->text().contains(QStringLiteral("Memo")));

    model.GoToSection(8);
    window.sync();
    EXPECT_NE(qobject_cast<km::gui::frmSplash *>(window.sectionView()), nullptr);
}

// A model command that ends the program inside a slot: the dialog closes and
// the end comes out of runModal, not through Qt's event loop.
TEST(ModelDialogTest, ProgramEndInASlotLeavesAfterTheDialog) {
    app();
    km::test::ScriptedDialogs script; // message 84 answered with Cancel ends the program
    script.answer(km::Answer::Cancel);
    km::frmPW model;
    model.chkConfirm = true;
    model.Form_Load();
    km::gui::frmPW window(model);
    const auto enter = [&window](const QString &text) {
        window.txtInput->setText(text);
        window.cmdOK->click();
    };
    QTimer::singleShot(0, &window, [&] {
        enter(QStringLiteral("first entry 1"));
        enter(QStringLiteral("second entry 2"));
    });
    try {
        window.runModal();
        FAIL() << "the program end did not come out";
    } catch (const km::ProgramEnd &end) {
        EXPECT_EQ(end.message, 84);
    }
    EXPECT_FALSE(window.isVisible());
}

TEST(QtClipboardTest, SecretTextIsMarkedForClipboardManagers) {
    app();
    km::gui::QtClipboard clipboard;
    clipboard.setText(QStringLiteral("account 1234"), true);
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(data->text(), QStringLiteral("account 1234"));
    EXPECT_EQ(data->data(QStringLiteral("x-kde-passwordManagerHint")), QByteArray("secret"));
    clipboard.setText(QStringLiteral("plain"), false);
    EXPECT_FALSE(
        QGuiApplication::clipboard()->mimeData()->hasFormat(QStringLiteral("x-kde-passwordManagerHint")));
    clipboard.clear();
    EXPECT_FALSE(clipboard.hasText());
}

} // namespace
