// The palette chooser's window.
#include "app/palette_form.h"

#include "platform/files.h"
#include "state/workbench.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QIcon>
#include <QImage>
#include <QPixmap>
#include <QPushButton>

namespace kv {

namespace {

/// A slot's picture: its palette as a colour scale, value 0 at the foot. A slot whose file
/// cannot be read shows the grey scale, as a view would.
QIcon scaleIcon(const ColorTable& table) {
    QImage scale(24, 128, QImage::Format_RGB32);
    for (int y = 0; y < 128; ++y) {
        auto* row = reinterpret_cast<QRgb*>(scale.scanLine(y));
        const QRgb c = table[size_t(255 - 2 * y)];
        for (int x = 0; x < 24; ++x)
            row[x] = c;
    }
    return QIcon(QPixmap::fromImage(scale));
}

} // namespace

PaletteForm::PaletteForm(Workbench& wb, CommandRunner run, QWidget* parent)
    : QDialog(parent), wb_(wb), run_(std::move(run)) {
    setObjectName(QStringLiteral("dlgPal"));
    setWindowTitle(QStringLiteral("Palette"));
    auto* grid = new QGridLayout(this);
    for (int i = 0; i < 8; ++i) {
        auto* b = new QPushButton(this);
        b->setObjectName(QStringLiteral("imgPal%1").arg(i));
        // The checked look is the frame round the picked picture.
        b->setCheckable(true);
        b->setAutoExclusive(true);
        b->setIconSize(QSize(24, 128));
        grid->addWidget(b, 0, i);
        imgPal_[size_t(i)] = b;
        connect(b, &QPushButton::clicked, this,
                [this, i] { run_([&] { dlgPal::imgPal_Click(f_, i); }); });
    }
    auto* buttons = new QHBoxLayout;
    auto* okButton = new QPushButton(QStringLiteral("OK"), this);
    okButton->setObjectName(QStringLiteral("OKButton"));
    auto* cancelButton = new QPushButton(QStringLiteral("Cancel"), this);
    cancelButton->setObjectName(QStringLiteral("CancelButton"));
    buttons->addStretch();
    buttons->addWidget(okButton);
    buttons->addWidget(cancelButton);
    grid->addLayout(buttons, 1, 0, 1, 8);
    connect(okButton, &QPushButton::clicked, this, &PaletteForm::ok);
    connect(cancelButton, &QPushButton::clicked, this, &PaletteForm::cancel);
}

void PaletteForm::load() {
    run_([&] { dlgPal::Form_Load(wb_, f_); });
    const ProgramState& st = wb_.st;
    for (size_t i = 0; i < imgPal_.size(); ++i) {
        const std::string& file = st.pal[i];
        imgPal_[i]->setIcon(scaleIcon(tableOrGrey(palettePath(st, file))));
        imgPal_[i]->setToolTip(QString::fromStdString(file));
        // Nothing is picked when the chooser comes up.
        imgPal_[i]->setAutoExclusive(false);
        imgPal_[i]->setChecked(false);
        imgPal_[i]->setAutoExclusive(true);
    }
}

void PaletteForm::ok() {
    bool stays = true;
    run_([&] { stays = dlgPal::OKButton_Click(wb_, f_); });
    if (!stays) done(QDialog::Accepted);
}

void PaletteForm::cancel() {
    run_([&] { dlgPal::CancelButton_Click(wb_, f_); });
    done(QDialog::Rejected);
}

void showPaletteForm(QWidget* parent, Workbench& wb, const CommandRunner& run) {
    PaletteForm form(wb, run, parent);
    form.load();
    form.exec();
}

} // namespace kv
