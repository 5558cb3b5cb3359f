// The dialog of a confidential record over its model: the kind's labelled
// fields (masked as the model says), the notes and the private flag; shielded.
#pragma once

#include <array>

#include "gui/shell/SortedSectionView.h"
#include "records/frmClassified.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

namespace km::gui {

class frmEditConfidential : public RecordEditorDialog {
    Q_OBJECT
public:
    frmEditConfidential(km::frmEditConfidential &model, QWidget *parent = nullptr);
    void sync() override;

    std::array<QLabel *, 5> lblTxt{};
    std::array<QLineEdit *, 5> txtCtl{};
    QPlainTextEdit *txtNotes = nullptr;
    QCheckBox *ctlPrivate = nullptr;

private:
    km::frmEditConfidential &m_model;
};

} // namespace km::gui
