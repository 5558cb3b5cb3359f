// Preferences on a display (offscreen): what is typed in its shielded boxes
// reaches the model, which OK then stores.
#include <gtest/gtest.h>

#include <QLineEdit>
#include <QTabWidget>

#include "GuiSupport.h"
#include "gui/shell/frmOptions.h"
#include "shell/SHIELD.h"
#include "shell/frmOptions.h"

namespace {

class PreferencesWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        km::test::startGuiApp();
        SHIELD::state() = {};
    }
    void TearDown() override { SHIELD::state() = {}; }
};

// The shield writes each key into the box itself; the model must see it all
// the same, in the PIN box as in a field name.
TEST_F(PreferencesWindowTest, TextTypedThroughTheShieldReachesTheModel) {
    km::frmOptions model;
    model.PinFrameVisible = true;
    model.txtUserDefined[1] = QStringLiteral("Shoe");
    km::gui::frmOptions view(model);
    view.sync();
    ASSERT_TRUE(km::test::bringToFront(view));

    view.SSTab1->setCurrentIndex(km::frmOptions::TabPin);
    view.PIN->setFocus();
    QTest::keyClicks(view.PIN, QStringLiteral("k4711"));
    EXPECT_EQ(model.PIN, QStringLiteral("k4711"));

    view.SSTab1->setCurrentIndex(km::frmOptions::TabLists);
    QLineEdit *field = view.txtUserDefined[1];
    field->setFocus();
    field->end(false);
    QTest::keyClicks(field, QStringLiteral(" size"));
    EXPECT_EQ(model.txtUserDefined[1], QStringLiteral("Shoe size"));
    EXPECT_EQ(field->text(), QStringLiteral("Shoe size"));

    // The model's own redraw is no edit: it leaves the model as it is.
    model.PIN = QStringLiteral("1234");
    view.sync();
    EXPECT_EQ(view.PIN->text(), QStringLiteral("1234"));
    EXPECT_EQ(model.PIN, QStringLiteral("1234"));
}

} // namespace
