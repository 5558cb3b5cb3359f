#include "store/frmEditCategories.h"

#include <algorithm>

#include "ui/Dialogs.h"
#include "store/CATEGORIES.h"

namespace km {

namespace {

constexpr int UnfiledIndex = 0; // CatList's first entry; entry i >= 1 is the arrays' entry i - 1

// The margin FillCategorySelector gives the entries of a list with "Unfiled" only.
QString entryText(const QString &name) {
    return QLatin1Char(' ') + name;
}

} // namespace

frmEditCategories::frmEditCategories() {
    Form_Load();
}

frmEditCategories::frmEditCategories(int section) {
    CATEGORIES::state().CategorySection = section;
    Form_Load();
}

void frmEditCategories::Form_Load() {
    auto &s = CATEGORIES::state();
    CATEGORIES::FillCategorySelector(CatList, s.CategorySection, false, true, false);
    m_savedNames = s.CategoryNames;
    m_savedIds = s.CategoryIds;
    CatList.setListIndex(UnfiledIndex);
}

void frmEditCategories::cmdNew_Click() {
    const auto answer = ui().inputBox(QStringLiteral("New category"), QStringLiteral("New category"));
    if (!answer) return;
    const QString name = answer->trimmed();
    if (name.isEmpty()) return;
    const int id = CATEGORIES::NextCategoryId();
    if (id == 0) return; // message 52 has been shown
    auto &s = CATEGORIES::state();
    s.CategoryNames.append(name);
    s.CategoryIds.append(id);
    CatList.AddItem(entryText(name), id);
    CatList.setListIndex(CatList.ListCount() - 1);
}

void frmEditCategories::cmdRename_Click() {
    const int index = CatList.ListIndex();
    if (index < 0) {
        ShowMessage(18);
        return;
    }
    if (index <= UnfiledIndex || CatList.ItemData(index) == CATEGORIES::CategoryEdit) return;
    auto &s = CATEGORIES::state();
    const QString oldName = s.CategoryNames.at(index - 1);
    const auto answer =
        ui().inputBox(QStringLiteral("Rename category"), QStringLiteral("Rename category"), oldName);
    if (!answer) return;
    const QString name = answer->trimmed();
    if (name.isEmpty()) return;
    s.CategoryNames[index - 1] = name;
    CatList.setList(index, entryText(name));
}

void frmEditCategories::cmdDelete_Click() {
    const int index = CatList.ListIndex();
    if (index <= UnfiledIndex) return;
    const int id = CatList.ItemData(index);
    if (id == CATEGORIES::CategoryUnfiled || id == 255 || id == CATEGORIES::CategoryEdit) return;
    if (ShowMessage(19, Buttons::OKCancel, Answer::Cancel, Icon::Question) != Answer::OK) return;
    // Only the list changes: items keep the old id in fG1 and show under "All" alone.
    auto &s = CATEGORIES::state();
    s.CategoryNames.removeAt(index - 1);
    s.CategoryIds.removeAt(index - 1);
    CatList.RemoveItem(index);
    CatList.setListIndex(std::min(index, CatList.ListCount() - 1));
}

void frmEditCategories::cmdOK_Click() {
    CATEGORIES::SaveCategories(CATEGORIES::state().CategorySection);
    close(true);
}

void frmEditCategories::cmdEsc_Click() {
    auto &s = CATEGORIES::state();
    s.CategoryNames = m_savedNames;
    s.CategoryIds = m_savedIds;
    close(false);
}

bool frmEditCategories::Edit(int section) {
    frmEditCategories window(section);
    const bool shownOk = ui().showModal(window);
    // However the window went away, a list not saved must not stay in memory.
    if (!window.acceptedResult) window.cmdEsc_Click();
    return shownOk && window.acceptedResult;
}

} // namespace km
