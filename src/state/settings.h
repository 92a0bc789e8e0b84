// The settings file SP.ini in the home folder: loaded at start and after a re-read, saved when
// the user accepts the options dialog. Sections and keys compare without regard to case;
// comments and keys we do not know are kept when we write.
#pragma once

#include <string>

namespace kv {

struct Workbench;
struct ProgramState;

/// Path of SP.ini in the home folder.
std::string settingsPath(const ProgramState& st);

/// The text of one key as the settings file holds it now (a setting given for this run wins);
/// "" when the file or the key is missing. A dialog's Cancel reads a saved value back this way.
std::string readSetting(const ProgramState& st, const char* section, const char* key);

/// Loads every settings item. A missing file or a numeric key that is empty or not a number is
/// reported in one critical message naming the file and the keys; those keys take their
/// factory values and everything else loads as usual.
void ReadINI(Workbench& wb);

/// Writes all keys but LogSh. The file is replaced through a temporary sibling, so a failed
/// write leaves the old file whole. Returns false (after a message) when it could not write.
bool SaveOptions(Workbench& wb);

/// Writes only the six reference colours.
bool SaveReferColors_toINI(Workbench& wb);

/// The factory SP.ini shipped with the workbench, as text.
const char* factorySettingsText();

} // namespace kv
