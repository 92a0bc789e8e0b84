// Where the workbench keeps its home (SP.ini, palettes, references, working files) when the
// user names none: the program's own folder, as it always has, unless that folder cannot be
// written (an installed copy in a system folder). Then the factory home is copied once into the
// user's data folder and used from there.
#pragma once

#include <string>

namespace kv {

/// The user's data folder for the workbench: $XDG_DATA_HOME/kelvorandine, else
/// $HOME/.local/share/kelvorandine; empty when neither variable is set.
std::string userDataFolder();

/// True when a file can be made in `folder`.
bool folderWritable(const std::string& folder);

/// Copies into `to` what the factory home in `from` holds and `to` lacks: SP.ini and the
/// pal, ref, ico and samples folders. A file already there (a user's own settings) is kept.
/// Returns false when `to` cannot be made or a copy fails.
bool copyFactoryHome(const std::string& from, const std::string& to);

/// The home folder for a start without --home or KELVORANDINE_HOME: `programFolder` when
/// `programWritable`, else `dataFolder` filled from the factory home in `programFolder`. When
/// that cannot be made the program folder is kept, as before.
std::string defaultHomeFolder(const std::string& programFolder, bool programWritable,
                              const std::string& dataFolder);

} // namespace kv
