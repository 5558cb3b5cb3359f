// The address book's window offscreen: the contact column, the pane's
// labels in bold, and the word under the pointer mapped between the box's
// line ends and the model's.
#include <gtest/gtest.h>

#include <QListWidget>
#include <QTextEdit>

#include "GuiSupport.h"
#include "address/frmAddress.h"
#include "gui/address/frmAddress.h"
#include "support/SectionFixture.h"

namespace {

namespace A = km::Address;

class AddressViewsTest : public km::test::SectionFixture {
protected:
    void SetUp() override {
        km::test::startGuiApp();
        SectionFixture::SetUp();
    }
};

} // namespace

TEST_F(AddressViewsTest, TheListShowsTheContactAndThePaneMapsAWordToTheModel) {
    km::frmAddress model(context());
    model.Form_Load();
    model.record[A::LastName] = "Berg";
    model.record[A::CompanyName] = "Example Ltd";
    model.record[A::Com1] = "030 1234";
    model.record[A::Com2] = "anna@example.org";
    model.record[A::ComLabel2] = "5";
    model.record[A::Private] = "False";
    A::NormaliseSlots(model.record);
    model.fileAs = "Berg";
    model.newRecord = true;
    model.listSelect_Initialize(model.SaveRecord());

    km::gui::frmAddress view(model, nullptr);
    view.sync();
    ASSERT_EQ(view.ListSelect->count(), 1);
    EXPECT_EQ(view.ListSelect->item(0)->text(), "Berg");
    EXPECT_EQ(view.ListSelect->item(0)->data(Qt::UserRole + 7).toString(), "030 1234 (W)");
    EXPECT_TRUE(view.showContact->toHtml().contains("font-weight:700")) << "labels in bold";

    // The caret in the mail address of the box: the model's text has CR LF
    // line ends before it, the box LF alone.
    const QString shown = view.showContact->toPlainText();
    const int at = static_cast<int>(shown.indexOf("example.org"));
    ASSERT_GT(at, 0);
    QTextCursor c = view.showContact->textCursor();
    c.setPosition(at);
    view.showContact->setTextCursor(c);
    km::TextActions::Selection box = view.paneSelection();
    EXPECT_EQ(box.text.mid(box.selStart, 11), "example.org");
    ASSERT_TRUE(model.paneMenu.ShowActionMenu(box));
    EXPECT_EQ(model.paneMenu.ClickedText, "anna@example.org");
    EXPECT_TRUE(model.paneMenu.menu.sendMail);
    view.setPaneSelection(box);
    EXPECT_EQ(view.showContact->textCursor().selectedText(), "anna@example.org");
}
