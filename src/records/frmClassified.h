// Confidential data (fSec 16): the password book. Sixteen fixed kinds of
// record share one row shape: up to five labelled short fields, notes and a
// private flag; fG1 holds the kind. Fields whose label speaks of a password
// or a PIN are masked until "Show Plain Password" is ticked.
#pragma once

#include <array>

#include <QString>
#include <QStringList>

#include "shell/SortedSection.h"
#include "shell/TextActions.h"
#include "ui/Controls.h"

namespace km {

struct ConfidentialKind {
    int id;             // fG1
    QString caption;    // "Web Login"
    QStringList labels; // of n0 to n4; four or five
    QString toolTip;
};
// The sixteen kinds, by fG1 (1 to 16); nullptr for any other number.
const ConfidentialKind *KindOf(int id);
const QList<ConfidentialKind> &ConfidentialKinds();
// A field is masked when its label holds "Password" or "PIN", in any case.
bool MasksField(const QString &label);

// The record's dialog.
class frmEditConfidential : public RecordEditor {
public:
    using RecordEditor::RecordEditor;
    QString caption() const override;
    int kind = 1;
    std::array<QString, 5> txtCtl;
    std::array<QString, 5> lblTxt;
    std::array<bool, 5> visible{};
    std::array<bool, 5> masked{};
    QString txtNotes;
    bool ctlPrivate = false;
};

// An editor of a longer text, shielded while in front.
class frmEditText : public RecordEditor {
public:
    using RecordEditor::RecordEditor;
    QString caption() const override { return txtSubject; }
    QString txtSubject;
    QString txt;
};

class frmClassified : public SortedSectionModel {
public:
    static constexpr int Section = 16;
    static constexpr int PrivateBit = 5;
    enum Field { n0 = 0, n1, n2, n3, n4, notes, DateLastModified, Private, UserName };

    explicit frmClassified(const SectionContext &context);
    int sectionCode() const override { return Section; }
    QString caption() const override { return QStringLiteral("Confidential"); }
    void Form_Load() override;

    // The view's state.
    int cat = 1; // the kind in view
    std::array<QString, 5> txtCtl;
    std::array<QString, 5> lblTxt;
    std::array<bool, 5> visible{};
    std::array<bool, 5> masked{};
    QString txtNotes;
    bool ctlPrivate = false;
    bool chkPlainPW = false;
    QString lblCategory, lblLastModified;

    void cat_Click(int kind);
    void chkPlainPW_Click();
    void cmdAdd_Click();
    void cmdEdit_Click();
    // The right mouse button on a field (0 to 4) or the notes (5): its text
    // goes to the clipboard under the wipe.
    void CopyField(int field);
    // The right mouse button on a field with text: the word under the pointer
    // (the whole value of a masked field, which the person cannot see) is
    // classified for the pane's menu. False when there is nothing to act on.
    bool ShowActionMenu(int field, TextActions::Selection &box);
    TextActions::PaneMenu paneMenu;
    // The pane menu's entries (Dial calls the entry's first field).
    bool menuCommand(const QString &name, int index, const QString &arg) override;

protected:
    int sectionId() const override { return Section; }
    int privateBit() const override { return PrivateBit; }
    std::optional<int> listFilter() const override { return cat; }
    int deleteQuestion() const override { return 79; }
    void clearFields() override;
    void showFields(const SortedSection::StoredRecord &record) override;
    SortedSection::SaveRequest saveRequest() const override;

private:
    void applyLabels();
    bool runEditor();
};

} // namespace km
