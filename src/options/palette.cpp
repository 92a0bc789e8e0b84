// Palette files and the palette chooser.
#include "options/palette.h"

#include "platform/files.h"
#include "platform/message_title.h"
#include "state/workbench.h"

#include <algorithm>
#include <fstream>
#include <vector>

namespace kv {

namespace {

constexpr size_t kHeaderBytes = 24;

uint32_t rgb(unsigned r, unsigned g, unsigned b) {
    return 0xFF000000u | (r << 16) | (g << 8) | b;
}

} // namespace

ColorTable greyTable() {
    ColorTable t{};
    for (unsigned i = 0; i < 256; ++i)
        t[i] = rgb(i, i, i);
    return t;
}

PaletteRead readPalette(const std::string& path) {
    PaletteRead r;
    std::ifstream in(path, std::ios::binary);
    if (path.empty() || !in) {
        r.error = "Palette file not found: " + path;
        return r;
    }
    // Only the table's bytes are read, however long the file.
    std::vector<unsigned char> bytes(kHeaderBytes + 4 * 256);
    in.read(reinterpret_cast<char*>(bytes.data()), std::streamsize(bytes.size()));
    bytes.resize(size_t(std::max<std::streamsize>(in.gcount(), 0)));
    if (bytes.empty()) {
        r.error = "Palette file is empty: " + path;
        return r;
    }
    auto at = [&bytes](size_t i) -> unsigned { return i < bytes.size() ? bytes[i] : 0u; };
    for (size_t i = 0; i < 256; ++i) {
        const size_t p = kHeaderBytes + 4 * i;
        r.table[i] = rgb(at(p), at(p + 1), at(p + 2));
    }
    r.ok = true;
    return r;
}

std::string palettePath(const ProgramState& st, const std::string& fileName) {
    return joinPath(joinPath(st.AppPath, "pal"), fileName);
}

ColorTable tableOrGrey(const std::string& path, std::string* error) {
    PaletteRead r = readPalette(path);
    if (error) *error = r.error;
    return r.ok ? r.table : greyTable();
}

namespace dlgPal {

void Form_Load(Workbench&, PalFields& f) {
    f.choice = 0;
}

void imgPal_Click(PalFields& f, int index) {
    if (index >= 0 && index < 8) f.choice = index + 1;
}

bool OKButton_Click(Workbench& wb, PalFields& f) {
    ProgramState& st = wb.st;
    if (f.choice < 1 || f.choice > 8) {
        wb.host.message("Select Palette First!", kMessageTitle, MsgIcon::Information);
        return true;
    }
    st.PalPath = palettePath(st, st.pal[size_t(f.choice - 1)]);
    st.PalFile = st.PalPath;
    // Only the view on show takes the choice; PalAd and IndP, which a newly opened view and the
    // next start read, change on the options page alone.
    const ViewId v = st.BscanShow == 1 ? ViewId::Radargram : ViewId::Waterfall;
    if (viewFlag(st, v)) wb.views.viewCommand(wb, v, "DrawBMP");
    return false;
}

bool CancelButton_Click(Workbench&, PalFields&) {
    return false;
}

} // namespace dlgPal

} // namespace kv
