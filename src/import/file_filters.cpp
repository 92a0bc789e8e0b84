// The import dialog's file types and their order.
#include "import/file_filters.h"

#include "platform/files.h"

namespace kv {

namespace {

using F = FilterName;

const std::array<std::array<F, 12>, 12> kOrders = {{
    {F::WAV, F::SHT, F::DZT, F::RD3, F::SEISMIC, F::RADSYS, F::SEG2, F::SPRSCAN, F::DT1, F::ZON,
     F::CSV, F::DAT},
    {F::SHT, F::WAV, F::DZT, F::RD3, F::SEISMIC, F::RADSYS, F::SEG2, F::SPRSCAN, F::DT1, F::ZON,
     F::CSV, F::DAT},
    {F::DZT, F::RD3, F::SEISMIC, F::RADSYS, F::SEG2, F::SPRSCAN, F::DT1, F::ZON, F::CSV, F::DAT,
     F::WAV, F::SHT},
    {F::RD3, F::DZT, F::SEISMIC, F::RADSYS, F::SEG2, F::SPRSCAN, F::DT1, F::ZON, F::CSV, F::DAT,
     F::WAV, F::SHT},
    {F::SEISMIC, F::DZT, F::RD3, F::RADSYS, F::SEG2, F::SPRSCAN, F::DT1, F::ZON, F::CSV, F::DAT,
     F::WAV, F::SHT},
    {F::RADSYS, F::RD3, F::SEISMIC, F::DZT, F::SEG2, F::SPRSCAN, F::DT1, F::ZON, F::CSV, F::DAT,
     F::WAV, F::SHT},
    {F::SEG2, F::SPRSCAN, F::RD3, F::SEISMIC, F::DZT, F::RADSYS, F::DT1, F::ZON, F::CSV, F::DAT,
     F::WAV, F::SHT},
    {F::DT1, F::RD3, F::SEISMIC, F::DZT, F::RADSYS, F::SEG2, F::SPRSCAN, F::ZON, F::CSV, F::DAT,
     F::WAV, F::SHT},
    {F::ZON, F::RD3, F::SEISMIC, F::DZT, F::RADSYS, F::SEG2, F::SPRSCAN, F::DT1, F::CSV, F::DAT,
     F::WAV, F::SHT},
    {F::CSV, F::RD3, F::SEISMIC, F::DZT, F::RADSYS, F::SEG2, F::SPRSCAN, F::DT1, F::ZON, F::DAT,
     F::WAV, F::SHT},
    {F::DAT, F::RD3, F::SEISMIC, F::DZT, F::RADSYS, F::SEG2, F::SPRSCAN, F::DT1, F::ZON, F::CSV,
     F::WAV, F::SHT},
    {F::SPRSCAN, F::SEG2, F::RD3, F::SEISMIC, F::DZT, F::RADSYS, F::DT1, F::ZON, F::CSV, F::DAT,
     F::WAV, F::SHT},
}};

struct Info {
    const char* name;
    const char* text;
    const char* ext;
};

const Info kInfo[12] = {
    {"WAV", "WAVE Files(*.wav)|*.wav|", "WAV"},
    {"SHT", "Wavestar\xC2\xAE Files(*.SHT)|*.SHT|", "SHT"},
    {"DZT", "GSSI Files(*.dzt)|*.dzt|", "DZT"},
    {"RD3", "Mal\xC3\xA5 files(*.rd3)|*.rd3|", "RD3"},
    {"SEISMIC", "Seismic files(*.sgy)|*.sgy|", "SGY"},
    {"RADSYS", "Radsys files(*.sgy)|*.sgy|", "SGY"},
    {"SEG2", "Seismic files SEG-2(*sg2)|*.sg2|", "SG2"},
    {"DT1", "SensorsSoftware DT1(*dt1)|*.dt1|", "DT1"},
    {"ZON", "Zon Files(*.dt)|*.dt|", "DT"},
    {"CSV", "Comma Separated Value (*.CSV)|*.CSV|", "CSV"},
    {"DAT", "Dat Files (*.dat)|*.dat|", "DAT"},
    {"SPRSCAN", "SPRScan ERA SEG-2(*sg2)|*.sg2|", "SG2"},
};

const Info& info(F f) {
    return kInfo[static_cast<int>(f)];
}

} // namespace

const char* filterName(FilterName f) {
    return info(f).name;
}
const char* filterText(FilterName f) {
    return info(f).text;
}

bool parseFilterName(const std::string& text, FilterName& out) {
    for (int i = 0; i < 12; ++i) {
        if (equalsNoCase(text, kInfo[i].name)) {
            out = static_cast<F>(i);
            return true;
        }
    }
    return false;
}

std::array<FilterName, 12> filterOrder(int fil) {
    if (fil < 1 || fil > 12) fil = 1;
    return kOrders[size_t(fil - 1)];
}

std::string importFilter(int fil) {
    std::string s;
    for (F f : filterOrder(fil))
        s += filterText(f);
    return s;
}

int filterIndexOf(int fil, FilterName f) {
    auto order = filterOrder(fil);
    for (int i = 0; i < 12; ++i)
        if (order[size_t(i)] == f) return i + 1;
    return 0;
}

int RadsysIndex(int fil) {
    return filterIndexOf(fil, F::RADSYS);
}
int SprScanIndex(int fil) {
    return filterIndexOf(fil, F::SPRSCAN);
}

int filterIndexForFile(int fil, const std::string& fileName) {
    std::string title = fileTitleOf(fileName);
    auto dot = title.find_last_of('.');
    if (dot == std::string::npos) return 0;
    std::string ext = upperAscii(title.substr(dot + 1));
    auto order = filterOrder(fil);
    for (int i = 0; i < 12; ++i)
        if (ext == info(order[size_t(i)]).ext) return i + 1;
    return 0;
}

} // namespace kv
