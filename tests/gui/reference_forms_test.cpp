// The reference dialog's form and the text drag in a real window, offscreen: Set from the form
// ticks its line and the curve appears in the Spectrum view; a text line dragged with the mouse
// in the view's window moves there.
#include "app/main_window.h"
#include "app/reference_dialog.h"
#include "app/view_window.h"
#include "gui/sample_shell.h"
#include "platform/files.h"
#include "references/spectrum_refs.h"
#include "views/spectrum/spectrum_form.h"

#include <QCheckBox>
#include <QDialog>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

using namespace kv;

namespace {

using RefShell = test::SampleShell;

QDialog* openDialog(const char* name) {
    for (QWidget* t : QApplication::topLevelWidgets())
        if (auto* d = qobject_cast<QDialog*>(t); d && d->isVisible() && d->objectName() == name)
            return d;
    return nullptr;
}

} // namespace

TEST_F(RefShell, SetFromTheFormTicksTheLineAndDrawsTheCurve) {
    ASSERT_TRUE(sw && form);
    bool checked = false, seen = false;
    QTimer::singleShot(0, [&] {
        QDialog* d = openDialog("dlgRef");
        if (!d) return;
        seen = true;
        d->findChild<QPushButton*>("cmdSet")->click();
        checked = d->findChild<QCheckBox*>("Check1")->isChecked();
        d->findChild<QPushButton*>("Command1")->click();
    });
    showReferenceDialog(w.get(), w->workbench(), "dlgRef",
                        [](const std::function<void()>& f) { f(); });
    ASSERT_TRUE(seen);
    EXPECT_TRUE(checked);
    EXPECT_TRUE(w->state().RefOn1);
    EXPECT_TRUE(fileExists(fixedRefPath(w->state(), 1, "pns")));
    EXPECT_FALSE(form->view().RefPoints(1).empty());
}

TEST_F(RefShell, ATextLineFollowsTheMouseInTheWindow) {
    ASSERT_TRUE(sw && form);
    TextFields f;
    f.Text[0] = "Instrument A";
    dlgText::mnuWrite_Click(form->texts(), f, form->textArea(), "0", "16777215");
    const Label l = form->texts().lblSText()[0];
    const QPoint grab(l.left + 3, l.top + 3);
    QTest::mousePress(sw, Qt::LeftButton, {}, grab);
    QMouseEvent move(QEvent::MouseMove, QPointF(grab + QPoint(120, 60)),
                     sw->mapToGlobal(QPointF(grab + QPoint(120, 60))), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(sw, &move);
    QTest::mouseRelease(sw, Qt::LeftButton, {}, grab + QPoint(120, 60));
    EXPECT_EQ(form->texts().lblSText()[0].left, l.left + 120);
    EXPECT_EQ(form->texts().lblSText()[0].top, l.top + 60);
    // The press was the text's: no pointer cross was left behind on the plot.
    EXPECT_FALSE(form->view().crossShown());
}
