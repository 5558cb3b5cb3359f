// The memo section (fSec 14): free notes with a subject and a body, filed
// under categories, listed by subject in the sort index's order.
#pragma once

#include <QString>
#include <QStringList>

#include "shell/SortedSection.h"
#include "ui/Controls.h"

namespace km {

// The memo editor: subject, body, category and the private flag.
class frmEditNotepad : public RecordEditor {
public:
    using RecordEditor::RecordEditor;
    QString caption() const override { return QStringLiteral("Memo"); }
    QString ctlSubject;
    QString ctlNote;
    ComboBox ctlCategory; // categories of the memo section, "Unfiled" included
    bool ctlPrivate = false;

    // Edits the section's categories; the list comes back with the same
    // category selected, or the new one the person made and chose.
    void cmdEditCat_Click();
};

class frmNotepad : public SortedSectionModel {
public:
    static constexpr int Section = 14;
    static constexpr int PrivateBit = 3;
    // Fields of the packed record.
    enum Field { UserNumber = 0, Private = 1, DateCreated = 2, DateLastModified = 3, Subject = 4, Memo = 5 };

    explicit frmNotepad(const SectionContext &context);
    int sectionCode() const override { return Section; }
    QString sectionMenu() const override { return QStringLiteral("mnuMemo"); }
    QString caption() const override { return QStringLiteral("Memo"); }
    void Form_Load() override;
    bool menuCommand(const QString &name, int index, const QString &arg) override;

    // The view's state.
    ListBox &ListSelect = listSelect; // item data: fPK
    ComboBox cboCategories;           // the filter, "All" first
    ComboBox cboCategory;             // the shown memo's category
    QString txtSubject, txtInput;
    bool ctlPrivate = false;
    QString ctlDateCreated, ctlLastModified;

    // Commands.
    void cboCategories_Click();
    void cmdAdd_Click();
    void cmdEdit_Click();
    void cmdEditCat_Click();
    void mnuMemoDeleteAll();

    // The filter's category id, or nothing for "All".
    std::optional<int> Filter() const;
    // The category of the memo in the pane (0 Unfiled); setting one that the
    // section does not have is refused.
    int Category() const { return m_category; }
    bool setCategory(int id);

protected:
    int sectionId() const override { return Section; }
    int privateBit() const override { return PrivateBit; }
    std::optional<int> listFilter() const override { return Filter(); }
    int deleteQuestion() const override { return 27; }
    int noSelectionMessage() const override { return 100; }
    void clearFields() override;
    void showFields(const SortedSection::StoredRecord &record) override;
    SortedSection::SaveRequest saveRequest() const override;

private:
    bool runEditor(const QString &subject, int category);
    void refillCategories();
    // After a save: the filter moves to "All" when the record would not be in
    // the list it shows, so that the saved memo is always the one selected.
    void showSaved(qint64 id);
    int m_category = 0; // the shown memo's category id
};

} // namespace km
