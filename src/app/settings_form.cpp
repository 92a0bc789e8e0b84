// The options dialog's pages.
#include "app/settings_form.h"

#include "engine/windows.h"
#include "options/palette.h"
#include "platform/files.h"
#include "state/workbench.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace kv {

namespace {

QString q(const std::string& s) {
    return QString::fromStdString(s);
}

QComboBox* combo(QWidget* parent, const char* name, const std::vector<std::string>& items,
                 bool editable = false) {
    auto* c = new QComboBox(parent);
    c->setObjectName(QString::fromLatin1(name));
    for (const auto& i : items)
        c->addItem(q(i));
    c->setEditable(editable);
    return c;
}

template <class W> W* named(W* w, const char* name) {
    w->setObjectName(QString::fromLatin1(name));
    return w;
}

void setText(QComboBox* c, const std::string& text) {
    c->setCurrentText(q(text));
}

/// A colour's 0x00BBGGRR decimal text as a colour.
QColor fromIni(const std::string& text) {
    const uint32_t v = uint32_t(text.empty() ? 0 : std::stoul("0" + text));
    return QColor(int(v & 0xFF), int((v >> 8) & 0xFF), int((v >> 16) & 0xFF));
}

} // namespace

SettingsForm::SettingsForm(Workbench& wb, CommandRunner run, QWidget* parent)
    : QDialog(parent), wb_(wb), run_(std::move(run)), pages_(new QTabWidget(this)) {
    setObjectName(QStringLiteral("dlgSettings"));
    setWindowTitle(tr("Options"));

    // ---- General ----
    auto* general = new QWidget;
    auto* g = new QFormLayout(general);
    cmbFile_ = combo(general, "cmbFile", {});
    g->addRow(tr("Default file type"), cmbFile_);
    auto* startRow = new QHBoxLayout;
    const char* startNames[] = {"Spectrum", "Oscilloscope", "Phase", "Waterfall"};
    for (int i = 0; i < 4; ++i) {
        chStartUp_[size_t(i)] = new QCheckBox(tr(startNames[i]), general);
        chStartUp_[size_t(i)]->setObjectName(QStringLiteral("chStartUp%1").arg(i));
        startRow->addWidget(chStartUp_[size_t(i)]);
    }
    g->addRow(tr("Open after import"), startRow);
    cmbFFT_ = combo(general, "cmbFFT", {});
    cmbBins_ = combo(general, "cmbBins", {});
    g->addRow(tr("Samples"), cmbFFT_);
    g->addRow(tr("Bins"), cmbBins_);
    cmbPadding_ = combo(general, "cmbPadding", {"Pad with zero", "Truncate"});
    g->addRow(tr("Power of two"), cmbPadding_);
    cmbCh_ = combo(general, "cmbCh", {"Left Chanel", "Right Chanel"});
    g->addRow(tr("Channel"), cmbCh_);
    chDS_ = named(new QCheckBox(tr("DownSampling"), general), "chDS");
    g->addRow(chDS_);
    cmbDS_Mode_ = combo(general, "cmbDS_Mode", {"Average", "Decimate"});
    g->addRow(tr("Downsampling  Mode"), cmbDS_Mode_);
    cmbDS_Step_ = combo(general, "cmbDS_Step", {}, true);
    g->addRow(tr("Downsampling Step"), cmbDS_Step_);
    lblFFT_Res_ = named(new QLabel(general), "lblFFT_Res");
    lblMaxFr_ = named(new QLabel(general), "lblMaxFr");
    lblSamplRate_ = named(new QLabel(general), "lblSamplRate");
    g->addRow(tr("FFT resolution"), lblFFT_Res_);
    g->addRow(tr("Upper Frequency limit"), lblMaxFr_);
    g->addRow(tr("Sampling Rate"), lblSamplRate_);
    pages_->addTab(general, tr("General"));

    // ---- Spectrum ----
    auto* spectrum = new QWidget;
    auto* s = new QFormLayout(spectrum);
    std::vector<std::string> windows;
    for (int w = 1; w <= 10; ++w)
        windows.push_back(windowOptionName(w));
    cmbWindow_ = combo(spectrum, "cmbWindow", windows);
    s->addRow(tr("Window"), cmbWindow_);
    cmbViewMode_ = combo(spectrum, "cmbViewMode", viewModeNames());
    s->addRow(tr("Display Mode"), cmbViewMode_);
    cmbAvBlock_ = combo(spectrum, "cmbAvBlock", {"2", "4", "5", "10", "20", "50", "100"}, true);
    s->addRow(tr("Aver. Block"), cmbAvBlock_);
    XSc_ = combo(spectrum, "XSc", {"Linear", "Logarithmic"});
    YSc_ = combo(spectrum, "YSc", {"Linear", "Logarithmic"});
    s->addRow(tr("X-sc."), XSc_);
    s->addRow(tr("Y-sc."), YSc_);
    cmbPlotRange_ = combo(spectrum, "cmbPlotRange", {"60", "80", "100", "120", "140", "160"}, true);
    cmbOffset_Log_ = combo(spectrum, "cmbOffset_Log", {"0", "-10", "-20", "10", "20"}, true);
    s->addRow(tr("Range"), cmbPlotRange_);
    s->addRow(tr("Offset"), cmbOffset_Log_);
    optdBFS_ = named(new QRadioButton(tr("Show as dBFS"), spectrum), "optdBFS");
    optdBc_ = named(new QRadioButton(tr("Show as dBc"), spectrum), "optdBc");
    auto* dbRow = new QHBoxLayout;
    auto* dbGroup = new QButtonGroup(spectrum);
    for (auto* r : {optdBFS_, optdBc_}) {
        dbGroup->addButton(r);
        dbRow->addWidget(r);
    }
    s->addRow(dbRow);
    cmbTHD_ = combo(spectrum, "cmbTHD", {"dB", "%"});
    s->addRow(tr("THD as:"), cmbTHD_);
    opLG_ = named(new QRadioButton(tr("Line graph"), spectrum), "opLG");
    opBar_ = named(new QRadioButton(tr("Bar graph"), spectrum), "Option2");
    auto* curveRow = new QHBoxLayout;
    auto* curveGroup = new QButtonGroup(spectrum);
    for (auto* r : {opLG_, opBar_}) {
        curveGroup->addButton(r);
        curveRow->addWidget(r);
    }
    s->addRow(curveRow);
    CH_ = named(new QCheckBox(tr("Show Grid"), spectrum), "CH");
    s->addRow(CH_);
    auto* fftColors = new QHBoxLayout;
    fftColors->addWidget(colorButton(&SettingsFields::FFT_LineColor, "Line Color"));
    fftColors->addWidget(colorButton(&SettingsFields::FFT_BackColor, "Background Color"));
    fftColors->addWidget(colorButton(&SettingsFields::FFT_GridColor, "Grid Color"));
    s->addRow(tr("Colours"), fftColors);
    cmbBred_ = combo(spectrum, "cmbBred", {"3", "10"});
    s->addRow(tr("dB bandwith"), cmbBred_);
    cmbPosibl_ = combo(spectrum, "cmbPosibl", {"1", "2", "3"});
    s->addRow(tr("Possible value"), cmbPosibl_);
    pages_->addTab(spectrum, tr("Spectrum"));

    // ---- Oscilloscope ----
    auto* oscope = new QWidget;
    auto* o = new QFormLayout(oscope);
    txtReference_ = named(new QLineEdit(oscope), "txtReference");
    txtRefTime_ = named(new QLineEdit(oscope), "txtRefTime");
    cmbShowVertical_ = combo(oscope, "cmbShowVertical", {"Volt", "Bits"});
    o->addRow(tr("Reference"), txtReference_);
    o->addRow(tr("(Volt/Bits)/Div"), txtRefTime_);
    o->addRow(tr("Vertical scale"), cmbShowVertical_);
    CH_t_ = named(new QCheckBox(tr(" Show Grid"), oscope), "CH_t");
    o->addRow(CH_t_);
    Combo1_ = combo(oscope, "Combo1", {"Not windowed", "Windowed"});
    o->addRow(tr("FFT window on the trace"), Combo1_);
    auto* timeColors = new QHBoxLayout;
    timeColors->addWidget(colorButton(&SettingsFields::Time_LineColor, "Line Color"));
    timeColors->addWidget(colorButton(&SettingsFields::Time_BackColor, "Background Color"));
    timeColors->addWidget(colorButton(&SettingsFields::Time_GridColor, "Grid Color"));
    o->addRow(tr("Colours"), timeColors);
    pages_->addTab(oscope, tr("Oscilloscope"));

    // ---- Phase ----
    auto* phase = new QWidget;
    auto* p = new QFormLayout(phase);
    chFasa_ = named(new QCheckBox(tr("Show Grid"), phase), "chFasa");
    p->addRow(chFasa_);
    auto* phaseColors = new QHBoxLayout;
    phaseColors->addWidget(colorButton(&SettingsFields::F_LineColor, "Line Color"));
    phaseColors->addWidget(colorButton(&SettingsFields::F_BackColor, "Background Color"));
    phaseColors->addWidget(colorButton(&SettingsFields::F_GridColor, "Grid Color"));
    p->addRow(tr("Colours"), phaseColors);
    pages_->addTab(phase, tr("Phase"));

    // ---- Waterfall ----
    auto* waterfall = new QWidget;
    auto* wf = new QFormLayout(waterfall);
    optSpectr_ = named(new QRadioButton(tr("Frequency domain"), waterfall), "optSpectr");
    optTime_ = named(new QRadioButton(tr("Time domain"), waterfall), "optTime");
    wf->addRow(optSpectr_);
    wf->addRow(optTime_);
    cmbWView_ = combo(waterfall, "cmbWView", waterfallZoomNames());
    wf->addRow(tr("View"), cmbWView_);
    pages_->addTab(waterfall, tr("Waterfall"));

    // ---- Palettes ----
    auto* palettes = new QWidget;
    auto* pl = new QGridLayout(palettes);
    for (int i = 0; i < 8; ++i) {
        auto* b = new QPushButton(palettes);
        b->setObjectName(QStringLiteral("imgPal%1").arg(i));
        b->setCheckable(true);
        b->setAutoExclusive(true);
        b->setIconSize(QSize(24, 128));
        pl->addWidget(b, 0, i);
        imgPal_[size_t(i)] = b;
        connect(b, &QPushButton::clicked, this,
                [this, i] { event([&] { dlgSettings::imgPal_Click(wb_, f_, i + 1); }); });
    }
    auto* add = named(new QPushButton(tr("Add palette..."), palettes), "Command5");
    pl->addWidget(add, 1, 0, 1, 8);
    connect(add, &QPushButton::clicked, this,
            [this] { event([&] { dlgSettings::Command5_Click(wb_, f_); }); });
    pages_->addTab(palettes, tr("Palettes"));

    // ---- Buttons ----
    auto* buttons = new QDialogButtonBox(this);
    auto* okButton = buttons->addButton(tr("OK"), QDialogButtonBox::AcceptRole);
    okButton->setObjectName(QStringLiteral("Command3"));
    auto* applyButton = buttons->addButton(tr("Apply"), QDialogButtonBox::ApplyRole);
    applyButton->setObjectName(QStringLiteral("Command2"));
    auto* cancelButton = buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    cancelButton->setObjectName(QStringLiteral("Command1"));
    connect(okButton, &QPushButton::clicked, this, [this] { ok(); });
    connect(applyButton, &QPushButton::clicked, this, [this] { apply(); });
    connect(cancelButton, &QPushButton::clicked, this, [this] { cancel(); });
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(pages_);
    layout->addWidget(buttons);

    // The selections that act at once.
    connect(cmbFFT_, &QComboBox::activated, this,
            [this] { event([&] { dlgSettings::cmbFFT_Click(wb_, f_); }); });
    connect(cmbBins_, &QComboBox::activated, this,
            [this] { event([&] { dlgSettings::cmbBins_Click(wb_, f_); }); });
    connect(chDS_, &QCheckBox::clicked, this,
            [this] { event([&] { dlgSettings::chDS_Click(wb_, f_); }); });
    connect(cmbDS_Step_, &QComboBox::currentTextChanged, this, [this] {
        if (!copying_) event([&] { dlgSettings::cmbDS_Step_Click(wb_, f_); });
    });
    connect(cmbShowVertical_, &QComboBox::activated, this,
            [this] { event([&] { dlgSettings::cmbShowVertical_Click(wb_, f_); }); });
}

