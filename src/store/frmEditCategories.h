// The category editor of one section: a list of the section's categories with
// "Unfiled" at its head, and New, Rename, Delete, OK and Esc. It edits the
// section's list in memory (CATEGORIES' arrays, kept entry for entry in step
// with CatList after its first entry) and writes it only on OK.
#pragma once

#include <QStringList>

#include "ui/Controls.h"
#include "ui/WindowModel.h"

namespace km {

class frmEditCategories : public WindowModel {
public:
    // Edits the list of the section in work (CATEGORIES' CategorySection).
    frmEditCategories();
    // Edits the list of that section.
    explicit frmEditCategories(int section);

    QString caption() const override { return QStringLiteral("Edit Categories"); }

    // Fills CatList with the section's list, "Unfiled" first, and selects it.
    void Form_Load();
    void cmdNew_Click();
    void cmdRename_Click();
    void cmdDelete_Click();
    void cmdOK_Click();
    void cmdEsc_Click();

    // Opens the editor modally for a section; true when it closed through OK
    // (the list is then saved and CATEGORIES' ListsNeedRefresh is set).
    static bool Edit(int section);

    ListBox CatList;

private:
    // The list as it stood at load, for Esc.
    QStringList m_savedNames;
    QList<qint32> m_savedIds;
};

} // namespace km
