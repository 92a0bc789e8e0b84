// One entry point per recording format, and the table the open command chooses from.
#pragma once

#include "import/reader.h"

namespace kv {

// WAV: the RIFF check, then header and samples.
bool WavCheck(ImportContext& ctx);
void ReadWav(ImportContext& ctx); // WavHeader + WavSamples
// Radar formats.
void DztRead(ImportContext& ctx);
void ReadRd3(ImportContext& ctx); // .rd3 with its .rad header
void ReadDt1(ImportContext& ctx); // .DT1 with its .HD header
void ReadZon(ImportContext& ctx); // Zon .dt

// Wavestar .SHT: one trace in volts; a file that is not one sets ImportFailed.
void ReadSht(ImportContext& ctx);

// SEG-Y: the import dialog's entry (IsRadsys) picks Seismic or Radsys.
void ReadSeismic(ImportContext& ctx);
void ReadRadsys(ImportContext& ctx);
void ReadSgy(ImportContext& ctx);
// SEG-2: IsSprScan picks picoseconds (SPRScan ERA) or seconds (SEG-2) for the interval.
void ReadSg2(ImportContext& ctx);
// Tables: CSV time/value pairs and the .dat/.hdr pair, each into one trace.
void ReadCsv(ImportContext& ctx);
/// One CSV row split into fields: commas outside quotes end a field; a quote opens quotes, a
/// doubled quote inside them is one quote, and a quote followed by anything else closes them.
/// A trailing empty field is not kept.
std::vector<std::string> csvRowFields(const std::string& line);
void ReadDat(ImportContext& ctx);

/// One row per format flag: how the flag is recognised, what the open command sets around the
/// reader, and the reader itself. Adding a format means adding its reader file and one row.
struct FormatRow {
    bool ProgramState::*flag;
    const char* name;
    int16_t showVerticalBefore; // 0: left as it is
    bool stereoOff;             // StereoFlag 0 before the reader
    const char* yUnitAfter;     // nullptr: left as it is
    ReaderFn read;              // nullptr: no reader for this format yet
    bool rereadAfterOptions;    // ChNewDS reads it again after a settings change
};

const std::vector<FormatRow>& formatTable();

/// The format flags, each False.
void clearFormatFlags(ProgramState& st);
/// Sets the format flag from the last characters of a file name; a name that matches nothing
/// leaves the flags as they were.
void detectFormat(ProgramState& st, const std::string& fileTitle);
/// The row of the flag that is set, or nullptr.
const FormatRow* activeFormat(const ProgramState& st);

} // namespace kv
