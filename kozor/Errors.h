// Errors.h - the library's error numbers in words.
#pragma once

#include <string_view>

#include "ZorError.h"

namespace kozor::program {

// What happened, as the end of a sentence that begins with the name of a file.
std::string_view ErrorText(ZorError error);
// Whether the error is about one member or file alone, so that others may still be in order.
bool ConcernsOneFile(ZorError error);

}  // namespace kozor::program
