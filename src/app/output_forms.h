// The forms of the file-information window and the print dialog: widgets only. Their behaviour
// is in options/file_info and output/printing; each event copies the widgets into the fields,
// runs the behaviour inside the main window's command run, and copies the fields back.
#pragma once

#include "options/file_info.h"
#include "output/printing.h"

#include <QDialog>
#include <functional>

class QButtonGroup;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;

namespace kv {

struct Workbench;
class ModelViewHost;

/// Runs one event of a form the way the main window runs a command.
using CommandRunner = std::function<void(const std::function<void()>&)>;

/// `frmFileInfo`: one list of what the reader found in the source.
class FileInfoForm : public QDialog {
    Q_OBJECT
  public:
    FileInfoForm(Workbench& wb, CommandRunner run, QWidget* parent = nullptr);
    /// Form_Load: the list is filled anew.
    void load();
    QListWidget* list() const { return list_; }

  private:
    Workbench& wb_;
    CommandRunner run_;
    FileInfoFields fields_;
    QListWidget* list_;
};

/// `dlgPrinter`.
class PrinterForm : public QDialog {
    Q_OBJECT
  public:
    PrinterForm(Workbench& wb, const ModelViewHost& views, CommandRunner run,
                QWidget* parent = nullptr);
    /// Form_Load; false when there was no picture to print.
    bool load();

    QComboBox* cboPrinter() const { return cboPrinter_; }
    QComboBox* cmbCopies() const { return cmbCopies_; }
    QLineEdit* txtHeader() const { return txtHeader_; }
    QLineEdit* txtFot() const { return txtFot_; }
    QLabel* lblH() const { return lblH_; }
    QLabel* lblF() const { return lblF_; }
    /// Orientation: 0 portrait, 1 landscape.
    void setOrientation(int o);
    /// The Print button.
    void print();
    void setDefault();

  private:
    void toFields();
    void fromFields();

    Workbench& wb_;
    const ModelViewHost& views_;
    CommandRunner run_;
    PrinterFields fields_;
    QComboBox* cboPrinter_;
    QComboBox* cmbCopies_;
    QButtonGroup* optOrien_;
    QLineEdit* txtHeader_;
    QLineEdit* txtFot_;
    QLabel* lblH_;
    QLabel* lblF_;
};

} // namespace kv
