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
#include "backup/frmBackup.h"
#include "backup/frmRestore.h"
#include "gui/backup/BackupViews.h"
#include "shell/frmMDI.h"
#include "store/CATEGORIES.h"
#include "store/Users.h"
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

// The memo and confidential sections with a few records written through their
// models' save paths, then their editors; ends the program.
void TourRecords(frmMDI &window, km::frmMDI &model) {
    Photographer &p = *g_photographer;
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
