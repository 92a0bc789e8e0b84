// One import as the Import command runs it, in a scratch home, for the import benchmarks.
#pragma once

#include "commands/lifecycle.h"
#include "commands/open.h"
#include "commands/recording_view_host.h"
#include "import/file_filters.h"
#include "platform/scripted_host.h"
#include "state/settings.h"
#include "state/workbench.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace kv::bench {

/// A fresh home folder with the factory SP.ini, named after this process.
inline std::string scratchHome(const std::string& tag = "kv-bench-") {
    namespace fs = std::filesystem;
    fs::path p = fs::temp_directory_path() / (tag + std::to_string(::getpid()));
    fs::create_directories(p);
    std::ofstream(p / "SP.ini") << factorySettingsText();
    return p.string();
}

/// Imports `file` through the dialog entry named `filter` (or the one its extension picks);
/// the trace count, or -1 when the open ended with no data set.
inline int importOnce(const std::string& home, const std::string& file, const std::string& filter) {
    ProgramState st;
    CommandState cmd;
    ScriptedHost host;
    RecordingViewHost views;
    Workbench wb{st, cmd, host, views};
    st.AppPath = home;
    MDIForm_Load(wb);
    host.queueFile(file, chosenFilterIndex(st.Fil, file, filter).value_or(1));
    mnuOpen_Click(wb);
    return st.TempPath.empty() ? -1 : st.TraceCount;
}

} // namespace kv::bench
