#include "screenshots/Screenshots.h"

#include <functional>

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QLineEdit>
#include <QComboBox>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTimer>

#include "calendar/CALENDAR.h"
#include "calendar/frmEditCalendar.h"
#include "gui/calendar/frmEditCalendar.h"
#include "calendar/frmCalendar.h"
#include "gui/calendar/frmCalendar.h"
#include "gui/shell/frmMDI.h"
#include "platform/Clock.h"
#include "gui/shell/frmOptions.h"
#include "gui/shell/frmTip.h"
#include "gui/store/frmEditCategories.h"
#include "gui/store/frmMenuDB.h"
#include "gui/store/frmPW.h"
#include "records/frmClassified.h"
#include "shell/BasicShell.h"
#include "records/frmNotepad.h"
#include "address/frmAddress.h"
#include "gui/address/frmEditAddress.h"
#include "shell/frmFind.h"
#include <QButtonGroup>
#include <QAbstractButton>
#include "records/frmTodo.h"
#include "calendar/CALENDAR.h"
#include "calendar/frmDiary.h"
#include "backup/frmBackup.h"
#include "backup/frmRestore.h"
#include "gui/backup/BackupViews.h"
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
    // The appointment editor's next picture: what the person does in it first, and its name.
    std::function<void(frmEditCalendar &)> calendarSetup;
    QString calendarShot = QStringLiteral("appointment");

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
        } else if (auto *cal = qobject_cast<frmEditCalendar *>(d)) {
            if (calendarSetup) calendarSetup(*cal);
            save(cal, calendarShot);
            cal->cmdEsc->click();
        } else if (auto *cats = qobject_cast<frmEditCategories *>(d)) {
            save(cats, QStringLiteral("categories"));
            cats->cmdEsc->click();
        } else if (auto *editor = qobject_cast<frmEditAddress *>(d)) {
            const char *pages[] = {"home", "business", "other"};
            for (int page = 0; page < 3; ++page) {
                editor->ctlAddress->button(page)->click();
                save(editor, QStringLiteral("address-editor-%1").arg(QLatin1String(pages[page])));
            }
            static_cast<QDialog *>(editor)->reject();
        } else if (auto *backup = qobject_cast<frmBackup *>(d)) {
            save(backup, backup->cmdCancel->isEnabled() ? QStringLiteral("backup") : QStringLiteral("backup-restore-mode"));
            backup->cmdBackup->click();
        } else if (auto *restore = qobject_cast<frmRestore *>(d)) {
            save(restore, QStringLiteral("restore"));
            restore->cmdCancel->click();
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

// The appointment editor as a person fills it: a single appointment, a weekly
// series, a monthly series on the n-th weekday and an all-day event. Each is
// left with Esc, so nothing is written.
void TourAppointmentEditor() {
    Photographer &p = *g_photographer;
    km::BasicShell shell;
    const auto type = [](QLineEdit *box, const QString &text) { box->setText(text); };
    struct Shot {
        const char *name;
        int startHour, endHour;
        std::function<void(frmEditCalendar &)> setup;
    };
    const QList<Shot> shots = {
        {"appointment-single", 10, 11,
         [&](frmEditCalendar &e) {
             type(e.ctlSubject, QStringLiteral("Dentist"));
             type(e.ctlLocation, QStringLiteral("Dr. Brandt, Mill Street 4"));
             e.ctlAlarmYN->click();
             e.ctlAlarmAnticipate->setCurrentIndex(3);
             Q_EMIT e.ctlAlarmAnticipate->activated(3);
             e.ctlNotes->setPlainText(QStringLiteral("Bring the insurance card."));
         }},
        {"appointment-weekly", 9, 9,
         [&](frmEditCalendar &e) {
             type(e.ctlSubject, QStringLiteral("Team standup"));
             e.Redo[1]->click();
             e.RedoWD[4]->click();
         }},
        {"appointment-monthly-nth", 18, 20,
         [&](frmEditCalendar &e) {
             type(e.ctlSubject, QStringLiteral("Book club"));
             e.Redo[3]->click();
             e.RedoAlt[1][1]->click();
         }},
        {"appointment-allday", 0, 0,
         [&](frmEditCalendar &e) {
             type(e.ctlSubject, QStringLiteral("Mother's birthday"));
             e.ctlAllday->click();
             e.Redo[4]->click();
         }},
    };
    for (const Shot &shot : shots) {
        CALENDAR::CalendarState state;
        state.calDate = QDate(2024, 5, 14);
        if (shot.startHour) {
            state.gEditStart = CALENDAR::MomentOf(state.calDate, shot.startHour * 60);
            state.gEditEnd = CALENDAR::MomentOf(state.calDate, shot.endHour * 60 + (shot.endHour == shot.startHour ? 15 : 30));
        }
        CALENDAR::frmEditCalendar editor(shell.context(), state);
        p.calendarSetup = shot.setup;
        p.calendarShot = QString::fromLatin1(shot.name);
        ui().showModal(editor);
    }
    p.calendarSetup = nullptr;
}

// The calendar's week, work week and day with one box, three and eight
// overlapping boxes and a strip of several all-day events, written through the
// calendar's writer; then a drag in flight. Ends the program.
void TourCalendar(frmMDI &window, km::frmMDI &model) {
    Photographer &p = *g_photographer;
    const QDate today = Clock::today();
    const QDate monday = today.addDays(1 - today.dayOfWeek());
    const auto add = [](const QDate &day, int from, int to, const QString &subject, int flags = 0,
                        const QByteArray &rule = {}) {
        CALENDAR::AppointmentRecord r;
        r.UserNumber = 1;
        r.ctlAllday = to == 0 ? 1 : 0;
        r.ctlAppoStart = CALENDAR::MomentOf(day, to == 0 ? 0 : from);
        r.ctlAppoEnd = to == 0 ? r.ctlAppoStart + CALENDAR::MinutesPerDay : CALENDAR::MomentOf(day, to);
        r.ctlAlarmYN = flags & 1 ? 1 : 0;
        r.ctlAlarmTime = r.ctlAppoStart - (flags & 1 ? 15 : 0);
        r.ctlPrivate = (flags & 2) != 0;
        r.ctlNotes = flags & 4 ? QStringLiteral("Agenda in the shared folder") : QString();
        r.ctlSubject = subject;
        r.ctlRedoString = rule;
        CALENDAR::WriteAppointment(0, r);
    };
    add(monday, 9 * 60, 10 * 60 + 30, QStringLiteral("Team meeting"), 1 | 4);
    const QDate tuesday = monday.addDays(1);
    add(tuesday, 9 * 60, 10 * 60, QStringLiteral("Budget review"));
    add(tuesday, 9 * 60 + 15, 9 * 60 + 45, QStringLiteral("Call with the bank"), 2);
    add(tuesday, 9 * 60 + 30, 10 * 60 + 30, QStringLiteral("Dentist"), 1);
    const QDate thursday = monday.addDays(3);
    const QStringList eight = {"Workshop", "Interview", "Design review", "Coffee with Ann", "Planning",
                               "Phone call", "Report", "Demo"};
    for (int i = 0; i < 8; ++i)
        add(thursday, 13 * 60 + 15 * i, 14 * 60 + 30 + 10 * i, eight.at(i), i % 3 == 0 ? 1 : 0);
    const QDate wednesday = monday.addDays(2);
    add(wednesday, 0, 0, QStringLiteral("Trade fair"));
    add(wednesday, 0, 0, QStringLiteral("Mother's birthday"), 1);
    add(wednesday, 0, 0, QStringLiteral("Office closed"));
    add(monday.addDays(4), 0, 0, QStringLiteral("Holiday"));
    CALENDAR::RedoRule gym;
    gym.kind = CALENDAR::RedoWeekly;
    gym.b1 = (1 << 2) | (1 << 4) | (1 << 6); // Monday, Wednesday, Friday
    gym.b2 = 1;
    gym.first = static_cast<qint16>(CALENDAR::DayNumber(monday) - CALENDAR::EpochDay);
    gym.last = static_cast<qint16>(CALENDAR::DayNumber(QDate(2050, 1, 1)) - CALENDAR::EpochDay);
    add(monday, 18 * 60, 19 * 60, QStringLiteral("Gym"), 0, CALENDAR::RedoString(gym));

    model.optSection_ButtonClick(1);
    auto *calendar = dynamic_cast<CALENDAR::frmCalendar *>(model.section());
    if (!calendar) {
        QTimer::singleShot(300, &window, [&model] { model.ExitProgram(); });
        return;
    }
    const auto picture = [&](const QString &name) {
        window.sync();
        QApplication::processEvents();
        if (auto *view = qobject_cast<gui::frmCalendar *>(window.sectionView())) view->scrollToRow(16);
        p.save(&window, name);
    };
    model.Toolbar1_ButtonClick(QStringLiteral("btnWeek"));
    calendar->SetDate(tuesday);
    picture(QStringLiteral("calendar-week"));
    model.menuClick(QStringLiteral("mnuCalendarView"), 1);
    picture(QStringLiteral("calendar-workweek"));
    model.menuClick(QStringLiteral("mnuCalendarView"), 0);
    calendar->SetDate(thursday);
    picture(QStringLiteral("calendar-day-eight"));
    calendar->SetDate(tuesday);
    picture(QStringLiteral("calendar-day-three"));
    calendar->SetDate(monday);
    picture(QStringLiteral("calendar-day-one"));

    // A drag in flight: the shadow of Monday's meeting two rows lower.
    model.menuClick(QStringLiteral("mnuCalendarView"), 2);
    calendar->SetDate(monday);
    window.sync();
    for (size_t i = 0; i < calendar->boxes.size(); ++i) {
        const CALENDAR::CalendarBox &b = calendar->boxes[i];
        if (b.subject != QLatin1String("Team meeting")) continue;
        calendar->BoxPress(static_cast<int>(i), b.box.left + 200, b.box.top + 100);
        calendar->DragMove(b.box.left + 200 + calendar->colWidth(), b.box.top + 100 + 2 * CALENDAR::RowHeight,
                           false);
        break;
    }
    picture(QStringLiteral("calendar-drag"));
    calendar->CancelDrag();
    QTimer::singleShot(300, &window, [&model] { model.ExitProgram(); });
}

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

    model.optSection_ButtonClick(3);
    if (auto *book = dynamic_cast<km::frmAddress *>(model.section())) {
        namespace A = km::Address;
        const auto add = [book](const QList<std::pair<int, QString>> &fields, const QString &fileAs) {
            book->record = A::EmptyRecord();
            for (const auto &[index, value] : fields)
                book->record[index] = value;
            book->record[A::Private] = QStringLiteral("False");
            A::NormaliseSlots(book->record);
            book->fileAs = fileAs;
            book->category = 0;
            book->newRecord = true;
            return book->SaveRecord();
        };
        add({{A::FirstName, "Anna"}, {A::LastName, "Berg"}, {A::Com1, "+49 30 1234 567"}, {A::ComLabel1, "1"},
             {A::Com2, "anna.berg@example.org"}, {A::ComLabel2, "5"}, {A::ComDisplay, "1"}},
            QStringLiteral("Berg, Anna"));
        const qint64 shown = add({{A::Title, "Dr."}, {A::FirstName, "Paul"}, {A::LastName, "Lindqvist"},
                                  {A::CompanyName, "Example Instruments"}, {A::JobTitle, "Head of Research"},
                                  {A::Com1, "030 555 0101"}, {A::ComLabel1, "1"},
                                  {A::Com2, "030 555 0199"}, {A::ComLabel2, "6"},
                                  {A::Com3, "0170 555 2222"}, {A::ComLabel3, "8"},
                                  {A::Com4, "paul@example.com"}, {A::ComLabel4, "5"},
                                  {A::Com5, "www.example.com"}, {A::ComLabel5, "9"}, {A::ComDisplay, "2"},
                                  {A::HomeAddressStreet, "Lindenweg 4"}, {A::HomeAddressStreet + A::City, "Potsdam"},
                                  {A::HomeAddressStreet + A::PostalCode, "14467"},
                                  {A::BusinessAddressStreet, "1 Example Road"},
                                  {A::BusinessAddressStreet + A::City, "Berlin"},
                                  {A::Birthday, "1971-04-12 00:00:00"}, {A::Spouse, "Eva"},
                                  {A::Notes, "Prefers calls before noon."}},
                                 QStringLiteral("Lindqvist, Paul"));
        add({{A::CompanyName, "Corner Bakery"}, {A::Com1, "030 777 1000"}, {A::ComLabel1, "6"}, {A::ComDisplay, "0"}},
            QStringLiteral("Corner Bakery"));
        book->listSelect_Initialize(shown);
        window.sync();
        p.save(&window, QStringLiteral("address-section"));
        book->cmdEdit_Click(); // the editor's three pages are pictured, then Esc
    }

    km::frmFind find(model);
    find.cmdSelectAll_Click();
    find.txtFind_Change(QStringLiteral("example"));
    find.cmdFind_Click();
    ui().showModal(find);
    // A backup through the Tools menu (the store comes back without the
    // passphrase), then the restore window over the folder it went to and
    // the folder dialog in its Restore mode.
    model.menuClick(QStringLiteral("mnuToolsBackup"));
    window.sync();
    p.save(&window, QStringLiteral("main-after-backup"));
    km::frmBackup restoreMode(QDir::homePath());
    restoreMode.Form_Load();
    ui().showModal(restoreMode);
    km::frmRestore restore;
    restore.Form_Load();
    ui().showModal(restore);
    TourAppointmentEditor();
    TourCalendar(window, model);
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
