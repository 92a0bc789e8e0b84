// The row mechanics, trace numbers, pointer and layout the two waterfalls share.
#include "views/waterfall/waterfall_base.h"

#include "commands/commands.h"
#include "platform/message_title.h"
#include "platform/numeric.h"
#include "state/workbench.h"

#include <QPainter>
#include <algorithm>

namespace kv::waterfall {

QImage scalePicture(const ColorTable& table) {
    QImage img(48, 256, QImage::Format_RGB32);
    for (int v = 0; v < 256; ++v)
        std::fill_n(reinterpret_cast<QRgb*>(img.scanLine(255 - v)), 48, table[v]);
    return img;
}

QImage rowImage(const std::vector<uint8_t>& bytes, int width, const ColorTable& table) {
    QImage img(std::max(width, 1), 1, QImage::Format_RGB32);
    QRgb* out = reinterpret_cast<QRgb*>(img.scanLine(0));
    for (int x = 0; x < img.width(); ++x) {
        const size_t e = size_t(x) + 1;
        out[x] = table[e < bytes.size() ? bytes[e] : 0];
    }
    return img;
}

WaterfallBase::WaterfallBase(Workbench& wb) : wb_(wb) {
    table_ = greyTable();
}

ProgramState& WaterfallBase::st() const {
    return wb_.st;
}

// ---- Life of the view ---------------------------------------------------------------------------

void WaterfallBase::load(int width, int height) {
    ProgramState& s = st();
    s.RgBackOn = false;
    s.RgBackTrace = 0;
    RowHeight_ = 1;
    WfTopTrace_ = s.TracePos;
    s.BackTraceTop = 0;
    WfRowsOnShow_ = 0;
    s.PalPath = palettePath(s, s.PalAd);
    s.PalFile = s.PalPath;
    HS_.Min = 0;
    HS_.Max = std::max<int>(0, s.LastTrace);
    HS_.Value = std::clamp<int>(s.TracePos, HS_.Min, HS_.Max);
    HS_.rect = QRect(); // the waterfalls follow the other views' scroll bars
    DrawBMP();
    layOut(width, height);
    WfRowsFromEnd_ = ViewHeight();
    placeLabels();
}

bool WaterfallBase::layOut(int width, int height) {
    formWidth_ = std::max(width, kMinWidth);
    formHeight_ = std::max(height, kMinHeight);
    const int w = std::max(formWidth_ - kPicLeft - kRightMargin, 1);
    const int h = std::max(formHeight_ - kPicTop - kBottomMargin, 1);
    picRect_ = QRect(kPicLeft, kPicTop, w, h);
    lblTopScan_.left = lblBottenScan_.left = kPicLeft;
    lblTopScan_.top = 3;
    lblBottenScan_.top = picRect_.bottom() + 22;
    if (w == picOriginal_.width() && h == picOriginal_.height()) return false;
    picOriginal_.resize(w, h);
    return true;
}

void WaterfallBase::resize(int width, int height) {
    layOut(width, height);
    WfRowsFromEnd_ = ViewHeight();
    placeLabels();
}

void WaterfallBase::unload() {
    ProgramState& s = st();
    s.RgBackOn = false;
    s.RgBackTrace = 0;
    wb_.cmd.check("mnuBscan", false);
}

void WaterfallBase::reset(bool atEnd) {
    ProgramState& s = st();
    if (atEnd) {
        // End: the picture fills upward from its foot, from the last trace back.
        Cls();
        WfTopTrace_ = 0;
        s.BackTraceTop = s.TraceCount;
        setBottenScan(s.TraceCount);
        setTopScan("N/A");
        WfRowsOnShow_ = WfRowsFromEnd_ = 0;
    } else if (s.PlayFwd) {
        // Fwd: leaving a From-end run starts the picture again at the trace on show.
        DrawBMP();
        if (ViewHeight() > WfRowsFromEnd_) BackFram();
    } else {
        Cls();
        WfTopTrace_ = 0;
        s.BackTraceTop = 0;
        showTraceNumbers();
        WfRowsOnShow_ = WfRowsFromEnd_ = 0;
    }
}

void WaterfallBase::command(const std::string& name) {
    if (name == "DrawBMP") DrawBMP();
    if (name == "HS_Follow") {
        // A scroll bar moved: the numbers follow it before the row comes.
        WfTopTrace_ = HS_.Value;
        st().BackTraceTop = HS_.Value - ViewHeight();
        showTraceNumbers();
    }
}

// ---- The rows ----------------------------------------------------------------------------------

void WaterfallBase::DrawBMP() {
    ProgramState& s = st();
    if (!tableRead_ || tableFile_ != s.PalFile) {
        std::string error;
        table_ = tableOrGrey(s.PalFile, &error);
        tableFile_ = s.PalFile;
        tableRead_ = true;
        imgPal_ = scalePicture(table_);
        if (!error.empty())
            wb_.host.message(error + "\nThe grey scale is shown instead.", kMessageTitle,
                             MsgIcon::Information);
    }
    RowHeight_ = 1;
}

void WaterfallBase::loadRow() {
    Picture1_ = rowImage(RowBytes_, RowWidth_, table_);
}

void WaterfallBase::ScrollRowDown() {
    ProgramState& s = st();
    picOriginal_.move(RowHeight_);
    if (RowWidth_ > 0)
        picOriginal_.stretchFrom(Picture1_, 0, 0, RowWidth_, RowHeight_, 0, ViewWidth(),
                                 RowHeight_);
    WfTopTrace_ += RowHeight_;
    s.BackTraceTop = WfTopTrace_ - ViewHeight();
    WfRowsOnShow_ = s.BackTraceTop < 1 ? WfTopTrace_ : ViewHeight();
    showTraceNumbers();
}

void WaterfallBase::ScrollRowUp() {
    ProgramState& s = st();
    const int y = ViewHeight() - RowHeight_ - 2;
    auto putRow = [&] {
        if (RowWidth_ > 0)
            picOriginal_.stretchFrom(Picture1_, 0, 0, RowWidth_, RowHeight_, y, ViewWidth(),
                                     RowHeight_);
    };
    if (lblTopScan_.text != "N/A") {
        picOriginal_.move(-RowHeight_);
        if (s.BackTraceTop < 1 && WfTopTrace_ >= 1) {
            // Nothing older to bring in: a white row.
            picOriginal_.fillRows(y, RowHeight_, RowPicture::kBlank);
            WfTopTrace_ -= RowHeight_;
            WfRowsOnShow_ = WfTopTrace_;
            s.BackTraceTop = WfTopTrace_ - ViewHeight();
            showTraceNumbers();
            return;
        }
        putRow();
        WfTopTrace_ -= RowHeight_;
        s.BackTraceTop = WfTopTrace_ - ViewHeight();
        showTraceNumbers();
    } else {
        WfTopTrace_ = 0;
        picOriginal_.move(-RowHeight_);
        putRow();
        ++WfRowsFromEnd_;
        s.BackTraceTop = s.TraceCount - WfRowsFromEnd_;
        setBottenScan(s.BackTraceTop);
        if (WfRowsFromEnd_ >= ViewHeight()) {
            WfTopTrace_ = s.TraceCount - ViewHeight();
            setTopScan(std::to_string(WfTopTrace_));
        }
    }
    if (s.BackTraceTop > 0) s.BackTraceIndex = s.BackTraceTop;
}

void WaterfallBase::BackFram() {
    ProgramState& s = st();
    Cls();
    WfTopTrace_ = s.TracePos;
    s.BackTraceTop = s.TracePos - ViewHeight();
    showTraceNumbers();
    WfRowsFromEnd_ = ViewHeight();
}

void WaterfallBase::Cls() {
    picOriginal_.clear();
}

// ---- Trace numbers ---------------------------------------------------------------------------

void WaterfallBase::setTopScan(const std::string& text) {
    if (text == lblTopScan_.text) return;
    setLabelText(lblTopScan_, text);
    if (text != "N/A" && Val(text) < 0) {
        Cls();
        setLabelText(lblTopScan_, "0");
    }
}

void WaterfallBase::setBottenScan(int32_t value) {
    const std::string text = std::to_string(value);
    if (text == lblBottenScan_.text) return;
    setLabelText(lblBottenScan_, text);
    lblBottenScan_.visible = value >= 0;
    if (value < 0) st().BackTraceTop = 0;
}

void WaterfallBase::showTraceNumbers() {
    setBottenScan(st().BackTraceTop);
    setTopScan(std::to_string(WfTopTrace_));
}

void WaterfallBase::placeTick(int i, int x) {
    tickX_[size_t(i)] = x;
    tickShown_[size_t(i)] = true;
}

void WaterfallBase::hideTicks() {
    tickShown_.fill(false);
    for (Label& l : lblX_)
        l.visible = false;
}

// ---- Pointer
// -------------------------------------------------------------------------------------

void WaterfallBase::pointerAt(int x, int y, bool moving) {
    const int h = ViewHeight();
    PointerX_ = float(x);
    crossShown_ = true;
    crossY_ = y;
    PointerTrace_ = float(WfTopTrace_ - y);
    if (WfRowsFromEnd_ < h) {
        // A run upward from End: the rows stand at the foot.
        const int free = h - WfRowsFromEnd_;
        if (free > y) return;
        PointerTrace_ = float(st().BackTraceTop - (h - y));
    }
    if (moving && (x <= 0 || x >= ViewWidth())) {
        setLabelText(lblTime_, "");
        setLabelText(lblHz_, "");
        return;
    }
    if (PointerTrace_ > 0 && PointerTrace_ <= Val(lblTopScan_.text)) {
        setLabelText(lblTime_, "Trace :" + std::to_string(int64_t(PointerTrace_)));
        if (!pointerReadout()) setLabelText(lblHz_, "");
        lblTime_.visible = lblHz_.visible = true;
        lblTime_.top = lblHz_.top = picRect_.top() - lblTime_.height - 1;
        lblTime_.left = picRect_.right() + 1 - lblTime_.width;
        lblHz_.left = lblTime_.left - 3 - lblHz_.width;
    } else if (moving) {
        setLabelText(lblTime_, "");
        setLabelText(lblHz_, "");
    }
}

void WaterfallBase::mousePress(int button, int x, int y) {
    if (button != LeftButton || !picRect_.contains(x, y)) return;
    pointerAt(x - picRect_.left(), y - picRect_.top(), false);
}

void WaterfallBase::mouseMove(int buttons, int x, int y) {
    if (!(buttons & LeftButton) || !crossShown_) return;
    pointerAt(x - picRect_.left(), std::clamp(y - picRect_.top(), 0, ViewHeight() - 1), true);
}

void WaterfallBase::mouseRelease(int, int, int) {
    crossShown_ = false;
    lblTime_.visible = lblHz_.visible = false;
}

// ---- The whole view
// ------------------------------------------------------------------------------

std::vector<Label> WaterfallBase::visibleLabels() const {
    std::vector<Label> all;
    addShownOnForm(all, lblX_);
    addShownOnForm(all, std::array{lblTopScan_, lblBottenScan_, lblSX_});
    addShown(all, std::array{lblTime_, lblHz_});
    addScaleLabels(all);
    all.push_back(onBackground(rotatedLabel(title().toStdString(), kPicLeft / 2,
                                            picRect_.center().y(), 13, QStringLiteral("Arial")),
                               kFormBackColor));
    return all;
}

QImage WaterfallBase::picture() const {
    QImage img(std::max(formWidth_, 1), std::max(formHeight_, 1), QImage::Format_RGB32);
    img.fill(kFormBackColor);
    QPainter p(&img);
    p.setFont(labelFont());
    p.drawImage(picRect_.topLeft(), picOriginal_.toImage());
    p.setPen(Qt::black);
    const int foot = picRect_.bottom();
    for (size_t i = 0; i < tickX_.size(); ++i)
        if (tickShown_[i])
            p.drawLine(picRect_.left() + tickX_[i], foot - 9, picRect_.left() + tickX_[i], foot);
    if (crossShown_) {
        p.drawLine(picRect_.left(), picRect_.top() + crossY_, picRect_.right(),
                   picRect_.top() + crossY_);
        p.drawLine(picRect_.left() + int(PointerX_), picRect_.top(),
                   picRect_.left() + int(PointerX_), picRect_.bottom());
    }
    const QRect scale(picRect_.right() + 9, picRect_.top(), kScaleWidth, picRect_.height());
    p.drawImage(scale, imgPal_);
    p.drawRect(scale.adjusted(0, 0, -1, -1));
    paintScaleLabels(p);
    const QColor black(Qt::black);
    for (const Label& l : lblX_)
        paintLabel(p, l, black);
    for (const Label* l : {&lblTopScan_, &lblBottenScan_, &lblSX_, &lblTime_, &lblHz_})
        paintLabel(p, *l, black);
    p.end();
    Surface titled;
    titled.image() = img;
    titled.textRotated(kPicLeft / 2, picRect_.center().y(), title(), qRgb(0, 0, 0), 13,
                       QStringLiteral("Arial"));
    return titled.image();
}

} // namespace kv::waterfall