QPushButton* SettingsForm::colorButton(std::string SettingsFields::*item, const char* title) {
    auto* b = new QPushButton(tr(title), this);
    colors_.emplace_back(b, item);
    const std::string t = title;
    connect(b, &QPushButton::clicked, this,
            [this, item, t] { event([&] { dlgSettings::Color_Click(wb_, f_.*item, t); }); });
    return b;
}

void SettingsForm::load() {
    run_([&] { dlgSettings::Form_Load(wb_, f_); });
    copying_ = true;
    cmbFile_->clear();
    for (const auto& n : f_.cmbFileList)
        cmbFile_->addItem(q(n));
    cmbFFT_->clear();
    for (const auto& n : f_.cmbFFTList)
        cmbFFT_->addItem(q(n));
    cmbBins_->clear();
    for (const auto& n : f_.cmbBinsList)
        cmbBins_->addItem(q(n));
    cmbDS_Step_->clear();
    for (const auto& n : f_.cmbDS_StepList)
        cmbDS_Step_->addItem(q(n));
    copying_ = false;
    fromFields();
}

void SettingsForm::event(const std::function<void()>& f) {
    if (copying_) return;
    toFields();
    run_(f);
    fromFields();
}

void SettingsForm::toFields() {
    f_.cmbFile = cmbFile_->currentIndex();
    for (size_t i = 0; i < 4; ++i)
        f_.chStartUp[i] = chStartUp_[i]->isChecked();
    f_.cmbFFT = cmbFFT_->currentText().toStdString();
    f_.cmbBins = cmbBins_->currentText().toStdString();
    f_.cmbPadding = cmbPadding_->currentIndex();
    f_.cmbCh = cmbCh_->currentIndex();
    f_.chDS = chDS_->isChecked();
    f_.cmbDS_Mode = cmbDS_Mode_->currentIndex();
    f_.cmbDS_Step = cmbDS_Step_->currentText().toStdString();
    f_.cmbWindow = cmbWindow_->currentIndex();
    f_.cmbViewMode = cmbViewMode_->currentIndex();
    f_.cmbAvBlock = cmbAvBlock_->currentText().toStdString();
    f_.XSc = XSc_->currentIndex();
    f_.YSc = YSc_->currentIndex();
    f_.cmbPlotRange = cmbPlotRange_->currentText().toStdString();
    f_.cmbOffset_Log = cmbOffset_Log_->currentText().toStdString();
    f_.optdBFS = optdBFS_->isChecked();
    f_.cmbTHD = cmbTHD_->currentIndex();
    f_.opLG = opBar_->isChecked() ? 1 : 0;
    f_.CH = CH_->isChecked();
    f_.cmbBred = cmbBred_->currentText().toStdString();
    f_.cmbPosibl = cmbPosibl_->currentText().toStdString();
    f_.txtReference = txtReference_->text().toStdString();
    f_.txtRefTime = txtRefTime_->text().toStdString();
    f_.cmbShowVertical = cmbShowVertical_->currentIndex();
    f_.CH_t = CH_t_->isChecked();
    f_.Combo1 = Combo1_->currentIndex();
    f_.chFasa = chFasa_->isChecked();
    f_.optTime = optTime_->isChecked();
    f_.cmbWView = cmbWView_->currentIndex();
}

