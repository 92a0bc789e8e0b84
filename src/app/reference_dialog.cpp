// The reference dialogs as Qt forms.
#include "app/reference_dialog.h"

#include "references/spectrum_refs.h"
#include "references/time_phase_refs.h"
#include "state/workbench.h"
#include "views/surface.h"

#include <QCheckBox>
#include <QColor>
#include <QDialog>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace kv {

namespace {

/// The events of one dialog over its fields type.
template <typename Fields> struct Events {
    const char* title;
    void (*load)(Workbench&, Fields&);
    void (*set)(Workbench&, Fields&);
    void (*save)(Workbench&, Fields&);
    void (*open)(Workbench&, Fields&);
    void (*remove)(Workbench&, Fields&);
    void (*info)(Workbench&, Fields&); // null: no Info button
    void (*color)(Workbench&, Fields&, const std::string&);
    void (*line)(Workbench&, Fields&, int16_t);
    /// A check box changed; returns whether the dialog stays. Null: the ticks apply at OK.
    bool (*check)(Workbench&, Fields&, int);
    /// OK; returns whether the dialog stays.
    bool (*ok)(Workbench&, Fields&);
};

template <typename Fields>
void runDialog(QWidget* parent, Workbench& wb, const CommandRunner& run, const Events<Fields>& ev) {
    QDialog d(parent);
    d.setObjectName(QString::fromLatin1(ev.title));
    d.setWindowTitle(QStringLiteral("Reference"));
    Fields f;
    auto* check1 = new QCheckBox(QStringLiteral("Line 1"));
    auto* check2 = new QCheckBox(QStringLiteral("Line 2"));
    auto* opt1 = new QRadioButton(QStringLiteral("Line 1"));
    auto* opt2 = new QRadioButton(QStringLiteral("Line 2"));
    auto* label1 = new QLabel;
    label1->setMinimumSize(40, 16);
    label1->setAutoFillBackground(true);
    check1->setObjectName(QStringLiteral("Check1"));
    check2->setObjectName(QStringLiteral("Check2"));
    opt1->setObjectName(QStringLiteral("optLine1"));
    opt2->setObjectName(QStringLiteral("optLine2"));
    label1->setObjectName(QStringLiteral("Label1"));

    bool syncing = false;
    const auto toForm = [&] {
        syncing = true;
        check1->setChecked(f.Check1);
        check2->setChecked(f.Check2);
        (f.optLine == 2 ? opt2 : opt1)->setChecked(true);
        QPalette p = label1->palette();
        p.setColor(QPalette::Window, QColor(colorFromIni(f.Label1Color)));
        label1->setPalette(p);
        syncing = false;
    };
    const auto fromForm = [&] {
        f.Check1 = check1->isChecked();
        f.Check2 = check2->isChecked();
        f.optLine = opt2->isChecked() ? 2 : 1;
    };
    const auto event = [&](const std::function<void()>& body) {
        fromForm();
        run(body);
        toForm();
    };
    run([&] { ev.load(wb, f); });
    toForm();

    auto* grid = new QGridLayout;
    grid->addWidget(new QLabel(QStringLiteral("Show")), 0, 0);
    grid->addWidget(check1, 1, 0);
    grid->addWidget(check2, 2, 0);
    grid->addWidget(new QLabel(QStringLiteral("Work on")), 0, 1);
    grid->addWidget(opt1, 1, 1);
    grid->addWidget(opt2, 2, 1);
    grid->addWidget(label1, 3, 1);
    auto* buttons = new QVBoxLayout;
    const auto button = [&](const char* name, const char* text, const std::function<void()>& on) {
        auto* b = new QPushButton(QString::fromLatin1(text));
        b->setObjectName(QString::fromLatin1(name));
        buttons->addWidget(b);
        QObject::connect(b, &QPushButton::clicked, &d, on);
        return b;
    };
    button("cmdSet", "Set", [&] { event([&] { ev.set(wb, f); }); });
    button("cmdSave", "Save ..", [&] { event([&] { ev.save(wb, f); }); });
    button("cmdLoad", "Load ..", [&] { event([&] { ev.open(wb, f); }); });
    button("cmdDelete", "Delete", [&] { event([&] { ev.remove(wb, f); }); });
    if (ev.info) button("cmdInfo", "Info", [&] { event([&] { ev.info(wb, f); }); });
    button("cmdColor", "Color ..", [&] {
        const std::string c = pickReferenceColor(&d);
        event([&] { ev.color(wb, f, c); });
    });
    button("OKButton", "OK", [&] {
        bool stays = false;
        event([&] { stays = ev.ok ? ev.ok(wb, f) : false; });
        if (!stays) d.accept();
    });
    button("Command1", "Close", [&] { d.reject(); });
    for (auto* o : {opt1, opt2})
        QObject::connect(o, &QRadioButton::toggled, &d, [&, o](bool on) {
            if (syncing || !on) return;
            event([&] { ev.line(wb, f, o == opt2 ? 2 : 1); });
        });
    if (ev.check)
        for (auto* c : {check1, check2})
            QObject::connect(c, &QCheckBox::toggled, &d, [&, c](bool) {
                if (syncing) return;
                bool stays = true;
                event([&] { stays = ev.check(wb, f, c == check2 ? 2 : 1); });
                if (!stays) d.accept();
            });

    auto* all = new QGridLayout(&d);
    all->addLayout(grid, 0, 0);
    all->addLayout(buttons, 0, 1);
    d.exec();
}

bool spectrumOk(Workbench&, RefFields&) {
    return false;
}

} // namespace

