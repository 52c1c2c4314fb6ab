// ResponseFile.h - names in a file instead of on the command line.
#pragma once

#include <string>
#include <vector>

namespace kozor::commands {

// One name a line, whatever the line ends are; blanks around a name and double quotes are no part
// of it.  Empty lines say nothing.  Throws ResultCode::ResponseFileNotRead.
std::vector<std::string> ReadResponseFile(const std::string& path);

}  // namespace kozor::commands
