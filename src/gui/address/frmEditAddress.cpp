#include "gui/address/frmEditAddress.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "store/CATEGORIES.h"
#include "store/frmEditCategories.h"

namespace km::gui {

using namespace Address;

QLineEdit *frmEditAddress::field(int index, QWidget *parent) {
    auto *box = new QLineEdit(parent);
    box->setObjectName(QStringLiteral("ctl") + FieldTable()[static_cast<size_t>(index)].name);
    showsRecordValue(box);
    onTextTyped(box, [this, index](const QString &text) { edited([&] { m_model.ctl[index] = text; }); });
    ctl[static_cast<size_t>(index)] = box;
    return box;
}

frmEditAddress::frmEditAddress(km::frmEditAddress &model, QWidget *parent)
    : RecordEditorDialog(model, parent), m_model(model) {
    setObjectName(QStringLiteral("address-editor"));

    // Name and filing.
    auto *name = new QGroupBox(QStringLiteral("Name"), this);
    auto *nameGrid = new QGridLayout(name);
    const std::pair<int, const char *> names[] = {{Title, "Title"},     {FirstName, "First"},
                                                  {LastName, "Last"},   {Suffix, "Suffix"},
                                                  {CompanyName, "Company"}, {JobTitle, "Job Title:"}};
    int row = 0;
    for (const auto &[index, caption] : names) {
        nameGrid->addWidget(new QLabel(QString::fromLatin1(caption), name), row, 0);
        nameGrid->addWidget(field(index, name), row, 1);
        ++row;
    }
    ctlFileAs = new QComboBox(name);
    ctlFileAs->setEditable(true);
    ctlFileAs->setInsertPolicy(QComboBox::NoInsert);
    showsRecordValue(ctlFileAs->lineEdit());
    ctlCategory = new QComboBox(name);
    cmdEditCat = new QToolButton(name);
    cmdEditCat->setText(QStringLiteral("..."));
    nameGrid->addWidget(new QLabel(QStringLiteral("File as:"), name), row, 0);
    nameGrid->addWidget(ctlFileAs, row++, 1);
    auto *cat = new QHBoxLayout;
    cat->addWidget(ctlCategory, 1);
    cat->addWidget(cmdEditCat);
    nameGrid->addWidget(new QLabel(QStringLiteral("Category"), name), row, 0);
    nameGrid->addLayout(cat, row++, 1);

    // The three address pages on one place.
    auto *address = new QGroupBox(QStringLiteral("Address"), this);
    auto *addressLayout = new QVBoxLayout(address);
    auto *radios = new QHBoxLayout;
    ctlAddress = new QButtonGroup(this);
    const char *pageNames[] = {"Home", "Business", "Other"};
    const int streets[] = {HomeAddressStreet, BusinessAddressStreet, OtherAddressStreet};
    pages = new QStackedWidget(address);
    for (int p = 0; p < 3; ++p) {
        auto *radio = new QRadioButton(QString::fromLatin1(pageNames[p]), address);
        ctlAddress->addButton(radio, p);
        radios->addWidget(radio);
        auto *page = new QWidget(pages);
        auto *grid = new QGridLayout(page);
        grid->setContentsMargins(0, 0, 0, 0);
        const char *parts[] = {"Street", "City", "State/Prov", "Zip", "Country"};
        for (int f = 0; f < 5; ++f) {
            grid->addWidget(new QLabel(QString::fromLatin1(parts[f]), page), f, 0);
            grid->addWidget(field(streets[p] + f, page), f, 1);
        }
        pages->addWidget(page);
    }
    radios->addStretch();
    addressLayout->addLayout(radios);
    addressLayout->addWidget(pages);

    // The nine communication slots.
    auto *com = new QGroupBox(QStringLiteral("Phone / Email / Web"), this);
    auto *comGrid = new QGridLayout(com);
    DisplayCom = new QButtonGroup(this);
    for (int n = 0; n < 9; ++n) {
        auto *radio = new QRadioButton(com);
        radio->setToolTip(QStringLiteral("Show in the list"));
        DisplayCom->addButton(radio, n);
        ctlComLabel[static_cast<size_t>(n)] = new QComboBox(com);
        comGrid->addWidget(radio, n, 0);
        comGrid->addWidget(ctlComLabel[static_cast<size_t>(n)], n, 1);
        comGrid->addWidget(field(Com1 + n, com), n, 2);
        connect(ctlComLabel[static_cast<size_t>(n)], &QComboBox::activated, this,
                [this, n](int index) { m_model.ctlComLabel[static_cast<size_t>(n)].setListIndex(index); });
    }
    comGrid->setColumnStretch(2, 1);

    // Personal and user-defined fields.
    auto *personal = new QGroupBox(QStringLiteral("Personal"), this);
    auto *personalGrid = new QGridLayout(personal);
    ctlBirthday = new QLineEdit(personal);
    ctlBirthday->setPlaceholderText(QStringLiteral("yyyy-mm-dd"));
    showsRecordValue(ctlBirthday);
    ctlBirthday->installEventFilter(this);
    onTextTyped(ctlBirthday, [this](const QString &text) { edited([&] { m_model.ctlBirthday = text; }); });
    personalGrid->addWidget(new QLabel(QStringLiteral("Birthday"), personal), 0, 0);
    personalGrid->addWidget(ctlBirthday, 0, 1);
    personalGrid->addWidget(new QLabel(QStringLiteral("ID Number"), personal), 1, 0);
    personalGrid->addWidget(field(GovernmentIDNumber, personal), 1, 1);
    personalGrid->addWidget(new QLabel(QStringLiteral("Spouse"), personal), 2, 0);
    personalGrid->addWidget(field(Spouse, personal), 2, 1);
    personalGrid->addWidget(new QLabel(QStringLiteral("Children"), personal), 3, 0);
    personalGrid->addWidget(field(Children, personal), 3, 1);
    // The gender buttons stand in the form and are bound to no field.
    auto *gender = new QHBoxLayout;
    gender->addWidget(new QRadioButton(QStringLiteral("female"), personal));
    gender->addWidget(new QRadioButton(QStringLiteral("male"), personal));
    gender->addStretch();
    personalGrid->addWidget(new QLabel(QStringLiteral("Gender"), personal), 4, 0);
    personalGrid->addLayout(gender, 4, 1);
    for (int u = 0; u < 4; ++u) {
        lblUserDef[static_cast<size_t>(u)] = new QLabel(personal);
        personalGrid->addWidget(lblUserDef[static_cast<size_t>(u)], 5 + u, 0);
        personalGrid->addWidget(field(User1 + u, personal), 5 + u, 1);
    }

    ctlNotes = new QPlainTextEdit(this);
    ctlNotes->setTabChangesFocus(true);
    showsRecordValue(ctlNotes);
    onTextTyped(ctlNotes, [this](const QString &text) { edited([&] { m_model.ctl[Notes] = text; }); });
    ctlPrivate = new QCheckBox(QStringLiteral("Private"), this);

    auto *leftColumn = new QVBoxLayout;
    leftColumn->addWidget(name);
    leftColumn->addWidget(address);
    auto *rightColumn = new QVBoxLayout;
    rightColumn->addWidget(com);
    rightColumn->addWidget(personal);
    auto *columns = new QHBoxLayout;
    columns->addLayout(leftColumn, 1);
    columns->addLayout(rightColumn, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(columns);
    layout->addWidget(new QLabel(QStringLiteral("Note"), this));
    layout->addWidget(ctlNotes, 1);
    layout->addLayout(buttonRow(ctlPrivate));
    resize(900, 700);

    // First and last name give the File as candidates when left.
    ctl[FirstName]->installEventFilter(this);
    ctl[LastName]->installEventFilter(this);
    installEventFilter(this);
    onTextTyped(ctlFileAs->lineEdit(), [this](const QString &text) {
        if (text != m_model.ctlFileAs.Text()) edited([&] { m_model.ctlFileAs.setText(text); });
    });
    connect(ctlFileAs, &QComboBox::activated, this, [this](int index) {
        m_model.ctlFileAs.setListIndex(index);
        sync();
    });
    connect(ctlCategory, &QComboBox::activated, this,
            [this](int index) { m_model.ctlCategory.setListIndex(index); });
    connect(cmdEditCat, &QToolButton::clicked, this, [this] {
        command([this] {
            const int before = CATEGORIES::CategoryOfSelector(m_model.ctlCategory);
            frmEditCategories::Edit(Address::Section);
            CATEGORIES::FillCategorySelector(m_model.ctlCategory, Address::Section, false, true, false);
            CATEGORIES::SelectCategory(m_model.ctlCategory, before);
        });
    });
    connect(ctlAddress, &QButtonGroup::idClicked, this, [this](int page) {
        m_model.ctlAddress_Click(page);
        sync();
    });
    connect(DisplayCom, &QButtonGroup::idClicked, this, [this](int slot) { m_model.DisplayCom_Click(slot); });
    connect(ctlPrivate, &QCheckBox::clicked, this, [this](bool on) { edited([&] { m_model.ctlPrivate = on; }); });
    ctl[FirstName]->setFocus();
}

bool frmEditAddress::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::FocusOut && (watched == ctl[FirstName] || watched == ctl[LastName])) {
        m_model.txtName_LostFocus();
        sync();
    } else if (event->type() == QEvent::FocusOut && watched == ctlBirthday) {
        if (!m_model.ctlBirthday_Validate()) QTimer::singleShot(0, ctlBirthday, [this] { ctlBirthday->setFocus(); });
    } else if (event->type() == QEvent::KeyPress) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (watched == ctl[LastName] && key->key() == Qt::Key_Control) {
            QLineEdit *last = ctl[LastName];
            m_model.ctlLastName_CtrlDown(last->selectedText().size() < last->text().size());
            sync();
        }
        if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) &&
            (key->modifiers() & Qt::ControlModifier)) {
            command([this] { m_model.cmdOK_Click(); });
            return true;
        }
    }
    return RecordEditorDialog::eventFilter(watched, event);
}

