// Spectrum references: up to two saved spectra laid over the live one. Each line lives in a
// fixed file of the home's `ref` folder (ref1.pns, ref2.pns), so it survives a restart; the
// reference dialog sets it from the spectrum on show, saves a copy, loads another file over
// it, shows what it holds, colours and deletes it. The behaviour is here; the window is the
// app's.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace kv {

struct ProgramState;
struct Workbench;

/// The home's reference folder, and the fixed file of line 1 or 2 with extension `ext`
/// ("pns", "pno", "pnp").
std::string refFolder(const ProgramState& st);
std::string fixedRefPath(const ProgramState& st, int line, const char* ext);
/// Removes the fixed file of a line, so that no tail of a longer file can stay behind.
void removeRefFile(const std::string& path);
/// Copies `from` over `to` (the folder is made when missing). False when it could not.
bool copyRefFile(const std::string& from, const std::string& to);

/// The .pns bytes for the spectrum on show, as Set and Save write them.
std::string spectrumRefBytes(const ProgramState& st);

/// The magnitudes of the selected line (RefSelect) in the plot's present unit: linear as
/// stored, or dB relative to the reference's own full scale. Bins below the live frequency step
/// are dropped; a reference reaching beyond the live band is cut there (RefFitMode 2), one with
/// the live band is RefFitMode 1.
void ReferenseAktivate(ProgramState& st);
/// ReferenseAktivate for every line that is on (a new data set, a new Y scale), the selection
/// kept.
void activateShownReferences(ProgramState& st);

/// Reads the fixed file of `line` into it. Wrong magic: "Wrong File Format!", nothing changes.
/// Out of the live range, or figures that cannot be drawn: "Out of range!" and the line off.
/// Otherwise the line holds the file, is ticked, valid and shown, and is activated. True when
/// the line now holds the file. `path` reads another file than the line's own (the command-line
/// tool's references, which leave the home's files alone).
bool readSpectrumRef(Workbench& wb, int line, const std::string& path = "");

/// What the reference dialog shows.
struct RefFields {
    bool Check1 = false, Check2 = false; // the lines on show
    int16_t optLine = 1;                 // the line the buttons work on
    std::string Label1Color;             // the chosen line's colour (decimal 0x00BBGGRR)
};

namespace dlgRef {
/// Looks for both fixed files and marks a line valid when its header passes the range tests.
/// Lines that are on stay ticked.
void Form_Load(Workbench& wb, RefFields& f);
/// Takes the spectrum on show as the chosen line, writes its fixed file and reads it back.
void cmdSet_Click(Workbench& wb, RefFields& f);
/// Set, then a copy of the fixed file under a name the user chooses.
void cmdSave_Click(Workbench& wb, RefFields& f);
/// A file the user chooses is copied over the chosen line's fixed file and read.
void cmdLoad_Click(Workbench& wb, RefFields& f);
/// The chosen line goes off and its fixed file goes.
void cmdDelete_Click(Workbench& wb, RefFields& f);
/// The chosen file's bin count and maximum frequency.
void cmdInfo_Click(Workbench& wb, RefFields& f);
/// The colour picker's answer for the chosen line: decimal colour text, empty for Cancel.
void colorChosen(Workbench& wb, RefFields& f, const std::string& color);
/// A check box changed (its new state is in the fields). Returns whether the dialog stays open:
/// with both cleared it closes.
bool Check_Click(Workbench& wb, RefFields& f, int line);
void optLine_Click(Workbench& wb, RefFields& f, int16_t line);
} // namespace dlgRef

namespace dlgRefC {
/// The six colour cells, 0x00BBGGRR.
extern const std::array<uint32_t, 6> kCellColors;
/// OK with cell `cell` chosen (0-based): its decimal colour; -1 (none) gives empty text.
std::string OKButton_Click(int cell);
} // namespace dlgRefC

/// The Reference commands of the three views: refused while a filter is on, else the
/// dialog of the view ("dlgRef", "TimeRef", "PhasaRef").
void openReferenceDialog(Workbench& wb, const char* dialog);
/// The reference menu ticks follow the lines on show.
void updateReferenceChecks(Workbench& wb);

} // namespace kv
