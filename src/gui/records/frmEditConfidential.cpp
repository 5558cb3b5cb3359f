#include "gui/records/frmEditConfidential.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/records/RecordsViews.h"

namespace km::gui {

frmEditConfidential::frmEditConfidential(km::frmEditConfidential &model, QWidget *parent)
    : RecordEditorDialog(model, parent), m_model(model) {
    setObjectName(QStringLiteral("confidential-editor"));
    auto *fields = new QGridLayout;
    for (size_t i = 0; i < 5; ++i) {
        lblTxt[i] = new QLabel(this);
        txtCtl[i] = new QLineEdit(this);
        showsRecordValue(txtCtl[i]);
        fields->addWidget(lblTxt[i], static_cast<int>(i), 0);
        fields->addWidget(txtCtl[i], static_cast<int>(i), 1);
        onTextTyped(txtCtl[i], [this, i](const QString &text) { edited([&] { m_model.txtCtl[i] = text; }); });
    }
    fields->setColumnStretch(1, 1);
    txtNotes = new QPlainTextEdit(this);
    txtNotes->setTabChangesFocus(true);
    showsRecordValue(txtNotes);
    ctlPrivate = new QCheckBox(QStringLiteral("Private"), this);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addWidget(new QLabel(QStringLiteral("Notes:"), this));
    layout->addWidget(txtNotes, 1);
    layout->addLayout(buttonRow(ctlPrivate));
    resize(480, 400);

    onTextTyped(txtNotes, [this](const QString &text) { edited([&] { m_model.txtNotes = text; }); });
    connect(ctlPrivate, &QCheckBox::clicked, this,
            [this](bool on) { edited([&] { m_model.ctlPrivate = on; }); });
    txtCtl[0]->setFocus();
}

void frmEditConfidential::sync() {
    setWindowTitle(m_model.caption());
    for (size_t i = 0; i < 5; ++i) {
        lblTxt[i]->setText(m_model.lblTxt[i]);
        lblTxt[i]->setVisible(m_model.visible[i]);
        txtCtl[i]->setVisible(m_model.visible[i]);
        txtCtl[i]->setEchoMode(m_model.masked[i] ? QLineEdit::Password : QLineEdit::Normal);
        drawText(txtCtl[i], m_model.txtCtl[i]);
    }
    drawPlain(txtNotes, m_model.txtNotes);
    ctlPrivate->setChecked(m_model.ctlPrivate);
}

} // namespace km::gui
