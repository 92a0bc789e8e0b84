// The one failure a reader raises: a read it cannot complete (a bad header, a short file, a
// value that would overflow). The open command turns it into the message and clean-up the
// format defines; it never reaches the event loop.
#pragma once

#include <stdexcept>
#include <string>

namespace kv {

struct ReadError : std::runtime_error {
    explicit ReadError(const std::string& what) : std::runtime_error(what) {}
};

} // namespace kv
