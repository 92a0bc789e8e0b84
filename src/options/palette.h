// The colour tables of the waterfall views: a palette file read into 256 colours, the folder
// and slots they come from, and the palette chooser's behaviour. Plain C++, so that the views,
// the options dialog and the command-line tool all read palettes through the same function.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace kv {

struct Workbench;
struct ProgramState;

/// 256 colours, each 0xFFRRGGBB; index 0 is the foot of the colour scale, 255 its top.
using ColorTable = std::array<uint32_t, 256>;

/// Black to white in 256 even steps: what a view shows when its palette file cannot be read.
ColorTable greyTable();

/// A palette file as read: the table, and whether the file gave one.
struct PaletteRead {
    ColorTable table{};
    bool ok = false;
    /// Why it failed, naming the file; empty when ok.
    std::string error;
};

/// A RIFF palette read at fixed places: after a 24-byte header, entry i has red, green and blue
/// at bytes 24 + 4i, 25 + 4i and 26 + 4i. The header is not checked, so any file of bytes gives
/// colours; a file shorter than the 256 entries gives black for the entries it lacks. A file
/// that is missing, unreadable or empty gives no table (ok false) and the reason.
PaletteRead readPalette(const std::string& path);

/// Where a palette file of the `pal` folder stands: AppPath/pal/name.
std::string palettePath(const ProgramState& st, const std::string& fileName);

/// What a view uses: the table of `path`, or, when it gives none, the grey table.
ColorTable tableOrGrey(const std::string& path, std::string* error = nullptr);

/// The palette chooser: eight slot pictures, one of them picked, then OK.
struct PalFields {
    /// 1..8, the slot picked; 0 until one is clicked.
    int choice = 0;
};

namespace dlgPal {
/// The dialog comes up with nothing picked.
void Form_Load(Workbench& wb, PalFields& f);
/// Slot picture `index` (0..7) was clicked.
void imgPal_Click(PalFields& f, int index);
/// With nothing picked: "Select Palette First!" and the dialog stays (true). Else PalPath and
/// PalFile name the slot's file and the open waterfall takes it for its next row and its
/// colour scale; PalAd and IndP stay; the dialog closes (false).
bool OKButton_Click(Workbench& wb, PalFields& f);
/// Nothing changes; the dialog closes (false).
bool CancelButton_Click(Workbench& wb, PalFields& f);
} // namespace dlgPal

} // namespace kv
