// Completion.h - what shells need to complete command lines of this program, made of the same
// tables as the help.
#pragma once

#include <span>
#include <string>

#include "Commands.h"

namespace kozor::program {

// A script for bash, zsh or fish.  Throws UsageError for another shell.
std::string CompletionScript(const std::string& shell, std::span<const Command* const> commands);

}  // namespace kozor::program
