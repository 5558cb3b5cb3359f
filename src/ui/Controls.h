// Toolkit-free models of the list controls that windows share. A window model
// holds these as its control state; the widget of the window draws them and
// writes the person's choice back through setListIndex / setText.
//
// Both keep the controls' own conventions: entries are addressed by a 0-based
// index, each carries an integer item data beside its text, and ListIndex is
// -1 while nothing is selected.
#pragma once

#include <QList>
#include <QString>

namespace km {

struct ListEntry {
    QString text;
    int data = 0;
};

// A list of entries with one selection.
class ListBox {
public:
    virtual ~ListBox() = default;

    void Clear() {
        m_entries.clear();
        m_listIndex = -1;
        clearText();
    }
    void AddItem(const QString &text, int data = 0) { m_entries.append(ListEntry{text, data}); }
    // Inserts before index (an index at or past the end appends). The
    // selection stays on the entry it was on.
    void InsertItem(int index, const QString &text, int data = 0) {
        if (index < 0) index = 0;
        if (index > ListCount()) index = ListCount();
        m_entries.insert(index, ListEntry{text, data});
        if (m_listIndex >= index) ++m_listIndex;
    }
    // Removing the selected entry leaves nothing selected.
    void RemoveItem(int index) {
        if (!valid(index)) return;
        m_entries.removeAt(index);
        if (m_listIndex == index)
            m_listIndex = -1;
        else if (m_listIndex > index)
            --m_listIndex;
    }

    int ListCount() const { return static_cast<int>(m_entries.size()); }
    QString List(int index) const { return valid(index) ? m_entries.at(index).text : QString(); }
    void setList(int index, const QString &text) {
        if (valid(index)) m_entries[index].text = text;
    }
    int ItemData(int index) const { return valid(index) ? m_entries.at(index).data : 0; }
    void setItemData(int index, int data) {
        if (valid(index)) m_entries[index].data = data;
    }
    const QList<ListEntry> &entries() const { return m_entries; }

    int ListIndex() const { return m_listIndex; }
    // An index outside the list selects nothing.
    virtual void setListIndex(int index) { m_listIndex = valid(index) ? index : -1; }

    // A list box's text is that of its selected entry.
    virtual QString Text() const { return List(m_listIndex); }
    // Selects the first entry of exactly that text; nothing if there is none.
    virtual void setText(const QString &text) {
        m_listIndex = -1;
        for (int i = 0; i < ListCount(); ++i)
            if (m_entries.at(i).text == text) {
                m_listIndex = i;
                break;
            }
    }

protected:
    bool valid(int index) const { return index >= 0 && index < ListCount(); }
    virtual void clearText() {}

    QList<ListEntry> m_entries;
    int m_listIndex = -1;
};

// A drop-down with an edit line. Its text is free: setting it selects nothing,
// so a combo box can show an entry's text while ListIndex is still -1.
// Selecting an entry puts that entry's text in the edit line.
class ComboBox : public ListBox {
public:
    void setListIndex(int index) override {
        ListBox::setListIndex(index);
        if (m_listIndex >= 0) m_text = List(m_listIndex);
    }
    QString Text() const override { return m_text; }
    void setText(const QString &text) override { m_text = text; }

protected:
    void clearText() override { m_text.clear(); }

private:
    QString m_text;
};

} // namespace km
