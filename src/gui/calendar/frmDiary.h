// The diary over its model: the title, the date picker, the up-down that
// moves by a day or a week, the Day/Week buttons, and the text boxes with
// the margin of long dates beside them (one large box in day mode, seven in
// week mode). The boxes are under the keystroke shield; each keystroke goes
// into the model, which saves before any change of date and at close.
#pragma once

#include <array>

#include "calendar/frmDiary.h"
#include "gui/shell/SectionView.h"

class QDateEdit;
class QLabel;
class QPlainTextEdit;
class QPushButton;

namespace km::gui {

class UpDown;

class frmDiary : public SectionView {
    Q_OBJECT
public:
    frmDiary(km::frmDiary &model, QWidget *parent = nullptr);
    void sync() override;

    QLabel *lblTitel = nullptr;
    QDateEdit *calDate = nullptr;
    UpDown *diaMoveDay = nullptr;
    QPushButton *diaPeriod[2] = {};
    std::array<QPushButton *, 7> txtMargin{};
    std::array<QPlainTextEdit *, 7> txtInput{};

private:
    void command(const std::function<void()> &fn);
    km::frmDiary &m_model;
    bool m_focused = false; // the chosen day's box had the focus once
};

// Registers the diary's view with the main window.
void RegisterDiaryView();

} // namespace km::gui
