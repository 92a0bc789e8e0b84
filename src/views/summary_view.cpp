// The summary text of a view still to come.
#include "views/summary_view.h"

#include "state/workbench.h"

#include <QPainter>
#include <algorithm>

namespace kv {

QImage SummaryView::picture() const {
    const ProgramState& st = wb_.st;
    const QString text =
        QStringLiteral("%1 view\n\n%2\n%3 traces of %4 samples at %5 Hz\ntrace %6")
            .arg(QString::fromLatin1(viewName(v_)), QString::fromStdString(st.FileTitle))
            .arg(st.TraceCount)
            .arg(st.Sp_Samples)
            .arg(st.SampleRate)
            .arg(st.TracePos);
    QImage img(std::max(size_.width(), 1), std::max(size_.height(), 1), QImage::Format_RGB32);
    img.fill(kFormBackColor);
    QPainter p(&img);
    p.setFont(labelFont());
    p.setPen(Qt::black);
    p.drawText(img.rect(), Qt::AlignCenter, text);
    return img;
}

} // namespace kv
