#include "screenshots/Screenshots.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>

#include "gui/shell/frmMDI.h"
#include "gui/shell/frmOptions.h"
#include "gui/shell/frmTip.h"
#include "gui/store/frmEditCategories.h"
#include "gui/store/frmMenuDB.h"
#include "gui/store/frmPW.h"
#include "records/frmClassified.h"
#include "records/frmNotepad.h"
#include "records/frmTodo.h"
#include "calendar/CALENDAR.h"
#include "calendar/frmDiary.h"
#include "shell/frmMDI.h"
#include "store/CATEGORIES.h"
#include "store/Users.h"
#include "store/db.h"
#include "store/frmEditCategories.h"
#include "store/frmMenuDB.h"
#include "store/frmPW.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"

namespace km::gui {

namespace {

class Photographer : public QObject {
public:
    QString folder, passphrase;
    QString nextPw = QStringLiteral("passphrase-new"); // the name of the next frmPW picture
    QString pwAnswer;                                  // empty: the passphrase
    bool cancelPw = false;                             // picture only, then Cancel
    int messages = 0;

    void save(QWidget *w, const QString &name) {
        QApplication::processEvents();
        w->grab().save(QDir(folder).filePath(name + QStringLiteral(".png")));
    }

    bool eventFilter(QObject *watched, QEvent *event) override {
        if (event->type() == QEvent::Show && watched->isWidgetType()) {
            auto *w = static_cast<QWidget *>(watched);
            if (w->isWindow() && qobject_cast<QDialog *>(w))
                QTimer::singleShot(400, this, [this, d = QPointer<QWidget>(w)] {
                    if (d && d->isVisible()) answer(d);
                });
        }
        return false;
    }

