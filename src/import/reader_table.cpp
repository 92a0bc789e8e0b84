// The import dialog's entries, one row each, in the order the dialog lists them for the first
// default type. Adding a format means adding its reader file and one row here; a new row goes
// after the last one, and every dialog lists it after the entries named in the orders below.
#include "import/format_table.h"

namespace kv {

// The readers' entry points, each defined in the reader file of its format.
void ReadWav(ImportContext& ctx);     // wav.cpp: RIFF check, header, samples
void ReadSht(ImportContext& ctx);     // sht.cpp: Wavestar scope record, one trace in volts
void DztRead(ImportContext& ctx);     // dzt.cpp
void ReadRd3(ImportContext& ctx);     // rd3.cpp: .rd3 with its .rad header
void ReadSeismic(ImportContext& ctx); // segy.cpp: the seismic layout
void ReadRadsys(ImportContext& ctx);  // segy.cpp: counts in the first trace header
void ReadSg2(ImportContext& ctx);     // seg2.cpp: IsSprScan picks the interval's unit
void ReadDt1(ImportContext& ctx);     // dt1.cpp: .DT1 with its .HD header
void ReadZon(ImportContext& ctx);     // zon.cpp
void ReadCsv(ImportContext& ctx);     // csv.cpp: time/value pairs into one trace
void ReadDat(ImportContext& ctx);     // dat.cpp: .dat with its .hdr, into one trace
void ReadSegyStd(ImportContext& ctx); // segy_std.cpp: SEG-Y of any revision
void ReadSeg2Std(ImportContext& ctx); // seg2_std.cpp: SEG-2 of any variant
// The entries that read a format as instruments write it, beside the fixed-layout ones.
void ReadDztStd(ImportContext& ctx); // dzt_std.cpp: every header size, width and channel
void ReadWavStd(ImportContext& ctx); // wav_std.cpp: a real chunk walk, every coding, RF64
void ReadCsvStd(ImportContext& ctx); // csv_std.cpp: scope exports with their preambles

namespace {

using S = ProgramState;

std::vector<ImportEntry> entries() {
    return {
        {.name = "WAV",
         .dialogText = "WAVE Files(*.wav)|*.wav|",
         .extensions = {"WAV"},
         .flag = &S::IsWav,
         .read = ReadWav,
         .stereoFlagBefore = 1,
         .yUnitAfter = "Percent Full Scale",
         .perChannelFiles = true,
         .rereadAfterOptions = true},
        {.name = "SHT",
         .dialogText = "Wavestar\xC2\xAE Files(*.SHT)|*.SHT|",
         .extensions = {"SHT"},
         .flag = &S::IsSht,
         .read = ReadSht,
         .showVerticalBefore = 1,
         .stereoFlagBefore = 0,
         .yUnitAfter = "Volt",
         .rereadAfterOptions = true},
        {.name = "DZT",
         .dialogText = "GSSI Files(*.dzt)|*.dzt|",
         .extensions = {"DZT"},
         .flag = &S::IsDzt,
         .read = DztRead,
         .showVerticalBefore = 2,
         .stereoFlagBefore = 0,
         .yUnitAfter = "Ampl.(bits)",
         .rereadAfterOptions = true},
        {.name = "RD3",
         .dialogText = "Mal\xC3\xA5 files(*.rd3)|*.rd3|",
         .extensions = {"RD3"},
         .flag = &S::IsRd3,
         .read = ReadRd3,
         .showVerticalBefore = 2},
        {.name = "SEISMIC",
         .dialogText = "Seismic files(*.sgy)|*.sgy|",
         .extensions = {"SGY"},
         .flag = &S::IsSgy,
         .read = ReadSeismic,
         .showVerticalBefore = 2},
        {.name = "RADSYS",
         .dialogText = "Radsys files(*.sgy)|*.sgy|",
         .extensions = {"SGY"},
         .flag = &S::IsSgy,
         .chosenFlag = &S::IsRadsys,
         .read = ReadRadsys,
         .showVerticalBefore = 2},
        {.name = "SEG2",
         .dialogText = "Seismic files SEG-2(*sg2)|*.sg2|",
         .extensions = {"SG2"},
         .flag = &S::IsSg2,
         .read = ReadSg2,
         .showVerticalBefore = 2},
        {.name = "SPRSCAN",
         .dialogText = "SPRScan ERA SEG-2(*sg2)|*.sg2|",
         .extensions = {"SG2"},
         .flag = &S::IsSg2,
         .chosenFlag = &S::IsSprScan,
         .read = ReadSg2,
         .showVerticalBefore = 2},
        {.name = "DT1",
         .dialogText = "SensorsSoftware DT1(*dt1)|*.dt1|",
         .extensions = {"DT1"},
         .flag = &S::IsDt1,
         .read = ReadDt1,
         .showVerticalBefore = 2},
        {.name = "ZON",
         .dialogText = "Zon Files(*.dt)|*.dt|",
         .extensions = {"DT"},
         .flag = &S::IsDt,
         .read = ReadZon,
         .showVerticalBefore = 2},
        {.name = "CSV",
         .dialogText = "Comma Separated Value (*.CSV)|*.CSV|",
         .extensions = {"CSV"},
         .flag = &S::IsCsv,
         .read = ReadCsv,
         .showVerticalBefore = 1,
         .rereadAfterOptions = true},
        {.name = "DAT",
         .dialogText = "Dat Files (*.dat)|*.dat|",
         .extensions = {"DAT"},
         .flag = &S::IsDat,
         .read = ReadDat,
         .showVerticalBefore = 1,
         .rereadAfterOptions = true},
        // Beside the twelve: the standards as published, one working trace per trace of the
        // file. Their first extensions name them in reports apart from the fixed-rule entries.
        {.name = "SEGY-STD",
         .dialogText = "SEG-Y, all revisions (*.sgy;*.segy)|*.sgy;*.segy|",
         .extensions = {"SEGY", "SGY"},
         .flag = &S::IsSegyStd,
         .read = ReadSegyStd,
         .showVerticalBefore = 2},
        {.name = "SEG2-STD",
         .dialogText = "SEG-2, all variants (*.sg2;*.seg2;*.dat)|*.sg2;*.seg2;*.dat|",
         .extensions = {"SEG2", "SG2", "DAT"},
         .flag = &S::IsSeg2Std,
         .read = ReadSeg2Std,
         .showVerticalBefore = 2},
        {.name = "DZT-STD",
         .dialogText = "Radar DZT, all variants (*.dzt)|*.dzt|",
         .extensions = {"DZT"},
         .flag = &S::IsDztStd,
         .read = ReadDztStd,
         .showVerticalBefore = 2,
         .stereoFlagBefore = 0,
         .yUnitAfter = "Ampl.(bits)",
         .rereadAfterOptions = true},
        {.name = "WAV-STD",
         .dialogText = "WAV, all variants (*.wav)|*.wav|",
         .extensions = {"WAV"},
         .flag = &S::IsWavStd,
         .read = ReadWavStd,
         .stereoFlagBefore = 0,
         .yUnitAfter = "Percent Full Scale",
         .rereadAfterOptions = true},
        {.name = "CSV-STD",
         .dialogText = "Oscilloscope CSV (*.csv)|*.csv|",
         .extensions = {"CSV"},
         .flag = &S::IsCsvStd,
         .read = ReadCsvStd,
         .showVerticalBefore = 1,
         .yUnitAfter = "Volt",
         .rereadAfterOptions = true},
    };
}

// The dialog order for each default type Fil 1 to 12. The type itself comes first (SEG-2 and
// SPRScan ERA keep each other company); the rest follow one of three fixed sequences that no
// shorter rule gives, so the orders are kept here as data.
const std::vector<std::string> kDialogOrders = {
    "WAV SHT DZT RD3 SEISMIC RADSYS SEG2 SPRSCAN DT1 ZON CSV DAT",
    "SHT WAV DZT RD3 SEISMIC RADSYS SEG2 SPRSCAN DT1 ZON CSV DAT",
    "DZT RD3 SEISMIC RADSYS SEG2 SPRSCAN DT1 ZON CSV DAT WAV SHT",
    "RD3 DZT SEISMIC RADSYS SEG2 SPRSCAN DT1 ZON CSV DAT WAV SHT",
    "SEISMIC DZT RD3 RADSYS SEG2 SPRSCAN DT1 ZON CSV DAT WAV SHT",
    "RADSYS RD3 SEISMIC DZT SEG2 SPRSCAN DT1 ZON CSV DAT WAV SHT",
    "SEG2 SPRSCAN RD3 SEISMIC DZT RADSYS DT1 ZON CSV DAT WAV SHT",
    "DT1 RD3 SEISMIC DZT RADSYS SEG2 SPRSCAN ZON CSV DAT WAV SHT",
    "ZON RD3 SEISMIC DZT RADSYS SEG2 SPRSCAN DT1 CSV DAT WAV SHT",
    "CSV RD3 SEISMIC DZT RADSYS SEG2 SPRSCAN DT1 ZON DAT WAV SHT",
    "DAT RD3 SEISMIC DZT RADSYS SEG2 SPRSCAN DT1 ZON CSV WAV SHT",
    "SPRSCAN SEG2 RD3 SEISMIC DZT RADSYS DT1 ZON CSV DAT WAV SHT",
};

} // namespace

const FormatTable& formatTable() {
    static const FormatTable table(entries(), kDialogOrders);
    return table;
}

} // namespace kv
