// The command-line tool's subcommands over the same core as the workbench.
#include "cli/commands.h"

#include "core/lifecycle.h"
#include "import/file_filters.h"
#include "import/open.h"
#include "import/readers.h"
#include "platform/files.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace kv::cli {

namespace {

const char* iconName(MsgIcon i) {
    switch (i) {
    case MsgIcon::Critical:
        return "critical";
    case MsgIcon::Information:
        return "information";
    case MsgIcon::Exclamation:
        return "exclamation";
    }
    return "?";
}

std::string lower(std::string s) {
    for (char& c : s)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

void applySets(ProgramState& st, const std::vector<std::string>& sets) {
    for (const auto& s : sets) {
        auto dot = s.find('.');
        auto eq = s.find('=');
        if (dot == std::string::npos || eq == std::string::npos || dot == 0 || eq < dot + 2)
            throw UsageError("--set wants Section.Key=Value, got: " + s);
        st.SettingsOverrides[lower(s.substr(0, eq))] = s.substr(eq + 1);
    }
}

std::string resolveHome(const CommonOptions& o, const std::string& exeDir) {
    if (!o.home.empty()) return o.home;
    if (const char* env = std::getenv("KELVORANDINE_HOME"); env && *env) return env;
    return exeDir;
}

} // namespace

void printJson(const nlohmann::json& j) {
    std::cout << j.dump(2) << "\n";
}

bool openSession(Session& s, const CommonOptions& o, const std::string& exeDir) {
    std::error_code ec;
    // Resolve the file before the start sequence moves the current folder to the home folder.
    std::string path = std::filesystem::absolute(o.file, ec).string();
    if (ec) path = o.file;
    s.st.AppPath = std::filesystem::absolute(resolveHome(o, exeDir), ec).string();
    if (!std::filesystem::is_directory(s.st.AppPath, ec))
        throw UsageError("home folder not found: " + s.st.AppPath);
    applySets(s.st, o.sets);
    s.host.echo = [](const ShownMessage& m) { std::cerr << m.title << ": " << m.text << "\n"; };
    MDIForm_Load(s.wb);

    int index = 0;
    if (!o.filter.empty()) {
        FilterName f;
        if (!parseFilterName(o.filter, f)) throw UsageError("unknown filter: " + o.filter);
        index = filterIndexOf(s.st.Fil, f);
    } else {
        index = filterIndexForFile(s.st.Fil, o.file);
    }
    if (index == 0) index = 1;
    s.host.queueFile(path, index);
    mnuOpen_Click(s.wb);
    return !s.st.TempPath.empty();
}

nlohmann::json describe(const Session& s) {
    const ProgramState& st = s.st;
    nlohmann::json j;
    j["SourcePath"] = st.SourcePath;
    j["FileTitle"] = st.FileTitle;
    j["loaded"] = !st.TempPath.empty();
    if (const auto* row = activeFormat(st)) j["format"] = row->name;
    j["Sp_Samples"] = st.Sp_Samples;
    j["TraceCount"] = st.TraceCount;
    j["TraceLength"] = st.TraceLength;
    j["SampleRate"] = st.SampleRate;
    j["BitsPerSample"] = st.BitsPerSample;
    j["Channels"] = st.Channels;
    j["StereoFlag"] = st.StereoFlag;
    j["FullScalePos"] = st.FullScalePos;
    j["FullScaleNeg"] = st.FullScaleNeg;
    j["SourceLength"] = st.SourceLength;
    j["WorkingFileLength"] = st.WorkingFileLength;
    j["DataStart"] = st.DataStart;
    j["NewDS"] = st.NewDS;
    j["LastTrace"] = st.LastTrace;
    j["TraceStep"] = st.TraceStep;
    j["ScrollStride"] = st.ScrollStride;
    j["ShowVertical"] = st.ShowVertical;
    j["YUnitName"] = st.YUnitName;
    j["ActiveTracePath"] = st.ActiveTracePath;
    j["IsProject"] = st.IsProject;
    j["caption"] = s.cmd.caption;
    nlohmann::json panels = nlohmann::json::array();
    for (int p = 1; p <= CommandState::kPanels; ++p)
        panels.push_back(s.cmd.panel(p));
    j["panels"] = panels;
    j["views"] = s.views.log;
    nlohmann::json msgs = nlohmann::json::array();
    for (const auto& m : s.host.messages)
        msgs.push_back({{"text", m.text}, {"title", m.title}, {"icon", iconName(m.icon)}});
    j["messages"] = msgs;
    return j;
}

int runInfo(const CommonOptions& o, const std::string& exeDir) {
    Session s;
    const bool loaded = openSession(s, o, exeDir);
    printJson(describe(s));
    return loaded ? kExitOk : kExitNoData;
}

int runConvert(const CommonOptions& o, const std::string& out, const std::string& exeDir) {
    const std::string ext = upperAscii(out.substr(
        out.find_last_of('.') == std::string::npos ? out.size() : out.find_last_of('.') + 1));
    if (ext != "SP") throw UsageError("convert writes .sp files: " + out);
    Session s;
    const bool loaded = openSession(s, o, exeDir);
    nlohmann::json j = describe(s);
    if (!loaded) {
        printJson(j);
        return kExitNoData;
    }
    std::error_code ec;
    std::filesystem::copy_file(s.st.ActiveTracePath, out,
                               std::filesystem::copy_options::overwrite_existing, ec);
    j["output"] = out;
    j["written"] = !ec;
    printJson(j);
    return ec ? kExitNoData : kExitOk;
}

} // namespace kv::cli
