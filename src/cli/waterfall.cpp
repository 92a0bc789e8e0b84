// kelvorandine-cli waterfall: the rows a waterfall paints, for a stretch of the data set or the
// whole survey, as numbers (CSV) or as one picture.
#include "cli/commands.h"
#include "engine/display_map.h"
#include "engine/spectrum.h"
#include "options/palette.h"
#include "platform/numeric.h"
#include "views/radargram/radargram_view.h"
#include "views/spectrum/spectrum_scales.h"
#include "views/waterfall/waterfall_view.h"

#include <QImage>
#include <cstdio>
#include <iostream>

namespace kv::cli {

namespace {

/// The palette indices of the row on show: the frequency waterfall's from the columns, the
/// radargram's from the samples; element 0 is the one that never shows.
std::vector<uint8_t> rowIndices(const ProgramState& st, bool time) {
    if (time) {
        std::vector<uint8_t> row(size_t(std::max(st.Sp_Samples, 0)) + 1, 0);
        for (size_t i = 0; i + 1 < row.size() && i < st.TraceBuf.size(); ++i)
            row[i] = uint8_t(radargram::sampleIndex(st.TraceBuf[i], st.FullScalePos, st.Flipped));
        return row;
    }
    const float dbScale = waterfall::RowDbScaleOf(st);
    const float linScale = waterfall::RowLinScaleAtRedraw(st);
    const int width = waterfall::rowWidthFor(std::max<int32_t>(int32_t(st.ColVal.size()) - 1, 0));
    return waterfall::levelRow(
        st.ColVal, st.ColLogX, int(st.ColVal.size()) - 2, st.DrSet,
        spectrum::Log10(st.Sp_Samples / 2.0, st.FullScalePos), size_t(width) + 1, [&](double v) {
            return waterfall::levelIndex(v, st.YLinear, st.DrSet, st.TopDb, dbScale, linScale);
        });
}

int rowWidthOf(const ProgramState& st, bool time) {
    return time ? st.Sp_Samples
                : waterfall::rowWidthFor(std::max<int32_t>(int32_t(st.ColVal.size()) - 1, 0));
}

} // namespace

int runWaterfall(const WaterfallOptions& w, const std::string& exeDir) {
    if (w.csv == !w.output.empty()) throw UsageError("waterfall writes either --csv or -o OUT.png");
    if (w.from < 0) throw UsageError("--from wants a position of 0 or more");
    Session s;
    nlohmann::json j;
    if (!openForWork(s, w.common, exeDir, j)) return kExitNoData;
    applyConditioning(s, w.common);
    ProgramState& st = s.st;
    if (w.from > st.LastTrace)
        throw UsageError("--from must lie between 0 and " + std::to_string(st.LastTrace));
    const int last = w.count > 0 ? std::min<int>(st.LastTrace, w.from + w.count - 1) : st.LastTrace;
    st.PlotColumns = w.columns > 0 ? w.columns : plotColumnsFor(800);
    st.PlayRew = false;
    const std::string palette = palettePath(st, st.PalAd);
    std::string paletteError;
    const ColorTable table = tableOrGrey(palette, &paletteError);
    if (!paletteError.empty()) std::cerr << "kelvorandine-cli: " << paletteError << "\n";

    QImage img;
    std::string out;
    for (int k = w.from; k <= last; ++k) {
        moveTo(st, k);
        FyllSpData(st);
        UpdateTopDb(st);
        if (!w.csv) {
            const int width = std::max(rowWidthOf(st, w.time), 1);
            if (img.isNull()) {
                img = QImage(width, last - w.from + 1, QImage::Format_RGB32);
                img.fill(0xFFFFFFFFu);
            }
            const QImage row = waterfall::rowImage(rowIndices(st, w.time), width, table);
            const int n = std::min(width, img.width());
            std::copy_n(reinterpret_cast<const QRgb*>(row.constScanLine(0)), n,
                        reinterpret_cast<QRgb*>(img.scanLine(k - w.from)));
            continue;
        }
        out = std::to_string(k);
        if (w.indices) {
            const std::vector<uint8_t> row = rowIndices(st, w.time);
            // As the view paints them: pixel x shows element x + 1.
            for (int x = 0; x < rowWidthOf(st, w.time); ++x)
                out += "," + std::to_string(size_t(x) + 1 < row.size() ? row[size_t(x) + 1] : 0);
        } else if (w.time) {
            for (int i = 0; i < st.Sp_Samples && size_t(i) < st.TraceBuf.size(); ++i)
                out += "," + shortestText(st.TraceBuf[size_t(i)]);
        } else {
            for (float v : st.ColVal)
                out += "," + shortestText(v);
        }
        out.push_back('\n');
        std::fwrite(out.data(), 1, out.size(), stdout);
    }
    if (w.csv) {
        std::fflush(stdout);
        return kExitOk;
    }
    const bool written = img.save(QString::fromStdString(w.output), "PNG");
    j = describe(s);
    j["rows"] = last - w.from + 1;
    j["width"] = img.width();
    j["palette"] = palette;
    j["output"] = w.output;
    j["written"] = written;
    printJson(j);
    return written ? kExitOk : kExitNoData;
}

} // namespace kv::cli
