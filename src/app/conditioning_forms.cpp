// The conditioning dialogs' forms.
#include "app/conditioning_forms.h"

#include "conditioning/dialog_input.h"
#include "conditioning/filter_dialogs.h"
#include "conditioning/level_dialogs.h"
#include "conditioning/span_dialog.h"
#include "conditioning/white_dialog.h"
#include "state/workbench.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>
#include <map>
#include <memory>

namespace kv {

namespace {

std::map<std::string, QPointer<QDialog>>& openForms() {
    static std::map<std::string, QPointer<QDialog>> m;
    return m;
}

/// One dialog: rows of texts and unit lists, and Apply, OK and Cancel.
class Form : public QDialog {
  public:
    Form(QWidget* parent, const QString& title, CommandRunner run)
        : QDialog(parent), run_(std::move(run)) {
        setWindowTitle(title);
        setAttribute(Qt::WA_DeleteOnClose);
        auto* box = new QVBoxLayout(this);
        rows_ = new QFormLayout;
        box->addLayout(rows_);
        buttons_ = new QHBoxLayout;
        box->addLayout(buttons_);
    }
    QLineEdit* text(const QString& label) {
        auto* e = new QLineEdit(this);
        rows_->addRow(label, e);
        return e;
    }
    QComboBox* list(const QString& label, const QStringList& items, bool editable = false) {
        auto* c = new QComboBox(this);
        c->addItems(items);
        c->setEditable(editable);
        rows_->addRow(label, c);
        return c;
    }
    QComboBox* units(const QString& label) {
        QStringList u;
        for (const char* x : kFrequencyUnits)
            u << x;
        return list(label, u);
    }
    QLabel* label(const QString& t) {
        auto* l = new QLabel(t, this);
        rows_->addRow(l);
        return l;
    }
    /// Apply runs `apply`; OK runs `ok` and closes unless it says stay; Cancel runs `cancel` and
    /// closes. Every event first copies in, then copies out.
    void buttons(std::function<void()> in, std::function<void()> out, std::function<void()> apply,
                 std::function<bool()> ok, std::function<void()> cancel) {
        in_ = std::move(in);
        out_ = std::move(out);
        if (apply) add("Apply", [this, apply] { event(apply); });
        add("OK", [this, ok] {
            bool stay = false;
            event([&] { stay = ok(); });
            if (!stay) finish();
        });
        add("Cancel", [this, cancel] {
            if (cancel) event(cancel);
            finish();
        });
    }
    std::function<void()> onUnload;

  protected:
    void closeEvent(QCloseEvent* e) override {
        if (!finished_ && onUnload) event(onUnload);
        finished_ = true;
        QDialog::closeEvent(e);
    }

