// Save window as: the active view's whole picture (graph, labels, axis captions, cursors,
// markers and annotations as they stand) goes to print.bmp in the home folder, the one hand-over
// between a view and the save and print commands; the save command then copies it as BMP, or
// converts it to JPEG or PNG, under the name the user gives. A picture file is written beside its
// name and renamed over it, so a failed write never leaves a half-written file under that name.
#pragma once

#include <QImage>
#include <string>

namespace kv {

struct Workbench;
struct ProgramState;
class ModelViewHost;

namespace output {

/// The save dialog's filter entries: BMP, JPEG and PNG, in that order.
inline constexpr const char* kSaveWindowFilter =
    " BMP Files(*.bmp)|*.bmp|JPEG Files(*.jpg)|*.jpg|PNG Files(*.png)|*.png|";
inline constexpr const char* kSaveWindowTitle = "Save window as";
/// The title of the JPEG conversion's three messages.
inline constexpr const char* kConversionTitle = "Error encountered!";

std::string printBmpPath(const ProgramState& st);
std::string printJpgPath(const ProgramState& st);

/// The whole picture of the active view, or a null image when no view is open and active.
QImage activeViewPicture(const ProgramState& st, const ModelViewHost& views);

/// Writes `picture` as print.bmp. False, after a message, when it could not be written.
bool savePrintBmp(Workbench& wb, const QImage& picture);

/// `PrintNu` of the active view: its picture into print.bmp. False when there was none to take
/// or it could not be written.
bool PrintNu(Workbench& wb, const ModelViewHost& views);

/// Makes print.jpg from print.bmp. False after one of its three messages ("Cannot find file",
/// "Not enough memory", "Cannot load file") or a failed write.
bool Bmp2JPG(Workbench& wb);

/// The save step after the dialog: print.bmp goes to `path` by the name's ending (.bmp copied,
/// .jpg through Bmp2JPG, .png converted). A name with no such ending gets a message and nothing
/// is written. True when the file was written.
bool saveWindowAs(Workbench& wb, const std::string& path);

/// `mnuSw`: PrintNu of the active view, the save dialog, then saveWindowAs.
void mnuSw_Click(Workbench& wb, const ModelViewHost& views);

} // namespace output
} // namespace kv
