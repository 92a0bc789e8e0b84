// The failures a file can cause, as opposed to faults in the program. A reader raises ReadError
// for a read it cannot complete (a bad header, a short file, a value that would overflow, an
// array its header asks for that no memory holds); the file system and the streams raise their
// own errors, and memory can run out. The handlers of the open, the re-read and the export catch
// exactly these through catchInputFailure; anything else (a logic error, a bad .at() index) is a
// fault in the program and passes through to the caller.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

namespace kv {

struct ReadError : std::runtime_error {
    explicit ReadError(const std::string& what) : std::runtime_error(what) {}
};

/// How an operation on a file ended.
enum class Failure {
    None,  // it completed
    Read,  // ReadError, a file-system error or a failed stream
    Memory // std::bad_alloc: the machine had no memory for it
};

/// Runs `body` and tells how it ended; `what`, when given, receives the failure's text.
/// Exceptions other than the failures above pass through.
Failure catchInputFailure(const std::function<void()>& body, std::string* what = nullptr);

/// The largest array a file's header may ask for: 16 M elements. A header that claims more is
/// taken as a damaged file rather than tried.
inline constexpr int64_t kLargestArray = int64_t(1) << 24;

/// The element count of an array whose size comes from a file: a negative count fails the read
/// as a bad subscript, one above kLargestArray as out of memory, before anything is allocated.
size_t checkedCount(int64_t count);

} // namespace kv