void SettingsForm::fromFields() {
    copying_ = true;
    cmbFile_->setCurrentIndex(f_.cmbFile);
    for (size_t i = 0; i < 4; ++i)
        chStartUp_[i]->setChecked(f_.chStartUp[i]);
    setText(cmbFFT_, f_.cmbFFT);
    setText(cmbBins_, f_.cmbBins);
    cmbPadding_->setCurrentIndex(f_.cmbPadding);
    cmbCh_->setCurrentIndex(f_.cmbCh);
    cmbCh_->setEnabled(f_.cmbChEnabled);
    chDS_->setChecked(f_.chDS);
    cmbDS_Mode_->setCurrentIndex(f_.cmbDS_Mode);
    setText(cmbDS_Step_, f_.cmbDS_Step);
    for (QWidget* w : {static_cast<QWidget*>(cmbFFT_), static_cast<QWidget*>(cmbBins_),
                       static_cast<QWidget*>(chDS_)})
        w->setEnabled(f_.generalEnabled);
    cmbDS_Mode_->setEnabled(f_.dsEnabled);
    cmbDS_Step_->setEnabled(f_.dsEnabled);
    lblFFT_Res_->setText(q(f_.lblFFT_Res));
    lblMaxFr_->setText(q(f_.lblMaxFr));
    lblSamplRate_->setText(q(f_.lblSamplRate));
    cmbWindow_->setCurrentIndex(f_.cmbWindow);
    cmbViewMode_->setCurrentIndex(f_.cmbViewMode);
    setText(cmbAvBlock_, f_.cmbAvBlock);
    XSc_->setCurrentIndex(f_.XSc);
    YSc_->setCurrentIndex(f_.YSc);
    setText(cmbPlotRange_, f_.cmbPlotRange);
    setText(cmbOffset_Log_, f_.cmbOffset_Log);
    (f_.optdBFS ? optdBFS_ : optdBc_)->setChecked(true);
    cmbTHD_->setCurrentIndex(f_.cmbTHD);
    (f_.opLG == 1 ? opBar_ : opLG_)->setChecked(true);
    CH_->setChecked(f_.CH);
    setText(cmbBred_, f_.cmbBred);
    setText(cmbPosibl_, f_.cmbPosibl);
    txtReference_->setText(q(f_.txtReference));
    txtReference_->setEnabled(f_.txtReferenceEnabled);
    txtRefTime_->setText(q(f_.txtRefTime));
    cmbShowVertical_->setCurrentIndex(f_.cmbShowVertical);
    CH_t_->setChecked(f_.CH_t);
    Combo1_->setCurrentIndex(f_.Combo1);
    chFasa_->setChecked(f_.chFasa);
    (f_.optTime ? optTime_ : optSpectr_)->setChecked(true);
    cmbWView_->setCurrentIndex(f_.cmbWView);
    paintColors();
    paintPalettes();
    copying_ = false;
}

