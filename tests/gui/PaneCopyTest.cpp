// Copy in the confidential pane inside the real main window (offscreen):
// Edit > Copy and Ctrl+C take a field's value through the program's one Copy,
// marked secret and under the clipboard wipe, as the field's right-click Copy
// does.
#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPlainTextEdit>

#include "GuiSupport.h"
#include "gui/QtDialogs.h"
#include "gui/records/RecordsViews.h"
#include "gui/records/frmClassified.h"
#include "gui/shell/frmMDI.h"
#include "records/RecordsSections.h"
#include "records/frmClassified.h"
#include "shell/frmMDI.h"
#include "support/SectionFixture.h"
#include "ui/Services.h"

namespace {

class SecretClipboard : public km::ClipboardService {
public:
    bool hasText() const override { return !current.isEmpty(); }
    QString text() const override { return current; }
    void setText(const QString &text, bool isSecret) override {
        current = text;
        secret = isSecret;
    }
    void clear() override { current.clear(); }

    QString current;
    bool secret = false;
};

class PaneCopyTest : public km::test::SectionFixture {
protected:
    void SetUp() override {
        km::test::startGuiApp();
        SectionFixture::SetUp();
        km::setClipboard(&clip);
        records::RegisterSections();
        km::gui::RegisterRecordsViews(dialogs);
    }
    void TearDown() override {
        km::frmMDI::UnregisterSections();
        km::setClipboard(nullptr);
        SectionFixture::TearDown();
    }
    int buttonOf(const km::frmMDI &model, int code) {
        for (size_t i = 0; i < model.optSection.size(); ++i)
            if (model.optSection[i].code == code) return static_cast<int>(i) + 1;
        return 0;
    }

    SecretClipboard clip;
    km::gui::QtDialogs dialogs;
};

TEST_F(PaneCopyTest, EditCopyAndCtrlCTakeARecordFieldThroughTheProgramsCopy) {
    km::frmMDI model;
    km::gui::frmMDI window(model, dialogs);
    model.endProgram = [] {};
    model.GoToSection(buttonOf(model, km::frmClassified::Section));
    auto *section = dynamic_cast<km::frmClassified *>(model.section());
    ASSERT_NE(section, nullptr);
    section->newRecord = true;
    section->txtCtl = {QStringLiteral("Shop"), QStringLiteral("https://shop.example"),
                       QStringLiteral("jo.doe"), QStringLiteral("hunter2"), QString()};
    section->txtNotes = QStringLiteral("door code 4711");
    section->listSelect_Initialize(section->SaveRecord());
    model.changed();
    auto *view = qobject_cast<km::gui::frmClassified *>(window.sectionView());
    ASSERT_NE(view, nullptr);
    ASSERT_TRUE(km::test::bringToFront(window));
    QLineEdit *password = view->txtCtl[3];
    QLineEdit *user = view->txtCtl[2];
    ASSERT_EQ(password->echoMode(), QLineEdit::Password);

    struct Case {
        const char *name;
        QLineEdit *field;
        int selStart, selLength; // -1: nothing selected
        bool menu;               // Edit > Copy, else Ctrl+C
        QString copied;
    };
    const std::vector<Case> cases = {
        {"Edit > Copy of a masked field", password, -1, 0, true, "hunter2"},
        {"Ctrl+C in a masked field, some of it selected", password, 0, 3, false, "hunter2"},
        {"Edit > Copy with nothing selected", user, -1, 0, true, "jo.doe"},
        {"Ctrl+C of a selection", user, 3, 3, false, "doe"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        clip.current.clear();
        clip.secret = false;
        model.timerClipboard.setEnabled(false);
        c.field->setFocus();
        if (c.selStart < 0)
            c.field->setCursorPosition(1);
        else
            c.field->setSelection(c.selStart, c.selLength);
        if (c.menu)
            window.menuAction(QStringLiteral("mnuEditCopy"))->trigger();
        else
            QTest::keyClick(c.field, Qt::Key_C, Qt::ControlModifier);
        EXPECT_EQ(clip.current, c.copied);
        EXPECT_TRUE(clip.secret);
        EXPECT_TRUE(model.timerClipboard.Enabled);
    }
    // The notes alike; and a Copy is no edit of the record.
    view->txtNotes->setFocus();
    window.menuAction(QStringLiteral("mnuEditCopy"))->trigger();
    EXPECT_EQ(clip.current, QStringLiteral("door code 4711"));
    EXPECT_EQ(view->txtNotes->textCursor().selectedText(), QStringLiteral("door code 4711"));
    EXPECT_FALSE(section->recordChanged);
}

} // namespace