std::string pickReferenceColor(QWidget* parent) {
    QDialog d(parent);
    d.setObjectName(QStringLiteral("dlgRefC"));
    d.setWindowTitle(QStringLiteral("Color"));
    auto* grid = new QGridLayout(&d);
    int chosen = -1;
    std::vector<QPushButton*> cells;
    for (size_t i = 0; i < dlgRefC::kCellColors.size(); ++i) {
        auto* cell = new QPushButton;
        cell->setObjectName(QStringLiteral("lblC%1").arg(i));
        cell->setFixedSize(36, 36);
        cell->setCheckable(true);
        cell->setAutoExclusive(true);
        const QColor c(colorFromIni(std::to_string(dlgRefC::kCellColors[i])));
        cell->setStyleSheet(QStringLiteral("QPushButton{background:%1;border:2px solid %1}"
                                           "QPushButton:checked{border:3px solid black}")
                                .arg(c.name()));
        QObject::connect(cell, &QPushButton::clicked, &d, [&chosen, i] { chosen = int(i); });
        grid->addWidget(cell, int(i / 3), int(i % 3));
        cells.push_back(cell);
    }
    auto* box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QObject::connect(box, &QDialogButtonBox::accepted, &d, &QDialog::accept);
    QObject::connect(box, &QDialogButtonBox::rejected, &d, &QDialog::reject);
    grid->addWidget(box, 2, 0, 1, 3);
    if (d.exec() != QDialog::Accepted) return "";
    return dlgRefC::OKButton_Click(chosen);
}

void showReferenceDialog(QWidget* parent, Workbench& wb, const std::string& name,
                         const CommandRunner& run) {
    if (name == "dlgRef") {
        static const Events<RefFields> ev{"dlgRef",
                                          dlgRef::Form_Load,
                                          dlgRef::cmdSet_Click,
                                          dlgRef::cmdSave_Click,
                                          dlgRef::cmdLoad_Click,
                                          dlgRef::cmdDelete_Click,
                                          dlgRef::cmdInfo_Click,
                                          dlgRef::colorChosen,
                                          dlgRef::optLine_Click,
                                          dlgRef::Check_Click,
                                          spectrumOk};
        runDialog(parent, wb, run, ev);
    } else if (name == "TimeRef") {
        static const Events<TimeRefFields> ev{"TimeRef",
                                              TimeRef::Form_Load,
                                              TimeRef::cmdSet_Click,
                                              TimeRef::cmdSave_Click,
                                              TimeRef::cmdLoad_Click,
                                              TimeRef::cmdDelete_Click,
                                              nullptr,
                                              TimeRef::colorChosen,
                                              TimeRef::optLine_Click,
                                              nullptr,
                                              TimeRef::OKButton_Click};
        runDialog(parent, wb, run, ev);
    } else if (name == "PhasaRef") {
        static const Events<TimeRefFields> ev{"PhasaRef",
                                              PhasaRef::Form_Load,
                                              PhasaRef::cmdSet_Click,
                                              PhasaRef::cmdSave_Click,
                                              PhasaRef::cmdLoad_Click,
                                              PhasaRef::cmdDelete_Click,
                                              nullptr,
                                              PhasaRef::colorChosen,
                                              PhasaRef::optLine_Click,
                                              nullptr,
                                              PhasaRef::OKButton_Click};
        runDialog(parent, wb, run, ev);
    }
}

} // namespace kv
