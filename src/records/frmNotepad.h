// The memo section (fSec 14): free notes with a subject and a body, filed
// under categories, listed by subject in the sort index's order.
#pragma once

#include <QString>
#include <QStringList>

#include "ui/Controls.h"
#include "shell/frmMDI.h"

namespace km {

// The memo editor: subject, body, category and the private flag.
class frmEditNotepad : public WindowModel {
public:
    QString caption() const override { return QStringLiteral("Memo"); }
    QString ctlSubject;
    QString ctlNote;
    ComboBox ctlCategory; // categories of the memo section, "Unfiled" included
    bool ctlPrivate = false;
    bool changed = false; // something was typed since the editor opened

    void cmdOK_Click() { close(true); }
    // With unsaved changes asks "Discard changes?".
    void cmdEsc_Click();
    void cmdEditCat_Click();
};

class frmNotepad : public SectionWindow {
public:
    static constexpr int Section = 14;
    static constexpr int PrivateBit = 3;
    // Fields of the packed record.
    enum Field { UserNumber = 0, Private = 1, DateCreated = 2, DateLastModified = 3, Subject = 4, Memo = 5 };

    frmNotepad();
    int sectionCode() const override { return Section; }
    QString sectionMenu() const override { return QStringLiteral("mnuMemo"); }
    QString caption() const override { return QStringLiteral("Memo"); }
    void Form_Load() override;
    bool menuCommand(const QString &name, int index, const QString &arg) override;
    void HideShow() override { listSelect_Initialize(); }

    // The view's state.
    ListBox ListSelect;     // item data: fPK
    ComboBox cboCategories; // the filter, "All" first
    ComboBox cboCategory;   // the shown memo's category
    QString txtSubject, txtInput;
    bool ctlPrivate = false;
    QString ctlDateCreated, ctlLastModified;
    bool recordChanged = false;
    bool newRecord = false;
    qint64 RowId = 0;
    QStringList Values; // the shown memo's six slots, as read

    // Commands.
    void listSelect_Initialize(qint64 select = 0);
    void listSelect_Click(int index);
    void cboCategories_Click();
    void cmdAdd_Click();
    void cmdEdit_Click();
    void cmdDelete_Click();
    void cmdEditCat_Click();
    void mnuMemoDeleteAll();

    // The save path of the editor's OK and of "Store record?": the shown
    // memo's fields as they stand. Returns the row id (0 when refused).
    qint64 SaveRecord();
    // The filter's category id, or nothing for "All".
    std::optional<int> Filter() const;

private:
    void clearPane();
    void showRecord(qint64 id);
    bool runEditor(const QString &subject);
    void askStoreChanged();
};

} // namespace km
