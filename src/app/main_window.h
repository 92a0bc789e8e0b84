// The workbench's main window: menus, toolbar and status bar mirroring the command model, and
// the MDI area that holds the views.
#pragma once

#include "app/app_view_host.h"
#include "app/qt_host.h"
#include "core/command_state.h"
#include "core/program_state.h"
#include "core/workbench.h"

#include <QMainWindow>
#include <map>

class QAction;
class QLabel;
class QMdiArea;
class QToolBar;

namespace kv {

class MainWindow : public QMainWindow {
    Q_OBJECT
  public:
    /// `home` is the folder with SP.ini and the working files.
    explicit MainWindow(const std::string& home, QWidget* parent = nullptr);
    ~MainWindow() override;

    ProgramState& state() { return st_; }
    CommandState& commands() { return cmd_; }
    Workbench& workbench() { return wb_; }
    QtHost& host() { return host_; }
    QMdiArea* mdiArea() const { return mdi_; }
    /// The status panel labels, 1..9.
    QLabel* panelLabel(int number) const { return panels_.at(size_t(number - 1)); }
    QAction* menuAction(const std::string& name) const;
    QAction* toolAction(int number) const;

    /// Imports `path` as if the user had picked it in the Import dialog (with the filter entry
    /// `filterIndex`, 0 for the first entry matching the file's extension).
    void importFile(const std::string& path, int filterIndex = 0);
    /// Runs the Import command with the dialog.
    void runImport();
    /// Copies the command model into the widgets.
    void syncFromModel();

  protected:
    void closeEvent(QCloseEvent* e) override;
    void dragEnterEvent(QDragEnterEvent* e) override;
    void dropEvent(QDropEvent* e) override;

  private:
    void buildMenus();
    void buildToolbar();
    void buildStatusBar();
    void onToolButton(int number);

    ProgramState st_;
    CommandState cmd_;
    QtHost host_;
    QMdiArea* mdi_;
    AppViewHost views_;
    Workbench wb_;
    std::map<std::string, QAction*> menuActions_;
    std::map<int, QAction*> toolActions_;
    std::vector<QLabel*> panels_;
    QToolBar* toolbar_ = nullptr;
    bool unloaded_ = false;
};

} // namespace kv
