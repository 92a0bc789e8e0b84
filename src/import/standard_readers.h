// The standards-conformant SEG-Y and SEG-2 entries of the import dialog, which stand beside the
// fixed-rule Seismic, Radsys, SEG-2 and SPRScan ERA entries: they read the headers the way the
// published standards define them, one working trace per trace of the file.
#pragma once

#include "import/reader.h"

#include <string>

namespace kv {

/// SEG-Y of any revision: textual header in EBCDIC or ASCII, byte order found from the binary
/// header, every sample format of revision 2, and the trace count from the file size.
void ReadSegyStd(ImportContext& ctx);
/// SEG-2 in either byte order: the trace pointer table, each trace's descriptor block and its
/// strings, data formats 1 to 5, shorter traces padded with zeros to the longest.
void ReadSeg2Std(ImportContext& ctx);

/// A read that ends with a message of its own instead of "File corrupted!".
struct ReadRefused : ReadError {
    ReadRefused(const std::string& message, MsgIcon i) : ReadError(message), icon(i) {}
    MsgIcon icon;
};

/// Runs a standard reader's body. When the file fails the read (see catchInputFailure): the
/// dialog's file name and the file information are emptied so that the open stops, and the
/// message box shows a ReadRefused's own text or "File corrupted!" (the out-of-memory text when
/// memory ran out), the views go (CleanSet), toolbar button 2 shows, and TempPath is emptied.
void runStandardRead(ImportContext& ctx, const std::function<void()>& body);

/// A header figure for file information: up to ten significant digits, no trailing zeros.
std::string numberText(double x);

/// SourceLength from the size of the source.
void setSourceLength(ProgramState& st, uint64_t size);

} // namespace kv
