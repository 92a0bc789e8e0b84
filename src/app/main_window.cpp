// The main window.
#include "app/main_window.h"

#include "core/lifecycle.h"
#include "import/file_filters.h"
#include "import/open.h"

#include <QAction>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLabel>
#include <QMdiArea>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QSettings>
#include <QStatusBar>
#include <QToolBar>

namespace kv {

MainWindow::MainWindow(const std::string& home, QWidget* parent)
    : QMainWindow(parent), host_(this), mdi_(new QMdiArea(this)),
      views_(mdi_), wb_{st_, cmd_, host_, views_} {
    st_.AppPath = home;
    views_.onViewClosed = [this] { syncFromModel(); };
    setCentralWidget(mdi_);
    setAcceptDrops(true);
    buildMenus();
    buildToolbar();
    buildStatusBar();
    MDIForm_Load(wb_);
    QSettings s;
    if (!restoreGeometry(s.value("MainWindow/geometry").toByteArray())) resize(1200, 800);
    syncFromModel();
}

MainWindow::~MainWindow() {
    views_.shutdown();
    delete mdi_;
    mdi_ = nullptr;
}

QAction* MainWindow::menuAction(const std::string& name) const {
    auto it = menuActions_.find(name);
    return it == menuActions_.end() ? nullptr : it->second;
}

QAction* MainWindow::toolAction(int number) const {
    auto it = toolActions_.find(number);
    return it == toolActions_.end() ? nullptr : it->second;
}

void MainWindow::buildMenus() {
    std::map<std::string, QMenu*> menus;
    for (const auto& e : cmd_.menus()) {
        const QString caption = QString::fromStdString(e.caption);
        const bool hasChildren =
            std::any_of(cmd_.menus().begin(), cmd_.menus().end(),
                        [&](const MenuEntry& c) { return c.parent == e.name; });
        QMenu* parentMenu = e.parent.empty() ? nullptr : menus[e.parent];
        if (hasChildren) {
            QMenu* m = parentMenu ? parentMenu->addMenu(caption) : new QMenu(caption, this);
            if (!parentMenu && e.visible) menuBar()->addMenu(m);
            menus[e.name] = m;
            menuActions_[e.name] = m->menuAction();
        } else if (parentMenu) {
            QAction* a =
                e.caption == "-" ? parentMenu->addSeparator() : parentMenu->addAction(caption);
            menuActions_[e.name] = a;
        }
    }
    connect(menuAction("mnuOpen"), &QAction::triggered, this, [this] { runImport(); });
    connect(menuAction("mnuExit"), &QAction::triggered, this, [this] { close(); });
    connect(menuAction("mnuCasc"), &QAction::triggered, mdi_, &QMdiArea::cascadeSubWindows);
    connect(menuAction("mnuHor"), &QAction::triggered, mdi_, &QMdiArea::tileSubWindows);
    connect(menuAction("mnuVert"), &QAction::triggered, mdi_, &QMdiArea::tileSubWindows);
    menuAction("mnuOpen")->setShortcut(QKeySequence::Open);
}

void MainWindow::buildToolbar() {
    toolbar_ = addToolBar(tr("Commands"));
    toolbar_->setObjectName("Commands");
    for (const auto& b : cmd_.buttons()) {
        if (b.key.empty()) continue;
        QAction* a = toolbar_->addAction(QString::fromStdString(b.key));
        a->setToolTip(QString::fromStdString(b.tip));
        a->setCheckable(b.toggle);
        toolActions_[b.number] = a;
        const int n = b.number;
        connect(a, &QAction::triggered, this, [this, n] { onToolButton(n); });
    }
}

void MainWindow::buildStatusBar() {
    for (int i = 0; i < CommandState::kPanels; ++i) {
        auto* l = new QLabel(this);
        l->setMinimumWidth(60);
        statusBar()->addWidget(l, i == 0 ? 0 : 1);
        panels_.push_back(l);
    }
}

void MainWindow::onToolButton(int number) {
    const std::string& key = cmd_.button(number).key;
    if (key == "Import") runImport();
}

void MainWindow::syncFromModel() {
    for (const auto& e : cmd_.menus()) {
        if (QAction* a = menuAction(e.name)) {
            a->setEnabled(e.enabled);
            if (e.checked) a->setCheckable(true);
            a->setChecked(e.checked);
        }
    }
    for (const auto& b : cmd_.buttons()) {
        if (QAction* a = toolAction(b.number)) {
            a->setVisible(b.visible);
            a->setEnabled(b.enabled);
            if (b.toggle) a->setChecked(b.down);
        }
    }
    for (int p = 1; p <= CommandState::kPanels; ++p)
        panels_[size_t(p - 1)]->setText(QString::fromStdString(cmd_.panel(p)));
    setWindowTitle(QString::fromStdString(cmd_.caption).trimmed());
}

void MainWindow::runImport() {
    mnuOpen_Click(wb_);
    syncFromModel();
}

void MainWindow::importFile(const std::string& path, int filterIndex) {
    if (filterIndex <= 0) filterIndex = filterIndexForFile(st_.Fil, path);
    host_.presetNextOpen(path, filterIndex <= 0 ? 1 : filterIndex);
    runImport();
}

void MainWindow::closeEvent(QCloseEvent* e) {
    QSettings s;
    s.setValue("MainWindow/geometry", saveGeometry());
    if (!unloaded_) {
        views_.shutdown();
        MDIForm_Unload(wb_);
        unloaded_ = true;
    }
    e->accept();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* e) {
    if (e->mimeData()->hasUrls()) e->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* e) {
    const auto urls = e->mimeData()->urls();
    if (urls.isEmpty() || !urls.first().isLocalFile()) return;
    importFile(urls.first().toLocalFile().toStdString());
}

} // namespace kv
