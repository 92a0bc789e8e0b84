// The options dialog's form: one page per group of settings, widgets only. The behaviour is in
// options/settings_dialog; each event copies the widgets into the fields, runs it inside the main
// window's command run, and copies the fields back.
#pragma once

#include "app/output_forms.h"
#include "options/settings_dialog.h"

#include <QDialog>
#include <array>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTabWidget;

namespace kv {

class SettingsForm : public QDialog {
    Q_OBJECT
  public:
    SettingsForm(Workbench& wb, CommandRunner run, QWidget* parent = nullptr);
    /// Form_Load: the widgets show the settings in force.
    void load();
    QTabWidget* pages() const { return pages_; }
    /// The three buttons, by their roles.
    void ok();
    void apply();
    void cancel();

  protected:
    void reject() override { cancel(); }

  private:
    void toFields();
    void fromFields();
    /// Runs one event over the fields: widgets in, behaviour, widgets out.
    void event(const std::function<void()>& f);
    QPushButton* colorButton(std::string SettingsFields::*item, const char* title);
    void paintColors();
    void paintPalettes();

    Workbench& wb_;
    CommandRunner run_;
    SettingsFields f_;
    bool copying_ = false;
    QTabWidget* pages_;
    // General.
    QComboBox *cmbFile_, *cmbFFT_, *cmbBins_, *cmbPadding_, *cmbCh_, *cmbDS_Mode_, *cmbDS_Step_;
    std::array<QCheckBox*, 4> chStartUp_{};
    QCheckBox* chDS_;
    QLabel *lblFFT_Res_, *lblMaxFr_, *lblSamplRate_;
    // Spectrum.
    QComboBox *cmbWindow_, *cmbViewMode_, *cmbAvBlock_, *XSc_, *YSc_, *cmbPlotRange_,
        *cmbOffset_Log_, *cmbTHD_, *cmbBred_, *cmbPosibl_;
    QRadioButton *optdBFS_, *optdBc_, *opLG_, *opBar_;
    QCheckBox* CH_;
    // Oscilloscope, phase, waterfall.
    QLineEdit *txtReference_, *txtRefTime_;
    QComboBox *cmbShowVertical_, *Combo1_, *cmbWView_;
    QCheckBox *CH_t_, *chFasa_;
    QRadioButton *optSpectr_, *optTime_;
    std::vector<std::pair<QPushButton*, std::string SettingsFields::*>> colors_;
    // Palettes.
    std::array<QPushButton*, 8> imgPal_{};
};

} // namespace kv
