// The text dialog's window.
#include "app/text_dialog.h"

#include "state/workbench.h"
#include "views/surface.h"
#include "views/view_model.h"

#include <QDialog>
#include <QFontDialog>
#include <QGridLayout>
#include <QLineEdit>
#include <QPushButton>

namespace kv {

namespace {

/// The active view's background colour, and what stands out from it.
std::string backColorOf(const ProgramState& st) {
    switch (st.ActiveView) {
    case 1:
        return st.Time_BackColor;
    case 2:
        return st.FFT_BackColor;
    case 3:
        return st.F_BackColor;
    case 4:
    case 5:
        return "16777215"; // the waterfalls' empty rows are white
    default:
        return "0";
    }
}

} // namespace

void showTextDialog(QWidget* parent, Workbench& wb, ViewModel& view,
                    const std::function<void()>& changed) {
    QDialog d(parent);
    d.setObjectName(QStringLiteral("dlgText"));
    d.setWindowTitle(QStringLiteral("Text"));
    TextFields f;
    dlgText::Form_Load(view.texts(), f);
    auto* grid = new QGridLayout(&d);
    std::array<QLineEdit*, kTextLines> boxes{};
    for (int i = 0; i < kTextLines; ++i) {
        auto* e = new QLineEdit(QString::fromStdString(f.Text[size_t(i)]));
        e->setObjectName(QStringLiteral("Text%1").arg(i));
        QObject::connect(e, &QLineEdit::cursorPositionChanged, &d,
                         [&f, i] { f.TextIndex = int16_t(i); });
        grid->addWidget(e, i, 0, 1, 4);
        boxes[size_t(i)] = e;
    }
    const auto fromForm = [&] {
        for (int i = 0; i < kTextLines; ++i)
            f.Text[size_t(i)] = boxes[size_t(i)]->text().toStdString();
    };
    const auto toForm = [&] {
        for (int i = 0; i < kTextLines; ++i)
            boxes[size_t(i)]->setText(QString::fromStdString(f.Text[size_t(i)]));
    };
    const auto button = [&](const char* name, const char* text, int col,
                            const std::function<void()>& on) {
        auto* b = new QPushButton(QString::fromLatin1(text));
        b->setObjectName(QString::fromLatin1(name));
        grid->addWidget(b, kTextLines, col);
        QObject::connect(b, &QPushButton::clicked, &d, on);
    };
    button("mnuWrite", "Write", 0, [&] {
        fromForm();
        const std::string back = backColorOf(wb.st);
        const std::string contrast = std::to_string(iniFromColor(colorFromIni(back)) ^ 0xFFFFFFu);
        const int16_t keep = f.TextIndex;
        // Every line goes to the view: those with text stacked at the graph's left.
        for (int16_t i = 0; i < kTextLines; ++i) {
            f.TextIndex = i;
            dlgText::mnuWrite_Click(view.texts(), f, view.textArea(), back, contrast);
        }
        f.TextIndex = keep;
        changed();
    });
    button("mnuClean", "Clean", 1, [&] {
        fromForm();
        dlgText::mnuClean_Click(view.texts(), f);
        toForm();
        changed();
    });
    button("Command1", "Font ..", 2, [&] {
        const TextLabels& t = view.texts();
        QFont initial(QString::fromStdString(t.fontFamily), t.fontSize);
        initial.setBold(t.bold);
        initial.setItalic(t.italic);
        bool ok = false;
        const QFont font = QFontDialog::getFont(&ok, initial, &d);
        if (!ok) return;
        dlgText::Command1_Click(view.texts(), font.family().toStdString(), font.pointSize(),
                                font.bold(), font.italic(), "");
        changed();
    });
    button("Command2", "Close", 3, [&] { d.accept(); });
    d.exec();
}

} // namespace kv
