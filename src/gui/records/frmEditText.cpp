#include "gui/records/frmEditText.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/records/RecordsViews.h"

namespace km::gui {

frmEditText::frmEditText(km::frmEditText &model, QWidget *parent)
    : RecordEditorDialog(model, parent), m_model(model) {
    setObjectName(QStringLiteral("text-editor"));
    txtSubject = new QLineEdit(this);
    txt = new QPlainTextEdit(this);
    txt->setTabChangesFocus(true);
    showsRecordValue(txtSubject);
    showsRecordValue(txt);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(txtSubject);
    layout->addWidget(txt, 1);
    layout->addLayout(buttonRow(nullptr));
    resize(520, 420);

    onTextTyped(txtSubject, [this](const QString &text) { edited([&] { m_model.txtSubject = text; }); });
    onTextTyped(txt, [this](const QString &text) { edited([&] { m_model.txt = text; }); });
    txt->setFocus();
}

void frmEditText::sync() {
    setWindowTitle(m_model.caption());
    drawText(txtSubject, m_model.txtSubject);
    drawPlain(txt, m_model.txt);
}

} // namespace km::gui
