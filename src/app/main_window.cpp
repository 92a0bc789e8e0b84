// The main window.
#include "app/main_window.h"
#include "app/markers_window.h"
#include "app/reference_dialog.h"
#include "app/text_dialog.h"
#include "views/spectrum/spectrum_form.h"

#include "app/settings_form.h"
#include "app/view_window.h"
#include "commands/commands.h"
#include "commands/lifecycle.h"
#include "commands/open.h"
#include "import/file_filters.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QIcon>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QSettings>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>
#include <algorithm>
#include <set>

// The compiled-in icons live in a static library: their resource must be registered by hand,
// and the macro that does it must stand outside any namespace.
static void initToolbarIcons() {
    Q_INIT_RESOURCE(toolbar_icons);
    Q_INIT_RESOURCE(app_icon);
}

namespace kv {

namespace {

// Keyboard shortcuts a desktop user expects; the captions keep their own "&" mnemonics.
const std::map<std::string, QKeySequence>& menuShortcuts() {
    static const std::map<std::string, QKeySequence> m = {
        {"mnuOpen", QKeySequence(Qt::CTRL | Qt::Key_O)},
        {"mnuOimp", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O)},
        {"mnuExport", QKeySequence(Qt::CTRL | Qt::Key_E)},
        {"mnuSw", QKeySequence(Qt::CTRL | Qt::Key_S)},
        {"mnuPrint", QKeySequence(Qt::CTRL | Qt::Key_P)},
        {"mnuExit", QKeySequence(Qt::CTRL | Qt::Key_Q)},
        {"mnuFInf", QKeySequence(Qt::CTRL | Qt::Key_I)},
        {"mnuFFT", QKeySequence(Qt::Key_F2)},
        {"mnuTime", QKeySequence(Qt::Key_F3)},
        {"mnuPhase", QKeySequence(Qt::Key_F4)},
        {"mnuBscan", QKeySequence(Qt::Key_F5)},
        {"mnuOlOp", QKeySequence(Qt::Key_F6)},
        {"mnuZoomIn", QKeySequence(Qt::CTRL | Qt::Key_Plus)},
        {"mnuZoomOut", QKeySequence(Qt::CTRL | Qt::Key_Minus)},
        {"mnuNoZoom", QKeySequence(Qt::CTRL | Qt::Key_0)},
        {"mnuGSH", QKeySequence(Qt::Key_F1)},
    };
    return m;
}

const std::map<int, QKeySequence>& toolShortcuts() {
    static const std::map<int, QKeySequence> m = {
        {9, QKeySequence(Qt::CTRL | Qt::Key_Home)},   {10, QKeySequence(Qt::CTRL | Qt::Key_Left)},
        {11, QKeySequence(Qt::CTRL | Qt::Key_Space)}, {12, QKeySequence(Qt::CTRL | Qt::Key_Right)},
        {13, QKeySequence(Qt::CTRL | Qt::Key_End)},
    };
    return m;
}

// Entries that carry a tick.
const std::set<std::string>& checkableMenus() {
    static const std::set<std::string> s = {
        "mnuFFT",      "mnuTime",    "mnuPhase", "mnuBscan",   "mnuOlOp", "mnuGPR",  "mnuLevel",
        "mnuThd",      "mnuThdN",    "mnuSdr",   "mnuSnd",     "mnuSnr",  "mnuEnob", "mnuWhite",
        "mnuBCF",      "mnuFlip",    "mnuMxA",   "mnuMa",      "mnuPP",   "mnuRef",  "mnuRefO",
        "mnuRefPh",    "mnuMarkers", "mnuCur",   "mnuxl",      "mnuxlog", "mnuylin", "mnuYlog",
        "mnuCurvLine", "mnuCurvBar", "mnuSpan",  "mnuAutotune"};
    return s;
}

// A status panel that shortens its text with "..." when the bar is too narrow for all of it,
// rather than pushing its neighbours over one another; the whole text stays its tip.
class StatusPanel : public QLabel {
  public:
    using QLabel::QLabel;
    /// Shows `t`. The width it asks for only grows, so playback does not make the bar jump.
    void showText(const QString& t) {
        setText(t);
        setToolTip(t);
        widest_ = std::max(widest_, fontMetrics().horizontalAdvance(t) + 2 * frameWidth() + 12);
        updateGeometry();
    }
    QSize sizeHint() const override { return {widest_, QLabel::sizeHint().height()}; }
    QSize minimumSizeHint() const override {
        return {fontMetrics().horizontalAdvance(QStringLiteral("Ab...")) + 2 * frameWidth() + 8,
                QLabel::minimumSizeHint().height()};
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        drawFrame(&p);
        const QRect r = contentsRect().adjusted(3, 0, -3, 0);
        p.drawText(r, Qt::AlignVCenter | Qt::AlignLeft,
                   fontMetrics().elidedText(text(), Qt::ElideRight, r.width()));
    }

