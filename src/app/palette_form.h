// The palette chooser's form: the eight remembered palettes as colour scales, one of them picked,
// then OK. The behaviour is dlgPal's (options/palette); the form copies the pick in and out.
#pragma once

#include "app/conditioning_forms.h"
#include "options/palette.h"

#include <QDialog>
#include <array>

class QPushButton;

namespace kv {

class PaletteForm : public QDialog {
  public:
    PaletteForm(Workbench& wb, CommandRunner run, QWidget* parent = nullptr);
    /// Form_Load: every slot shows its palette's scale, nothing is picked.
    void load();
    void ok();
    void cancel();
    /// The slot pictures, 0..7.
    QPushButton* slot(int i) const { return imgPal_[size_t(i)]; }

  protected:
    void reject() override { cancel(); }

  private:
    Workbench& wb_;
    CommandRunner run_;
    PalFields f_;
    std::array<QPushButton*, 8> imgPal_{};
};

/// Shows the chooser modally over `parent`.
void showPaletteForm(QWidget* parent, Workbench& wb, const CommandRunner& run);

} // namespace kv
