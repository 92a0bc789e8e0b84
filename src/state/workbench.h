// The context every command runs in: the program state, the command model the shell mirrors,
// the host that talks to the user, and the views. Passed by reference; there are no globals.
#pragma once

#include "platform/byte_source.h"
#include "platform/host.h"
#include "state/command_state.h"
#include "state/program_state.h"
#include "state/view_host.h"

namespace kv {

struct Workbench {
    ProgramState& st;
    CommandState& cmd;
    Host& host;
    ViewHost& views;
    /// Where readers get their bytes: from disk in the workbench, from memory in the fuzzers.
    SourceOpener openSource = openFileSource;
};

} // namespace kv