void frmEditAddress::sync() {
    setWindowTitle(m_model.caption());
    for (size_t i = 0; i < ctl.size(); ++i)
        if (ctl[i]) drawText(ctl[i], m_model.ctl.value(static_cast<int>(i)));
    {
        // The combo's refill writes into its line box: that is no typing.
        const QSignalBlocker block(ctlFileAs->lineEdit());
        drawCombo(ctlFileAs, m_model.ctlFileAs);
    }
    drawCombo(ctlCategory, m_model.ctlCategory);
    if (QAbstractButton *b = ctlAddress->button(m_model.ctlAddress)) b->setChecked(true);
    pages->setCurrentIndex(m_model.ctlAddress);
    const int shown = m_model.ctlComDisplay.isEmpty() ? 0 : m_model.ctlComDisplay.toInt();
    if (QAbstractButton *b = DisplayCom->button(shown)) b->setChecked(true);
    for (size_t n = 0; n < 9; ++n) {
        QComboBox *box = ctlComLabel[n];
        const ListBox &labels = m_model.ctlComLabel[n];
        if (box->count() != labels.ListCount())
            for (int i = 0; i < labels.ListCount(); ++i)
                box->addItem(labels.List(i), labels.ItemData(i));
        box->setCurrentIndex(labels.ListIndex());
    }
    drawText(ctlBirthday, m_model.ctlBirthday);
    for (size_t u = 0; u < 4; ++u)
        lblUserDef[u]->setText(m_model.lblUserDef[u]);
    if (ctlNotes->toPlainText() != m_model.ctl.value(Notes)) {
        const QSignalBlocker block(ctlNotes);
        ctlNotes->setPlainText(m_model.ctl.value(Notes));
    }
    ctlPrivate->setChecked(m_model.ctlPrivate);
}

} // namespace km::gui
