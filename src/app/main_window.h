// The workbench's main window: menus, toolbar and status bar mirroring the command model, and
// the MDI area that holds the views. Every click goes to the core; the widgets only follow.
#pragma once

#include "app/app_view_host.h"
#include "app/output_forms.h"
#include "app/qt_host.h"
#include "platform/work_folder.h"
#include "state/command_state.h"
#include "state/program_state.h"
#include "state/workbench.h"

#include <QMainWindow>
#include <QPointer>
#include <functional>
#include <map>

class QAction;
class QLabel;
class QMdiArea;
class QMenu;
class QToolBar;

namespace kv {

class MarkersWindow;

class MainWindow : public QMainWindow {
    Q_OBJECT
  public:
    /// `home` is the folder with SP.ini and the working files. With `host`, dialogs, messages
    /// and yields go there instead of to Qt (tests script the user that way).
    explicit MainWindow(const std::string& home, Host* host = nullptr, QWidget* parent = nullptr);
    ~MainWindow() override;

    ProgramState& state() { return st_; }
    CommandState& commands() { return cmd_; }
    Workbench& workbench() { return wb_; }
    QtHost& qtHost() { return qtHost_; }
    AppViewHost& viewHost() { return views_; }
    QMdiArea* mdiArea() const { return mdi_; }
    QToolBar* toolBar() const { return toolbar_; }
    QToolBar* viewToolBar() const { return viewToolbar_; }
    /// The status panel labels, 1..9.
    QLabel* panelLabel(int number) const { return panels_.at(size_t(number - 1)); }
    QAction* menuAction(const std::string& name) const;
    QAction* toolAction(int number) const;
    /// A hidden pop-up menu (mnuMyPopUp, mnuPup, mnuPupT, mnuTimeY).
    QMenu* popupMenu(const std::string& name) const;
    /// The marker table, while it is open.
    MarkersWindow* markersWindow() const { return markersWindow_; }

    /// Imports `path` as if the user had picked it in the Import dialog (with the filter entry
    /// `filterIndex`, 0 for the first entry matching the file's extension).
    void importFile(const std::string& path, int filterIndex = 0);
    /// Takes the home folder's lock for this workbench; false (the user told why) when another
    /// workbench has it, and then this one must close.
    bool claimHome();
    /// Runs the Import command with the dialog.
    void runImport();
    /// Clicks toolbar button `number` as the user would.
    void pressToolButton(int number) { onToolButton(number); }
    /// Copies the command model into the widgets.
    void syncFromModel();
    /// The file-information window, once it has been shown.
    FileInfoForm* fileInfoForm() const { return fileInfo_; }

  protected:
    void closeEvent(QCloseEvent* e) override;
    void dragEnterEvent(QDragEnterEvent* e) override;
    void dropEvent(QDropEvent* e) override;
    /// The MDI area resized: tiled views follow.
    bool eventFilter(QObject* watched, QEvent* e) override;
    QWidget* mdiViewport_ = nullptr;

  private:
    void buildMenus();
    void buildToolbar();
    void buildStatusBar();
    void buildTraceKeys();
    void onMenu(const std::string& name);
    void onToolButton(int number);
    void onSubWindowActivated();
    /// The arrow keys: the active view's trace scroll bar (the Spectrum's when the active view
    /// has none) moves one position, which runs the chain as a click on its arrow does.
    void stepTrace(int delta);
    /// Runs a command; a failure that ends it (a data set gone mid-loop) leaves the workbench
    /// idle. A close asked for while a command ran happens when the outermost one returns.
    void runCommand(const std::function<void()>& f);
    void syncPanels();
    /// Shows the form of the dialog `name` (the core asked for it).
    void showDialogForm(const std::string& name, bool modal);

    ProgramState st_;
    CommandState cmd_;
    QtHost qtHost_;
    QMdiArea* mdi_;
    AppViewHost views_;
    Workbench wb_;
    HomeLock homeLock_;
    std::map<std::string, QAction*> menuActions_;
    std::map<std::string, QMenu*> popups_;
    std::map<int, QAction*> toolActions_;
    std::vector<QLabel*> panels_;
    static constexpr int kFirstViewButton = 21; // the second toolbar row starts here
    QToolBar* toolbar_ = nullptr;
    QToolBar* viewToolbar_ = nullptr;
    int commandDepth_ = 0;
    bool closePending_ = false;
    bool unloaded_ = false;
    MarkersWindow* markersWindow_ = nullptr;
    /// The workbench's dialogs by name (the reference dialogs, the marker table).
    void showDialog(const std::string& name, bool modal);
    QPointer<FileInfoForm> fileInfo_;
};

} // namespace kv