  private:
    void add(const char* caption, const std::function<void()>& f) {
        auto* b = new QPushButton(QString::fromLatin1(caption), this);
        buttons_->addWidget(b);
        connect(b, &QPushButton::clicked, this, f);
    }
    void event(const std::function<void()>& f) {
        if (in_) in_();
        run_(f);
        if (out_) out_();
    }
    void finish() {
        if (onUnload) event(onUnload);
        finished_ = true;
        close();
    }
    CommandRunner run_;
    QFormLayout* rows_;
    QHBoxLayout* buttons_;
    std::function<void()> in_, out_;
    bool finished_ = false;
};

std::string str(const QLineEdit* e) {
    return e->text().toStdString();
}
QString qs(const std::string& s) {
    return QString::fromStdString(s);
}

/// The corner or band dialogs share their shape: two figures, two unit lists, the first list
/// dragging the second along.
template <class Fields, class Ns>
Form* twoFigures(QWidget* p, Workbench& wb, const CommandRunner& run, const QString& title,
                 const QString& a, const QString& b, Ns ns) {
    auto* f = new Form(p, title, run);
    auto fields = std::make_shared<Fields>();
    ns.load(wb, *fields);
    QLineEdit* t1 = f->text(a);
    QComboBox* c1 = f->units("Unit");
    QLineEdit* t2 = f->text(b);
    QComboBox* c2 = f->units("Unit");
    c1->setCurrentIndex(fields->Combo1);
    c2->setCurrentIndex(fields->Combo2);
    QObject::connect(c1, &QComboBox::activated, f,
                     [c1, c2] { c2->setCurrentIndex(c1->currentIndex()); });
    auto in = [=] {
        fields->txtHP = str(t1);
        fields->txtLp = str(t2);
        fields->Combo1 = c1->currentIndex();
        fields->Combo2 = c2->currentIndex();
    };
    f->buttons(
        in, [] {}, [&wb, fields, ns] { ns.apply(wb, *fields); },
        [&wb, fields, ns] { return ns.ok(wb, *fields); },
        [&wb, fields, ns] { ns.cancel(wb, *fields); });
    f->onUnload = [&wb, fields, ns] { ns.unload(wb, *fields); };
    return f;
}

struct BoxNs {
    void load(Workbench& wb, BoxFilterFields& f) const { dlgBoxFilter::Form_Load(wb, f); }
    void apply(Workbench& wb, BoxFilterFields& f) const { dlgBoxFilter::Command1_Click(wb, f); }
    bool ok(Workbench& wb, BoxFilterFields& f) const { return dlgBoxFilter::OKButton_Click(wb, f); }
    void cancel(Workbench& wb, BoxFilterFields& f) const {
        dlgBoxFilter::CancelButton_Click(wb, f);
    }
    void unload(Workbench& wb, BoxFilterFields& f) const { dlgBoxFilter::Form_Unload(wb, f); }
};
struct WhiteNs {
    void load(Workbench& wb, WhiteFields& f) const { dlgWhite::Form_Load(wb, f); }
    void apply(Workbench& wb, WhiteFields& f) const { dlgWhite::Command1_Click(wb, f); }
    bool ok(Workbench& wb, WhiteFields& f) const { return dlgWhite::OKButton_Click(wb, f); }
    void cancel(Workbench& wb, WhiteFields& f) const { dlgWhite::CancelButton_Click(wb, f); }
    void unload(Workbench& wb, WhiteFields& f) const { dlgWhite::Form_Unload(wb, f); }
};

Form* spanForm(QWidget* p, Workbench& wb, const CommandRunner& run) {
    auto* f = new Form(p, "Span", run);
    auto fields = std::make_shared<SpanFields>();
    ZenterFr::Form_Load(wb, *fields);
    QLineEdit* t1 = f->text("Center frequency");
    QComboBox* c1 = f->units("Unit");
    QLineEdit* t2 = f->text("Span");
    QComboBox* c2 = f->units("Unit");
    QObject::connect(c1, &QComboBox::activated, f,
                     [c1, c2] { c2->setCurrentIndex(c1->currentIndex()); });
    auto in = [=] {
        fields->txtCenter = str(t1);
        fields->txtSp = str(t2);
        fields->Combo1 = c1->currentIndex();
        fields->Combo2 = c2->currentIndex();
    };
    f->buttons(
        in, [] {}, [&wb, fields] { ZenterFr::Command1_Click(wb, *fields); },
        [&wb, fields] { return ZenterFr::OKButton_Click(wb, *fields); },
        [&wb, fields] { ZenterFr::CancelButton_Click(wb, *fields); });
    return f;
}

/// A dialog of one text: its load, apply, OK and cancel.
template <class Fields>
Form* oneText(QWidget* p, Workbench& wb, const CommandRunner& run, const QString& title,
              const QString& label, std::string Fields::*text, void (*load)(Workbench&, Fields&),
              std::function<void(Workbench&, Fields&)> apply, bool (*ok)(Workbench&, Fields&),
              void (*cancel)(Workbench&, Fields&)) {
    auto* f = new Form(p, title, run);
    auto fields = std::make_shared<Fields>();
    load(wb, *fields);
    QLineEdit* t = f->text(label);
    t->setText(qs((*fields).*text));
    f->buttons([=] { (*fields).*text = str(t); }, [=] { t->setText(qs((*fields).*text)); },
               [&wb, fields, apply] { apply(wb, *fields); },
               [&wb, fields, ok] { return ok(wb, *fields); },
               [&wb, fields, cancel] { cancel(wb, *fields); });
    return f;
}

Form* make(QWidget* p, Workbench& wb, const std::string& name, const CommandRunner& run) {
    if (name == "dlgBoxFilter")
        return twoFigures<BoxFilterFields>(p, wb, run, "FFT filter", "HP", "LP", BoxNs{});
    if (name == "dlgWhite")
        return twoFigures<WhiteFields>(p, wb, run, "Whitening", "Lower frequency",
                                       "Higher frequency", WhiteNs{});
    if (name == "ZenterFr") return spanForm(p, wb, run);
    if (name == "dlgDoGain")
        return oneText<GainFields>(
            p, wb, run, "Gain", "dB", &GainFields::txtdb, dlgDoGain::Form_Load,
            [](Workbench& w, GainFields& f) { dlgDoGain::Command1_Click(w, f); },
            dlgDoGain::OKButton_Click, dlgDoGain::CancelButton_Click);
    if (name == "dlgYscale") {
        auto* f = oneText<YscaleFields>(
            p, wb, run, "Vertical scale", "Value per division", &YscaleFields::txtRefTime,
            dlgYscale::Form_Load,
            [](Workbench& w, YscaleFields& x) { dlgYscale::Command1_Click(w, x); },
            dlgYscale::OKButton_Click, dlgYscale::CancelButton_Click);
        YscaleFields probe;
        dlgYscale::Form_Load(wb, probe);
        f->setWindowTitle(qs(probe.caption));
        return f;
    }
    if (name == "dlgdB") {
        LevelFields probe;
        dlgdB::Form_Load(wb, probe);
        auto* f = oneText<LevelFields>(
            p, wb, run, "Level", "Level (dB)", &LevelFields::Text1, dlgdB::Form_Load,
            [](Workbench& w, LevelFields& x) { dlgdB::Command1_Click(w, x); },
            dlgdB::OKButton_Click, dlgdB::CancelButton_Click);
        f->label("Lowest: " + qs(probe.lblMin));
        return f;
    }
    if (name == "dlgAutotune") {
        auto* f = new Form(p, "Autotune", run);
        auto fields = std::make_shared<AutotuneFields>();
        dlgAutotune::Form_Load(wb, *fields);
        QStringList levels;
        for (const char* l : dlgAutotune::kLevels)
            levels << l;
        QComboBox* c = f->list("dB under the peak", levels, true);
        c->setCurrentText(qs(fields->cmbL));
        f->buttons([=] { fields->cmbL = c->currentText().toStdString(); }, [] {},
                   [&wb, fields] { dlgAutotune::Command1_Click(wb, *fields); },
                   [&wb, fields] { return dlgAutotune::OKButton_Click(wb, *fields); },
                   [&wb, fields] { dlgAutotune::CancelButton_Click(wb, *fields); });
        return f;
    }
    if (name == "dlgFilterSel") {
        auto* f = new Form(p, "GPR Filter", run);
        FilterSelFields fields;
        dlgFilterSel::Form_Load(wb, fields);
        for (const std::string* s : {&fields.lblLP, &fields.lblHP, &fields.lblFc})
            f->label(qs(*s));
        f->buttons({}, {}, {}, [] { return false; }, {});
        return f;
    }
    return nullptr;
}

} // namespace

bool showConditioningForm(QWidget* parent, Workbench& wb, const std::string& name, bool modal,
                          const CommandRunner& run) {
    closeConditioningForm(name);
    Form* f = make(parent, wb, name, run);
    if (!f) return false;
    openForms()[name] = f;
    if (modal) {
        f->exec();
        return true;
    }
    // Beside the views, at the right edge of the main window.
    if (parent) f->move(parent->mapToGlobal(QPoint(std::max(parent->width() - 360, 20), 120)));
    f->show();
    return true;
}

void closeConditioningForm(const std::string& name) {
    auto it = openForms().find(name);
    if (it == openForms().end()) return;
    if (QDialog* d = it->second.data()) {
        // Closed by the core: no event of the form runs.
        if (auto* f = dynamic_cast<Form*>(d)) f->onUnload = nullptr;
        d->close();
    }
    openForms().erase(it);
}

} // namespace kv
