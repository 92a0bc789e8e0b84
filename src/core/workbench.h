// The context every command runs in: the program state, the command model the shell mirrors,
// the host that talks to the user, and the views. Passed by reference; there are no globals.
#pragma once

#include "core/command_state.h"
#include "core/program_state.h"
#include "core/view_host.h"
#include "platform/host.h"

namespace kv {

struct Workbench {
    ProgramState& st;
    CommandState& cmd;
    Host& host;
    ViewHost& views;
};

} // namespace kv