void SettingsForm::paintColors() {
    for (auto& [button, item] : colors_) {
        QPixmap swatch(14, 14);
        swatch.fill(fromIni(f_.*item));
        button->setIcon(QIcon(swatch));
    }
}

void SettingsForm::paintPalettes() {
    for (size_t i = 0; i < 8; ++i) {
        const auto table = readPalette(joinPath(paletteFolder(wb_.st), f_.palSlots[i])).table;
        // The colour scale: value 0 at the foot, 255 on top.
        QImage scale(24, 256, QImage::Format_RGB32);
        for (int y = 0; y < 256; ++y)
            for (int x = 0; x < 24; ++x)
                scale.setPixel(x, y, 0xFF000000u | table[size_t(255 - y)]);
        imgPal_[i]->setIcon(QIcon(QPixmap::fromImage(scale.scaled(24, 128))));
        imgPal_[i]->setToolTip(q(f_.palSlots[i]));
        imgPal_[i]->setChecked(f_.palChoice == int(i) + 1);
    }
}

void SettingsForm::ok() {
    bool stays = false;
    toFields();
    run_([&] { stays = dlgSettings::Command3_Click(wb_, f_); });
    if (!stays) done(QDialog::Accepted);
}

void SettingsForm::apply() {
    bool stays = false;
    toFields();
    run_([&] { stays = dlgSettings::Command2_Click(wb_, f_); });
    if (!stays) done(QDialog::Accepted);
}

void SettingsForm::cancel() {
    run_([&] { dlgSettings::Command1_Click(wb_, f_); });
    done(QDialog::Rejected);
}

} // namespace kv
