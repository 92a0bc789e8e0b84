// Reading and writing SP.ini.
#include "state/settings.h"

#include "generated/factory_ini.h"
#include "platform/files.h"
#include "platform/numeric.h"
#include "state/workbench.h"

#define SI_CONVERT_ICU
#include <SimpleIni.h>

#include <cctype>
#include <charconv>
#include <cmath>
#include <functional>
#include <map>
#include <optional>

namespace kv {

namespace {

constexpr const char* kTitle = "Kelvorandine®";

std::string lowerAscii(std::string s) {
    for (char& c : s)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

std::string trim(std::string s) {
    auto notBlank = [](char c) { return c != ' ' && c != '\t' && c != '\r' && c != '\n'; };
    while (!s.empty() && !notBlank(s.back()))
        s.pop_back();
    size_t i = 0;
    while (i < s.size() && !notBlank(s[i]))
        ++i;
    return s.substr(i);
}

/// A whole-text numeric conversion: blanks around the number are allowed, anything else fails.
/// "&H" hexadecimal is accepted, as the conversion functions of the settings reader always did.
std::optional<double> parseNumber(const std::string& raw) {
    std::string s = trim(raw);
    if (s.empty()) return std::nullopt;
    if (s.size() > 2 && s[0] == '&' && (s[1] == 'H' || s[1] == 'h')) {
        long long v = 0;
        auto r = std::from_chars(s.data() + 2, s.data() + s.size(), v, 16);
        if (r.ec != std::errc() || r.ptr != s.data() + s.size()) return std::nullopt;
        return static_cast<double>(v);
    }
    const char* b = s.data();
    if (*b == '+') ++b;
    double v = 0;
    auto r = std::from_chars(b, s.data() + s.size(), v);
    if (r.ec != std::errc() || r.ptr != s.data() + s.size() || !std::isfinite(v))
        return std::nullopt;
    return v;
}

class IniReader {
  public:
    IniReader(CSimpleIniA& file, CSimpleIniA& factory,
              const std::map<std::string, std::string>& overrides)
        : file_(file), factory_(factory), overrides_(overrides) {}

    std::string text(const char* section, const char* key) {
        std::string k = trim(key);
        auto o = overrides_.find(lowerAscii(std::string(section) + "." + k));
        if (o != overrides_.end()) return o->second;
        const char* v = file_.GetValue(section, k.c_str(), "");
        std::string s = v ? v : "";
        // The profile reader hands back at most 254 characters, cut at the first NUL.
        if (auto nul = s.find('\0'); nul != std::string::npos) s.resize(nul);
        if (s.size() > 254) s.resize(254);
        return s;
    }

    double number(const char* section, const char* key, double lo, double hi) {
        auto v = parseNumber(text(section, key));
        if (v && *v >= lo - 0.5 && *v <= hi + 0.5) return *v;
        bad.push_back(std::string("[") + section + "] " + trim(key));
        const char* f = factory_.GetValue(section, trim(key).c_str(), "0");
        return parseNumber(f ? f : "0").value_or(0.0);
    }

    int16_t i16(const char* s, const char* k) { return toInt16(number(s, k, -32768, 32767)); }
    int32_t i32(const char* s, const char* k) {
        return toInt32(number(s, k, -2147483648.0, 2147483647.0));
    }
    float f32v(const char* s, const char* k) {
        return static_cast<float>(number(s, k, -3.4e38, 3.4e38));
    }

    /// A key that settings files written before it existed lack: absent, empty, not a number or
    /// outside lo..32767, it takes `fallback` and is never named in the message.
    int16_t optionalI16(const char* s, const char* k, int16_t lo, int16_t fallback) {
        auto v = parseNumber(text(s, k));
        if (!v || *v < lo - 0.5 || *v > 32767.5) return fallback;
        return toInt16(*v);
    }

    std::vector<std::string> bad;

  private:
    CSimpleIniA& file_;
    CSimpleIniA& factory_;
    const std::map<std::string, std::string>& overrides_;
};

void loadFactory(CSimpleIniA& ini) {
    ini.SetUnicode(true);
    ini.LoadData(factorySettingsText());
}

/// Loads SP.ini for writing; a missing file starts from nothing.
void loadForWrite(const std::string& path, CSimpleIniA& ini) {
    ini.SetUnicode(true);
    ini.SetMultiKey(false);
    ini.SetSpaces(false);
    if (fileExists(path)) ini.LoadFile(path.c_str());
}

bool saveIni(Workbench& wb, CSimpleIniA& ini, const std::string& path) {
    std::string out;
    if (ini.Save(out) >= 0 && writeFileAtomically(path, out)) return true;
    wb.host.message("The settings could not be written to " + path + ".", kTitle,
                    MsgIcon::Critical);
    return false;
}

void put(CSimpleIniA& ini, const char* section, const char* key, const std::string& value) {
    ini.SetValue(section, key, value.c_str());
}
void put(CSimpleIniA& ini, const char* section, const char* key, int32_t value) {
    put(ini, section, key, std::to_string(value));
}
void put(CSimpleIniA& ini, const char* section, const char* key, float value) {
    put(ini, section, key, shortestText(value));
}

void writeReferenceColours(CSimpleIniA& ini, const ProgramState& st) {
    put(ini, "TimeWindow", "Osc1Color", st.Osc1Color);
    put(ini, "TimeWindow", "Osc2Color", st.Osc2Color);
    put(ini, "FFT", "Line1Color", st.Line1Color);
    put(ini, "FFT", "Line2Color", st.Line2Color);
    put(ini, "Fasa", "Ph1Color", st.Ph1Color);
    put(ini, "Fasa", "Ph2Color", st.Ph2Color);
}

} // namespace

const char* factorySettingsText() {
    return kFactoryIniText;
}

std::string settingsPath(const ProgramState& st) {
    return joinPath(st.AppPath, "SP.ini");
}

std::string readSetting(const ProgramState& st, const char* section, const char* key) {
    CSimpleIniA file, factory;
    file.SetUnicode(true);
    loadFactory(factory);
    const std::string path = settingsPath(st);
    const bool found = fileExists(path) && file.LoadFile(path.c_str()) >= 0;
    IniReader r(found ? file : factory, factory, st.SettingsOverrides);
    return r.text(section, key);
}

void ReadINI(Workbench& wb) {
    ProgramState& st = wb.st;
    const std::string path = settingsPath(st);
    CSimpleIniA file, factory;
    file.SetUnicode(true);
    loadFactory(factory);
    const bool found = fileExists(path) && file.LoadFile(path.c_str()) >= 0;
    IniReader r(found ? file : factory, factory, st.SettingsOverrides);

    st.Sp_Samples = r.i32("Gen", "Sp_Samples");
    st.Fil = r.i16("Gen", "Fil");
    st.NewDS = r.i16("Gen", "NewDS");
    st.Padding_Int = r.i16("Gen", "Padding_Int");
    st.BscanShow = r.i16("Gen", "BscanShow");
    st.StSp = r.i16("Gen", "StSp");
    st.StPh = r.i16("Gen", "StPh");
    st.StOs = r.i16("Gen", "StOs");
    st.StWat = r.i16("Gen", "StWat");
    st.ImportChannel = r.optionalI16("Gen", "ImportChannel", 1, 1);
    wb.cmd.check("mnuOlOp", st.StSp == 1 && st.StPh == 1 && st.StOs == 1 && st.StWat == 1);

    st.Time_LineColor = r.text("TimeWindow", "Time_LineColor");
    st.Time_BackColor = r.text("TimeWindow", "Time_BackColor");
    st.Time_GridColor = r.text("TimeWindow", "Time_GridColor");
    st.ShowGrid = r.i16("TimeWindow", "ShowGrid");
    st.Reference = r.f32v("TimeWindow", "Reference");
    st.ShowVertical = r.i16("TimeWindow", "ShowVertical");
    st.RefDel = r.f32v("TimeWindow", "RefDel");
    st.TimeWindowed = r.i16("TimeWindow", "TimeWindowed");
    st.Osc1Color = r.text("TimeWindow", "Osc1Color");
    st.Osc2Color = r.text("TimeWindow", "Osc2Color");

    st.DrSet = r.i16("FFT", "DrSet");
    st.FFT_LineColor = r.text("FFT", "FFT_LineColor");
    st.FFT_BackColor = r.text("FFT", "FFT_BackColor");
    st.FFT_GridColor = r.text("FFT", "FFT_GridColor");
    st.FFT_ShowGrid = r.i16("FFT", "FFT_ShowGrid");
    st.FFT_Window = r.i16("FFT", "FFT_Window");
    st.AverVal = r.i16("FFT", "AverVal");
    st.YScale = r.i16("FFT", "YScale");
    st.LogSh = r.f32v("FFT", "LogSh");
    st.LogShift = st.LogSh * 10.0f;
    st.AS_Bar = r.i16("FFT", "AS_Bar");
    st.PlotRange = r.i32("FFT", "PlotRange");
    st.Offset_Log = r.i32("FFT", "Offset_Log");
    st.Offset_Lin = r.f32v("FFT", "Offset_Lin");
    // The key is asked for with a trailing blank; blanks are not part of a key, so this is the
    // same entry SaveOptions writes as "ModeFFT".
    st.ModeFFT = r.i16("FFT", "ModeFFT ");
    st.dBFS = r.i16("FFT", "dBFS");
    if (st.dBFS == 0) st.dBFS_On = false;
    if (st.dBFS == 1) st.dBFS_On = true;
    st.Line1Color = r.text("FFT", "Line1Color");
    st.Line2Color = r.text("FFT", "Line2Color");

    st.F_LineColor = r.text("Fasa", "F_LineColor");
    st.F_BackColor = r.text("Fasa", "F_BackColor");
    st.F_GridColor = r.text("Fasa", "F_GridColor");
    st.F_ShowGrid = r.i16("Fasa", "F_ShowGrid");
    st.Ph1Color = r.text("Fasa", "Ph1Color");
    st.Ph2Color = r.text("Fasa", "Ph2Color");

    st.THDdB = r.i16("AnFFT", "THDdB");
    st.Bred = r.i16("AnFFT", "Bred");

    st.PalAd = r.text("BScan", "PalAd");
    st.IndP = r.i16("BScan", "IndP");
    for (int i = 0; i < 8; ++i) {
        std::string key = "pal_" + std::to_string(i + 1);
        st.pal[i] = r.text("BScan", key.c_str());
    }

    if (st.YScale == 1) st.YLinear = true;
    if (st.YScale == 2) st.YLinear = false;
    if (st.Padding_Int == 0) st.PadWithZero = false;
    if (st.Padding_Int == 1) st.PadWithZero = true;
    if (st.FFT_Window < 1) st.FFT_Window = 10;
    // A saved 1 never survives a start: the O-scope always starts unwindowed.
    st.TimeWindowed = 0;

    if (!found) {
        wb.host.message("The settings file " + path +
                            " was not found. The factory settings are used.",
                        kTitle, MsgIcon::Critical);
    } else if (!r.bad.empty()) {
        std::string keys;
        for (const auto& k : r.bad)
            keys += "\n" + k;
        wb.host.message("The settings file " + path +
                            " has no usable number for these keys; their factory values are "
                            "used:" +
                            keys,
                        kTitle, MsgIcon::Critical);
    }
}

bool SaveOptions(Workbench& wb) {
    ProgramState& st = wb.st;
    st.YScale = st.YLinear ? 1 : 2;
    st.dBFS = st.dBFS_On ? 1 : 0;

    const std::string path = settingsPath(st);
    CSimpleIniA ini;
    loadForWrite(path, ini);

    put(ini, "Gen", "Sp_Samples", st.Sp_Samples);
    put(ini, "Gen", "Fil", st.Fil);
    put(ini, "Gen", "NewDS", st.NewDS);
    put(ini, "Gen", "Padding_Int", st.Padding_Int);
    put(ini, "Gen", "BscanShow", st.BscanShow);
    put(ini, "Gen", "StSp", st.StSp);
    put(ini, "Gen", "StPh", st.StPh);
    put(ini, "Gen", "StOs", st.StOs);
    put(ini, "Gen", "StWat", st.StWat);
    put(ini, "Gen", "ImportChannel", st.ImportChannel);

    put(ini, "TimeWindow", "Time_LineColor", st.Time_LineColor);
    put(ini, "TimeWindow", "Time_BackColor", st.Time_BackColor);
    put(ini, "TimeWindow", "Time_GridColor", st.Time_GridColor);
    put(ini, "TimeWindow", "ShowGrid", st.ShowGrid);
    put(ini, "TimeWindow", "Reference", st.Reference);
    put(ini, "TimeWindow", "ShowVertical", st.ShowVertical);
    put(ini, "TimeWindow", "RefDel", st.RefDel);
    put(ini, "TimeWindow", "TimeWindowed", st.TimeWindowed);
    put(ini, "TimeWindow", "Osc1Color", st.Osc1Color);
    put(ini, "TimeWindow", "Osc2Color", st.Osc2Color);

    if (st.FFT_Window < 1) st.FFT_Window = 10;
    put(ini, "FFT", "DrSet", st.DrSet);
    put(ini, "FFT", "FFT_LineColor", st.FFT_LineColor);
    put(ini, "FFT", "FFT_BackColor", st.FFT_BackColor);
    put(ini, "FFT", "FFT_GridColor", st.FFT_GridColor);
    put(ini, "FFT", "FFT_ShowGrid", st.FFT_ShowGrid);
    put(ini, "FFT", "FFT_Window", st.FFT_Window);
    put(ini, "FFT", "YScale", st.YScale);
    put(ini, "FFT", "AverVal", st.AverVal);
    put(ini, "FFT", "Offset_Log", st.Offset_Log);
    put(ini, "FFT", "Offset_Lin", st.Offset_Lin);
    put(ini, "FFT", "PlotRange", st.PlotRange);
    put(ini, "FFT", "ModeFFT", st.ModeFFT);
    put(ini, "FFT", "dBFS", st.dBFS);
    put(ini, "FFT", "Line1Color", st.Line1Color);
    put(ini, "FFT", "Line2Color", st.Line2Color);
    put(ini, "FFT", "As_Bar", st.AS_Bar);

    put(ini, "Fasa", "F_LineColor", st.F_LineColor);
    put(ini, "Fasa", "F_BackColor", st.F_BackColor);
    put(ini, "Fasa", "F_GridColor", st.F_GridColor);
    put(ini, "Fasa", "F_ShowGrid", st.F_ShowGrid);
    put(ini, "Fasa", "Ph1Color", st.Ph1Color);
    put(ini, "Fasa", "Ph2Color", st.Ph2Color);
    put(ini, "AnFFT", "THDdB", st.THDdB);
    put(ini, "AnFFT", "Bred", st.Bred);
    put(ini, "BScan", "PalAd", st.PalAd);
    put(ini, "BScan", "IndP", st.IndP);
    for (int i = 0; i < 8; ++i) {
        std::string key = "pal_" + std::to_string(i + 1);
        put(ini, "BScan", key.c_str(), st.pal[i]);
    }
    return saveIni(wb, ini, path);
}

bool SaveReferColors_toINI(Workbench& wb) {
    const std::string path = settingsPath(wb.st);
    CSimpleIniA ini;
    loadForWrite(path, ini);
    writeReferenceColours(ini, wb.st);
    return saveIni(wb, ini, path);
}

} // namespace kv
