// The file-information window and the print dialog.
#include "app/output_forms.h"

#include "state/workbench.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace kv {

namespace {

QString q(const std::string& s) {
    return QString::fromStdString(s);
}

} // namespace

FileInfoForm::FileInfoForm(Workbench& wb, CommandRunner run, QWidget* parent)
    : QDialog(parent), wb_(wb), run_(std::move(run)), list_(new QListWidget(this)) {
    setObjectName(QStringLiteral("frmFileInfo"));
    setWindowTitle(tr("File Info"));
    list_->setObjectName(QStringLiteral("List1"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(list_);
    resize(360, 260);
}

void FileInfoForm::load() {
    run_([&] { frmFileInfo::Form_Load(wb_, fields_); });
    list_->clear();
    for (const auto& line : fields_.List)
        list_->addItem(q(line));
}

PrinterForm::PrinterForm(Workbench& wb, const ModelViewHost& views, CommandRunner run,
                         QWidget* parent)
    : QDialog(parent), wb_(wb), views_(views), run_(std::move(run)),
      cboPrinter_(new QComboBox(this)), cmbCopies_(new QComboBox(this)),
      optOrien_(new QButtonGroup(this)), txtHeader_(new QLineEdit(this)),
      txtFot_(new QLineEdit(this)), lblH_(new QLabel(this)), lblF_(new QLabel(this)) {
    setObjectName(QStringLiteral("dlgPrinter"));
    setWindowTitle(tr("Print"));
    cboPrinter_->setObjectName(QStringLiteral("cboPrinter"));
    cmbCopies_->setObjectName(QStringLiteral("cmbCopies"));
    cmbCopies_->setEditable(true);
    txtHeader_->setObjectName(QStringLiteral("txtHeader"));
    txtFot_->setObjectName(QStringLiteral("txtFot"));
    lblH_->setObjectName(QStringLiteral("lblH"));
    lblF_->setObjectName(QStringLiteral("lblF"));

    auto* setDef = new QPushButton(tr("Set as default"), this);
    setDef->setObjectName(QStringLiteral("cmdSetDef"));
    auto* portrait = new QRadioButton(tr("Portrait"), this);
    auto* landscape = new QRadioButton(tr("Landscape"), this);
    optOrien_->addButton(portrait, 0);
    optOrien_->addButton(landscape, 1);
    portrait->setChecked(true);

    auto* form = new QFormLayout;
    auto* printerRow = new QHBoxLayout;
    printerRow->addWidget(cboPrinter_, 1);
    printerRow->addWidget(setDef);
    form->addRow(tr("Printer"), printerRow);
    form->addRow(tr("Copies"), cmbCopies_);
    auto* orientation = new QGroupBox(tr("Orientation"), this);
    auto* orientationRow = new QHBoxLayout(orientation);
    orientationRow->addWidget(portrait);
    orientationRow->addWidget(landscape);
    form->addRow(orientation);
    form->addRow(tr("Header"), txtHeader_);
    form->addRow(tr("Footer"), txtFot_);
    form->addRow(tr("On the page:"), lblH_);
    form->addRow(QString(), lblF_);

    auto* buttons = new QDialogButtonBox(this);
    auto* printButton = buttons->addButton(tr("Print"), QDialogButtonBox::AcceptRole);
    printButton->setObjectName(QStringLiteral("Command1"));
    auto* closeButton = buttons->addButton(tr("Close"), QDialogButtonBox::RejectRole);
    closeButton->setObjectName(QStringLiteral("Command2"));
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);

    connect(printButton, &QPushButton::clicked, this, [this] { print(); });
    connect(closeButton, &QPushButton::clicked, this, &QDialog::reject);
    connect(setDef, &QPushButton::clicked, this, [this] { setDefault(); });
    connect(txtHeader_, &QLineEdit::textChanged, this, [this] {
        toFields();
        dlgPrinter::txtHeader_Change(fields_);
        fromFields();
    });
    connect(txtFot_, &QLineEdit::textChanged, this, [this] {
        toFields();
        dlgPrinter::txtFot_Change(fields_);
        fromFields();
    });
}

bool PrinterForm::load() {
    bool loaded = false;
    run_([&] { loaded = dlgPrinter::Form_Load(wb_, views_, fields_); });
    if (!loaded) return false;
    cboPrinter_->clear();
    for (const auto& n : fields_.cboPrinter)
        cboPrinter_->addItem(q(n));
    cmbCopies_->clear();
    for (const auto& n : fields_.cmbCopies)
        cmbCopies_->addItem(q(n));
    fromFields();
    return true;
}

void PrinterForm::setOrientation(int o) {
    if (auto* b = optOrien_->button(o)) b->setChecked(true);
}

void PrinterForm::toFields() {
    fields_.cboPrinterIndex = cboPrinter_->currentIndex();
    fields_.cmbCopiesText = cmbCopies_->currentText().toStdString();
    fields_.optOrien = optOrien_->checkedId() == 1 ? 1 : 0;
    fields_.txtHeader = txtHeader_->text().toStdString();
    fields_.txtFot = txtFot_->text().toStdString();
}

void PrinterForm::fromFields() {
    const QSignalBlocker a(txtHeader_), b(txtFot_);
    cboPrinter_->setCurrentIndex(fields_.cboPrinterIndex);
    cmbCopies_->setCurrentText(q(fields_.cmbCopiesText));
    setOrientation(fields_.optOrien);
    if (txtHeader_->text() != q(fields_.txtHeader)) txtHeader_->setText(q(fields_.txtHeader));
    if (txtFot_->text() != q(fields_.txtFot)) txtFot_->setText(q(fields_.txtFot));
    lblH_->setText(q(fields_.lblH));
    lblF_->setText(q(fields_.lblF));
}

void PrinterForm::print() {
    toFields();
    run_([&] { dlgPrinter::Command1_Click(wb_, fields_); });
    fromFields();
}

void PrinterForm::setDefault() {
    toFields();
    run_([&] { dlgPrinter::cmdSetDef_Click(wb_, fields_); });
    fromFields();
}

} // namespace kv
