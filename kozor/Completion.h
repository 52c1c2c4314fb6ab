// Completion.h - scripts with which shells complete the program's command lines, made from the same
// tables as the help.
#pragma once

#include <span>
#include <string>

#include "Commands.h"

namespace kozor::program {

// A script for bash, zsh or fish.  Throws UsageError for another shell.
std::string CompletionScript(const std::string& shell, std::span<const Command* const> commands);

}  // namespace kozor::program
