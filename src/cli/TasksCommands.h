// kmd's task commands that the general record commands hand on to.
#pragma once

#include "cli/Cli.h"

namespace cli {

constexpr int TasksSection = 15;

// kmd list STORE 15 [--category ID] [--completed] [--show-private]
int ListTasks(Context &ctx);

} // namespace cli