    void answer(QWidget *d) {
        if (auto *pw = qobject_cast<frmPW *>(d)) {
            pw->txtInput->setText(pwAnswer.isEmpty() ? passphrase : pwAnswer);
            save(pw, nextPw);
            nextPw = QStringLiteral("passphrase-confirm");
            if (cancelPw) {
                pw->cmdCancel->click();
                return;
            }
            pw->cmdOK->click();
            // The confirmation stays in the same window.
            QTimer::singleShot(400, this, [this, d = QPointer<QWidget>(pw)] {
                if (d && d->isVisible()) answer(d);
            });
        } else if (auto *box = qobject_cast<QMessageBox *>(d)) {
            save(box, QStringLiteral("message-%1").arg(++messages));
            box->defaultButton()->click();
        } else if (auto *tip = qobject_cast<frmTip *>(d)) {
            save(tip, QStringLiteral("tip"));
            tip->cmdOK->click();
        } else if (auto *options = qobject_cast<frmOptions *>(d)) {
            for (int tab = 0; tab < options->SSTab1->count(); ++tab) {
                nextPw = QStringLiteral("passphrase-verify");
                options->SSTab1->setCurrentIndex(tab);
                save(options, QStringLiteral("preferences-%1").arg(options->SSTab1->tabText(tab).toLower()));
            }
            options->cmdCancel->click();
        } else if (auto *menu = qobject_cast<frmMenuDB *>(d)) {
            save(menu, QStringLiteral("menudb"));
            menu->cmdCancel->click();
        } else if (auto *cats = qobject_cast<frmEditCategories *>(d)) {
            save(cats, QStringLiteral("categories"));
            cats->cmdEsc->click();
        } else if (auto *dialog = qobject_cast<QDialog *>(d)) {
            save(dialog, dialog->objectName().isEmpty() ? QStringLiteral("dialog") : dialog->objectName());
            dialog->reject();
        }
    }
};

Photographer *g_photographer = nullptr;

} // namespace

void StartScreenshots(const QString &folder, const QString &passphrase) {
    QDir().mkpath(folder);
    g_photographer = new Photographer;
    g_photographer->folder = folder;
    g_photographer->passphrase = passphrase;
    qApp->installEventFilter(g_photographer);
}

namespace {

// The task list with overdue, completed and dateless tasks and its editor,
// then the diary with a week of text, by week and by day.
void TourTasksAndDiary(frmMDI &window, km::frmMDI &model) {
    Photographer &p = *g_photographer;
    model.optSection_ButtonClick(2);
    if (auto *tasks = dynamic_cast<km::frmTodo *>(model.section())) {
        const qint64 today = CALENDAR::DayNumber(QDate::currentDate());
        struct Sample {
            const char *text;
            qint64 due;
            int priority;
            qint64 completed;
            const char *memo;
        };
        const Sample samples[] = {{"Renew the passport", today - 3, 0, 0, "Photos first"},
                                  {"Call the plumber", today, 1, 0, ""},
                                  {"Book the summer holiday", today + 12, 2, 0, ""},
                                  {"Read the lease", 0, 0, 0, "Clause 7"},
                                  {"Sort the photo albums", 0, 2, 0, ""},
                                  {"Pay the car insurance", today - 10, 0, today - 2, ""}};
        for (const Sample &s : samples) {
            km::TODO::Task t;
            t.Description = QString::fromLatin1(s.text);
            t.Memo = QString::fromLatin1(s.memo);
            t.hasDue = s.due != 0;
            t.due = s.due;
            t.priority = s.priority;
            t.completed = s.completed != 0;
            t.completedDate = s.completed;
            km::TODO::SaveTask(db::Store(), t, 0);
        }
        tasks->ShowCompleted_Click(true);
        tasks->showListitems();
        tasks->TodoList_Click(0);
        window.sync();
        p.save(&window, QStringLiteral("task-section"));
        tasks->cmdEdit(); // the editor is pictured and left with Esc
    }

    model.optSection_ButtonClick(5);
    if (auto *diary = dynamic_cast<km::frmDiary *>(model.section())) {
        diary->diaPeriod_Click(km::frmDiary::WeekMode);
        const char *const days[] = {"Quiet start of the week.", "Long meeting about the budget.\nHome late.",
                                    "", "Dinner with Ann and Tom.", "Rain all day; read a book.",
                                    "Market in the morning.", ""};
        for (int i = 0; i < 7; ++i)
            diary->txtInput_Change(i, QString::fromLatin1(days[i]));
        diary->saveChanged();
        window.sync();
        p.save(&window, QStringLiteral("diary-week"));
        diary->txtMargin_Click(1);
        diary->diaPeriod_Click(km::frmDiary::DayMode);
        window.sync();
        p.save(&window, QStringLiteral("diary-day"));
    }
}

// The memo and confidential sections with a few records written through their
// models' save paths, then their editors; ends the program.
void TourRecords(frmMDI &window, km::frmMDI &model) {
    Photographer &p = *g_photographer;
    TourTasksAndDiary(window, model);
    model.optSection_ButtonClick(4);
    if (auto *memos = dynamic_cast<km::frmNotepad *>(model.section())) {
        const QList<std::pair<QString, QString>> samples = {
            {QStringLiteral("Shopping list"), QStringLiteral("Bread\nMilk\nApples (the green ones)")},
            {QStringLiteral("2024 tax papers"), QStringLiteral("Receipts are in the blue folder.")},
            {QString::fromUtf8("\u00c4rzte und Termine"),
             QStringLiteral("Dentist: every six months.\nEye doctor: next spring.")}};
        qint64 shown = 0;
        for (const auto &[subject, body] : samples) {
            memos->newRecord = true;
            memos->txtSubject = subject;
            memos->txtInput = body;
            memos->ctlPrivate = false;
            CATEGORIES::SelectCategory(memos->cboCategory, CATEGORIES::CategoryUnfiled);
            const qint64 id = memos->SaveRecord();
            if (!shown) shown = id;
        }
        memos->listSelect_Initialize(shown);
        window.sync();
        p.save(&window, QStringLiteral("memo-section"));
        memos->cmdEdit_Click(); // the editor is pictured and left with Esc
    }

    model.optSection_ButtonClick(6);
    if (auto *data = dynamic_cast<km::frmClassified *>(model.section())) {
        data->cat_Click(1);
        data->newRecord = true;
        data->txtCtl = {QStringLiteral("Example Shop"), QStringLiteral("https://shop.example.com"),
                        QStringLiteral("j.doe"), QStringLiteral("Tr0ub4dor&3"), QString()};
        data->txtNotes = QStringLiteral("Security question: first pet.");
        data->listSelect_Initialize(data->SaveRecord());
        window.sync();
        p.save(&window, QStringLiteral("confidential-section"));
        data->cmdEdit_Click();

        km::frmEditText text(ui());
        text.txtSubject = QStringLiteral("Notes");
        text.txt = data->txtNotes;
        ui().showModal(text);
    }
    QTimer::singleShot(300, &window, [&model] { model.ExitProgram(); });
}

} // namespace

void RunScreenshotTour(frmMDI &window, km::frmMDI &model) {
    QTimer::singleShot(2500, &window, [&window, &model] {
        Photographer &p = *g_photographer;
        p.save(&window, QStringLiteral("main-startscreen"));

        model.menuClick(QStringLiteral("mnuToolsPreferences"));

        km::frmPW login;
        login.lblPrompt = LanguageUS::MessageText(159);
        login.txtPath = QStringLiteral("PERSONALDATA.KMD\n") + QDir::homePath();
        login.Form_Load();
        p.nextPw = QStringLiteral("passphrase");
        p.pwAnswer = QStringLiteral("x");
        p.cancelPw = true;
        ui().showModal(login);
        p.cancelPw = false;

        p.nextPw = QStringLiteral("pin");
        p.pwAnswer = QStringLiteral("0000");
        Users::RequestPin();
        p.pwAnswer.clear();

        km::frmMenuDB menu;
        ui().showModal(menu);
        km::frmEditCategories::Edit(14);

        model.optSection_ButtonClick(1);
        QTimer::singleShot(500, &window, [&window, &model] {
            g_photographer->save(&window, QStringLiteral("main-section"));
            TourRecords(window, model);
        });
    });
}

} // namespace km::gui