  private:
    int widest_ = 40;
};

QIcon iconForKey(const std::string& key) {
    static const std::map<std::string, std::string> names = {
#include "app/toolbar_icon_names.inc"
    };
    auto it = names.find(key);
    if (it == names.end()) return {};
    return QIcon(QStringLiteral(":/ico/%1.svg").arg(QString::fromStdString(it->second)));
}

} // namespace

MainWindow::MainWindow(const std::string& home, Host* host, QWidget* parent)
    : QMainWindow(parent), qtHost_(this), mdi_(new QMdiArea(this)),
      views_(mdi_), wb_{st_, cmd_, host ? *host : static_cast<Host&>(qtHost_), views_} {
    initToolbarIcons();
    // Our own drawing, for the window and (through the application) the task bar and dialogs.
    const QIcon appIcon(QStringLiteral(":/app/kelvorandine.svg"));
    QApplication::setWindowIcon(appIcon);
    setWindowIcon(appIcon);
    st_.AppPath = home;
    views_.onViewClosed = [this] { syncFromModel(); };
    views_.onTraceShown = [this] { syncPanels(); };
    views_.onViewClicked = [this] { syncFromModel(); };
    views_.runCommand = [this](const std::function<void()>& f) { runCommand(f); };
    views_.otherDialog = [this](const std::string& name, bool modal) { showDialog(name, modal); };
    setCentralWidget(mdi_);
    mdiViewport_ = mdi_->viewport();
    mdiViewport_->installEventFilter(this);
    mdi_->setBackground(QColor(0x78, 0x86, 0x8f));
    setAcceptDrops(true);
    buildMenus();
    views_.popups[ViewId::Spectrum] = popupMenu("mnuMyPopUp");
    buildToolbar();
    buildStatusBar();
    buildTraceKeys();
    connect(mdi_, &QMdiArea::subWindowActivated, this, [this] { onSubWindowActivated(); });
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

QMenu* MainWindow::popupMenu(const std::string& name) const {
    auto it = popups_.find(name);
    return it == popups_.end() ? nullptr : it->second;
}

void MainWindow::buildMenus() {
    std::map<std::string, QMenu*> menus;
    for (const auto& e : cmd_.menus()) {
        const QString caption = QString::fromStdString(e.caption);
        const std::string name(e.name), parent(e.parent);
        const bool hasChildren =
            std::any_of(cmd_.menus().begin(), cmd_.menus().end(),
                        [&](const MenuEntry& c) { return c.parent == e.name; });
        QMenu* parentMenu = e.parent.empty() ? nullptr : menus[parent];
        if (hasChildren) {
            QMenu* m = parentMenu ? parentMenu->addMenu(caption) : new QMenu(caption, this);
            m->setObjectName(QString::fromStdString(name));
            if (!parentMenu && e.visible) menuBar()->addMenu(m);
            if (!parentMenu && !e.visible) popups_[name] = m;
            menus[name] = m;
            menuActions_[name] = m->menuAction();
            continue;
        }
        if (!parentMenu) continue;
        QAction* a = e.caption == "-" ? parentMenu->addSeparator() : parentMenu->addAction(caption);
        a->setObjectName(QString::fromStdString(name));
        a->setCheckable(checkableMenus().count(name) != 0);
        if (auto it = menuShortcuts().find(name); it != menuShortcuts().end())
            a->setShortcut(it->second);
        menuActions_[name] = a;
        if (e.caption == "-") continue;
        connect(a, &QAction::triggered, this, [this, name] { onMenu(name); });
    }
}

void MainWindow::buildToolbar() {
    // Two rows: what every view has (files, transport, views), then the active view's own
    // commands, so that no button hides behind an overflow arrow on an ordinary screen.
    toolbar_ = addToolBar(tr("Commands"));
    toolbar_->setObjectName("Commands");
    addToolBarBreak();
    viewToolbar_ = addToolBar(tr("View commands"));
    viewToolbar_->setObjectName("ViewCommands");
    for (QToolBar* t : {toolbar_, viewToolbar_})
        t->setIconSize(QSize(24, 24));
    for (const auto& b : cmd_.buttons()) {
        QToolBar* t = b.number < kFirstViewButton ? toolbar_ : viewToolbar_;
        if (b.key.empty()) {
            toolActions_[b.number] = t->addSeparator();
            continue;
        }
        const std::string key(b.key);
        QAction* a = t->addAction(iconForKey(key), QString::fromStdString(key));
        a->setObjectName(QStringLiteral("tb%1").arg(b.number));
        a->setToolTip(QString::fromStdString(std::string(b.tip)));
        a->setCheckable(b.toggle);
        if (auto it = toolShortcuts().find(b.number); it != toolShortcuts().end())
            a->setShortcut(it->second);
        toolActions_[b.number] = a;
        const int n = b.number;
        connect(a, &QAction::triggered, this, [this, n] { onToolButton(n); });
    }
}

void MainWindow::buildStatusBar() {
    for (int i = 0; i < CommandState::kPanels; ++i) {
        auto* l = new StatusPanel(this);
        l->setObjectName(QStringLiteral("panel%1").arg(i + 1));
        l->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        // Panel 6 carries the peak read-out ("Peak: -6 dBFS 4.69kHz"), the longest text: it
        // gets the largest share of the room; every panel gives way before they overlap.
        statusBar()->addWidget(l, i == 0 ? 1 : i == 5 ? 3 : 1);
        panels_.push_back(l);
    }
}

void MainWindow::buildTraceKeys() {
    // Left/Right step one trace; Home/End are the First and End buttons. They belong to the
    // whole window, so they work wherever the focus is inside it.
    const std::pair<QKeySequence, std::function<void()>> keys[] = {
        {QKeySequence(Qt::Key_Left), [this] { stepTrace(-1); }},
        {QKeySequence(Qt::Key_Right), [this] { stepTrace(1); }},
        {QKeySequence(Qt::Key_Home), [this] { onToolButton(9); }},
        {QKeySequence(Qt::Key_End), [this] { onToolButton(13); }},
    };
    for (const auto& [key, run] : keys) {
        auto* a = new QAction(this);
        a->setShortcut(key);
        a->setShortcutContext(Qt::WindowShortcut);
        connect(a, &QAction::triggered, this, run);
        addAction(a);
    }
}

void MainWindow::stepTrace(int delta) {
    if (commandDepth_ > 0 || st_.TempPath.empty()) return;
    ViewWindow* w = nullptr;
    if (const auto v = views_.viewOf(mdi_->activeSubWindow())) w = views_.viewWindow(*v);
    if (!w || !w->scrollBar()->isVisible() || !w->scrollBar()->isEnabled())
        w = views_.viewWindow(ViewId::Spectrum);
    if (!w || !w->scrollBar()->isEnabled()) return;
    QScrollBar* s = w->scrollBar();
    runCommand([&] { s->setValue(s->value() + delta); });
}

void MainWindow::showDialog(const std::string& name, bool modal) {
    if (name == "frmFileInfo" || name == "dlgSettings" || name == "dlgPrinter")
        return showDialogForm(name, modal);
    if (name == "dlgText") {
        const auto v = ViewId(st_.ActiveView);
        if (ViewModel* m = views_.model(v))
            showTextDialog(this, wb_, *m, [this, v] {
                if (auto* w = views_.viewWindow(v)) w->refresh();
            });
        return;
    }
    if (name != "dlgMarkers") {
        showReferenceDialog(this, wb_, name,
                            [this](const std::function<void()>& f) { runCommand(f); });
        return;
    }
    if (!markersWindow_) {
        const auto form = [this] {
            return views_.modelOf<spectrum::SpectrumForm>(ViewId::Spectrum);
        };
        markersWindow_ = new MarkersWindow(this, form, [this, form](int row) {
            runCommand([&] {
                if (auto* f = form()) f->markerRowClicked(row);
            });
            if (auto* w = views_.viewWindow(ViewId::Spectrum)) w->refresh();
        });
    }
    markersWindow_->refill();
    markersWindow_->show();
    markersWindow_->raise();
}

void MainWindow::runCommand(const std::function<void()>& f) {
    ++commandDepth_;
    try {
        f();
    } catch (...) {
        // A trace read that fails ends the command, as it always has; the workbench must not
        // stay busy because of it.
        st_.Idle = true;
    }
    --commandDepth_;
    syncFromModel();
    if (commandDepth_ == 0 && closePending_) {
        closePending_ = false;
        QTimer::singleShot(0, this, &QWidget::close);
    }
}

void MainWindow::onMenu(const std::string& name) {
    if (name == "mnuExit") {
        close();
        return;
    }
    runCommand([&] { menuCommand(wb_, name); });
}

void MainWindow::onToolButton(int number) {
    runCommand([&] { pressButton(wb_, number); });
}

void MainWindow::onSubWindowActivated() {
    const auto v = views_.viewOf(mdi_->activeSubWindow());
    if (!v || views_.isUnloading()) return;
    viewActivated(wb_, *v);
    syncFromModel();
}

void MainWindow::syncPanels() {
    for (int p = 1; p <= CommandState::kPanels; ++p) {
        const QString t = QString::fromStdString(cmd_.panel(p));
        QLabel* l = panels_[size_t(p - 1)];
        if (l->text() == t) continue;
        static_cast<StatusPanel*>(l)->showText(t);
    }
    // A maximised view adds " - [Spectrum view]" itself.
    const QString title = QString::fromStdString(cmd_.caption).trimmed();
    if (windowTitle() != title) setWindowTitle(title);
}

void MainWindow::syncFromModel() {
    for (const auto& e : cmd_.menus()) {
        QAction* a = menuAction(std::string(e.name));
        if (!a) continue;
        a->setEnabled(e.enabled && e.available);
        if (a->isCheckable()) a->setChecked(e.checked);
    }
    // Spacers show as one separator between two visible groups of a row, never two in a row
    // and never at a row's end.
    bool afterButton = false;
    QAction* lastSeparator = nullptr;
    for (const auto& b : cmd_.buttons()) {
        QAction* a = toolAction(b.number);
        if (!a) continue;
        if (b.number == kFirstViewButton) {
            if (lastSeparator) lastSeparator->setVisible(false);
            afterButton = false;
            lastSeparator = nullptr;
        }
        if (b.key.empty()) {
            const bool show = b.visible && afterButton;
            a->setVisible(show);
            if (show) {
                afterButton = false;
                lastSeparator = a;
            }
            continue;
        }
        a->setVisible(b.visible);
        a->setEnabled(b.enabled && b.available);
        if (b.toggle) a->setChecked(b.down);
        if (b.visible) {
            afterButton = true;
            lastSeparator = nullptr;
        }
    }
    if (lastSeparator) lastSeparator->setVisible(false);
    if (markersWindow_) {
        // The table closes with the markers (NoMarkers) and with the Spectrum view.
        auto* f = views_.modelOf<spectrum::SpectrumForm>(ViewId::Spectrum);
        if (!f || !f->markers().MarkerTableOn)
            markersWindow_->hide();
        else if (markersWindow_->isVisible())
            markersWindow_->refill();
    }
    syncPanels();
}

void MainWindow::showDialogForm(const std::string& name, bool) {
    const CommandRunner run = [this](const std::function<void()>& f) { runCommand(f); };
    if (name == "frmFileInfo") {
        if (!fileInfo_) {
            fileInfo_ = new FileInfoForm(wb_, run, this);
            fileInfo_->setAttribute(Qt::WA_DeleteOnClose);
            // Beside the spectrum view when that is open.
            if (auto* sw = views_.window(ViewId::Spectrum))
                fileInfo_->move(sw->mapToGlobal(QPoint(sw->width(), 0)));
        }
        fileInfo_->load();
        fileInfo_->show();
        fileInfo_->raise();
    }
    if (name == "dlgSettings") {
        SettingsForm form(wb_, run, this);
        form.load();
        form.exec();
    }
    if (name == "dlgPrinter") {
        PrinterForm form(wb_, views_, run, this);
        if (form.load()) form.exec();
    }
}

void MainWindow::runImport() {
    runCommand([&] { mnuOpen_Click(wb_); });
}

void MainWindow::importFile(const std::string& path, int filterIndex) {
    if (filterIndex <= 0) filterIndex = filterIndexForFile(st_.Fil, path);
    if (filterIndex <= 0) filterIndex = 1;
    runCommand([&] { kv::importFile(wb_, path, filterIndex); });
}

bool MainWindow::claimHome() {
    return kv::claimHome(wb_, homeLock_);
}

void MainWindow::closeEvent(QCloseEvent* e) {
    if (commandDepth_ > 0) {
        // A loop is running: stop it, and close once it has let go.
        st_.PlayPause = true;
        st_.ImportCancelled = true;
        closePending_ = true;
        e->ignore();
        return;
    }
    QSettings s;
    s.setValue("MainWindow/geometry", saveGeometry());
    if (!unloaded_) {
        views_.shutdown();
        MDIForm_Unload(wb_);
        unloaded_ = true;
    }
    e->accept();
}

bool MainWindow::eventFilter(QObject* watched, QEvent* e) {
    // The viewport is compared by the pointer kept at start: while the window is torn down the
    // area is no longer whole, and no call may go through it.
    if (e->type() == QEvent::Resize && watched == mdiViewport_ && !unloaded_) views_.retile();
    return QMainWindow::eventFilter(watched, e);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* e) {
    if (commandDepth_ == 0 && e->mimeData()->hasUrls()) e->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* e) {
    const auto urls = e->mimeData()->urls();
    if (commandDepth_ > 0 || urls.isEmpty() || !urls.first().isLocalFile()) return;
    e->acceptProposedAction();
    importFile(urls.first().toLocalFile().toStdString());
}

} // namespace kv
