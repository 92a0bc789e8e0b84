// O-scope and phase references: two saved traces laid over the live O-scope trace, and two
// saved phase curves over the live phase plot. Each line lives in a fixed file of the home's
// `ref` folder (ref1.pno, ref2.pno; ref1.pnp, ref2.pnp). The dialogs `TimeRef` and `PhasaRef`
// work as the spectrum's reference dialog does; how a stored trace is fitted to the view on
// show is the view's (its CreateRef).
#pragma once

#include <cstdint>
#include <string>

namespace kv {

struct ProgramState;
struct Workbench;

/// What the two dialogs show.
struct TimeRefFields {
    bool Check1 = false, Check2 = false;
    int16_t optLine = 1;
    std::string Label1Color;
};

/// Reads the fixed .pno file of `line` into it: samples, the file's full scale, its span and
/// the trace. Marks the line valid; a file that cannot be drawn leaves it invalid and off.
/// `path` reads another file than the line's own.
bool readTimeRef(ProgramState& st, int line, const std::string& path = "");
/// Reads the fixed .pnp file of `line`. Its maximum frequency must lie above the live step and
/// its step below the live maximum: else "Out of range!" and the line goes off.
bool readPhaseRef(Workbench& wb, int line, const std::string& path = "");
/// The bytes Set writes for the O-scope trace and the phase curve on show (whose phases are
/// taken first when the builder still owes them).
std::string timeRefBytes(const ProgramState& st);
std::string phaseRefBytes(ProgramState& st);

namespace TimeRef {
void Form_Load(Workbench& wb, TimeRefFields& f);
void cmdSet_Click(Workbench& wb, TimeRefFields& f);
void cmdSave_Click(Workbench& wb, TimeRefFields& f);
void cmdLoad_Click(Workbench& wb, TimeRefFields& f);
void cmdDelete_Click(Workbench& wb, TimeRefFields& f);
void colorChosen(Workbench& wb, TimeRefFields& f, const std::string& color);
void optLine_Click(Workbench& wb, TimeRefFields& f, int16_t line);
/// Applies the ticks. A ticked line without a valid file: "Reference file does not exist or is
/// invalid" and the dialog stays (true). Otherwise the view lays the lines out and draws them.
bool OKButton_Click(Workbench& wb, TimeRefFields& f);
} // namespace TimeRef

namespace PhasaRef {
void Form_Load(Workbench& wb, TimeRefFields& f);
void cmdSet_Click(Workbench& wb, TimeRefFields& f);
void cmdSave_Click(Workbench& wb, TimeRefFields& f);
void cmdLoad_Click(Workbench& wb, TimeRefFields& f);
void cmdDelete_Click(Workbench& wb, TimeRefFields& f);
void colorChosen(Workbench& wb, TimeRefFields& f, const std::string& color);
void optLine_Click(Workbench& wb, TimeRefFields& f, int16_t line);
bool OKButton_Click(Workbench& wb, TimeRefFields& f);
} // namespace PhasaRef

} // namespace kv
