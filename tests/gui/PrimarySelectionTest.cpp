// The desktop's selection (X11's PRIMARY) on a real display. The offscreen
// platform has no selection, so under ctest these skip; they are meant to run
// under Xvfb on the xcb platform:
//   QT_QPA_PLATFORM=xcb xvfb-run -a test_gui --gtest_filter='PrimarySelectionTest.*'
// The rules that decide when the selection is emptied run everywhere, in the
// model tests (the wipe, an editor closing).
#include <gtest/gtest.h>

#include <QClipboard>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include "GuiSupport.h"
#include "gui/Controls.h"
#include "gui/QtServices.h"

namespace {

class PrimarySelectionTest : public ::testing::Test {
protected:
    void SetUp() override {
        km::test::startGuiApp();
        if (!clipboard()->supportsSelection()) GTEST_SKIP() << "this platform has no selection";
    }
    static QClipboard *clipboard() { return QGuiApplication::clipboard(); }
    static QString primary() { return clipboard()->text(QClipboard::Selection); }
};

TEST_F(PrimarySelectionTest, OurSelectionIsOverwrittenThenClearedAndAnotherProgramsStays) {
    QStringList seen;
    QObject listening; // the connection ends with the test
    QObject::connect(clipboard(), &QClipboard::selectionChanged, &listening, [&seen] { seen << primary(); });
    clipboard()->setText(QStringLiteral("pin 4711"), QClipboard::Selection);
    km::gui::QtClipboard service;
    service.clearSelection();
    EXPECT_FALSE(clipboard()->ownsSelection());
    EXPECT_EQ(primary(), QString());
    ASSERT_GE(seen.size(), 3);
    EXPECT_EQ(seen.at(1).size(), 8) << "overwritten with a text of its length";
    EXPECT_NE(seen.at(1), QStringLiteral("pin 4711"));

    // clear() takes both.
    clipboard()->setText(QStringLiteral("copied"));
    clipboard()->setText(QStringLiteral("selected"), QClipboard::Selection);
    service.clear();
    EXPECT_EQ(clipboard()->text(), QString());
    EXPECT_EQ(primary(), QString());
}

// A box selects by keys or the mouse and hands the selection to PRIMARY; a
// box that shows a record's value shows its selection but hands nothing on.
TEST_F(PrimarySelectionTest, ARecordFieldsSelectionNeverStaysInPrimary) {
    QWidget window;
    auto *open = new QLineEdit(QStringLiteral("open text"), &window);
    auto *field = new QLineEdit(QStringLiteral("hunter2"), &window);
    auto *openNotes = new QPlainTextEdit(QStringLiteral("open notes"), &window);
    auto *notes = new QPlainTextEdit(QStringLiteral("door code 4711"), &window);
    km::gui::showsRecordValue(field);
    km::gui::showsRecordValue(notes);
    auto *layout = new QVBoxLayout(&window);
    for (QWidget *w : {static_cast<QWidget *>(open), static_cast<QWidget *>(field),
                       static_cast<QWidget *>(openNotes), static_cast<QWidget *>(notes)})
        layout->addWidget(w);
    ASSERT_TRUE(km::test::bringToFront(window));

    struct Case {
        QWidget *box;
        QString text;
        bool guarded;
    };
    const std::vector<Case> cases = {{open, QStringLiteral("open text"), false},
                                     {field, QStringLiteral("hunter2"), true},
                                     {openNotes, QStringLiteral("open notes"), false},
                                     {notes, QStringLiteral("door code 4711"), true}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.text.toStdString());
        clipboard()->clear(QClipboard::Selection);
        c.box->setFocus();
        auto *area = qobject_cast<QPlainTextEdit *>(c.box);
        const auto selected = [&] {
            return area ? area->textCursor().selectedText() : static_cast<QLineEdit *>(c.box)->selectedText();
        };
        // By keys: Shift+End from the start.
        QTest::keyClick(c.box, Qt::Key_Home, area ? Qt::ControlModifier : Qt::NoModifier);
        QTest::keyClick(c.box, Qt::Key_End,
                        area ? Qt::ShiftModifier | Qt::ControlModifier : Qt::ShiftModifier);
        EXPECT_EQ(selected(), c.text);
        EXPECT_EQ(primary(), c.guarded ? QString() : c.text);

        // By the mouse: a double click on the first word, then the release.
        clipboard()->clear(QClipboard::Selection);
        QWidget *target = area ? area->viewport() : c.box;
        const QPoint first(8, area ? 8 : c.box->height() / 2);
        QTest::mouseDClick(target, Qt::LeftButton, {}, first);
        QTest::mouseRelease(target, Qt::LeftButton, {}, first);
        const QString word = c.text.section(QLatin1Char(' '), 0, 0);
        EXPECT_EQ(selected(), word) << "the box still shows what is selected";
        EXPECT_EQ(primary(), c.guarded ? QString() : word);
    }
}

} // namespace
