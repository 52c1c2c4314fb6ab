// Host.cpp - the part of Host.h that is the same on every system.
#include "Host.h"

#include <algorithm>

#include "Failure.h"
#include "platform/text/CodePage.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

// Returns false if the bytes aren't valid text in the code page.
bool ToUtf8(unsigned int codePage, std::string_view bytes, std::string& utf8) {
  utf8.clear();
  const text::CodePage& page = *text::FindCodePage(codePage);
  while (!bytes.empty()) {
    const text::Decoded decoded = page.decode(bytes);
    if (decoded.character == text::kNoCharacter) return false;
    text::AppendUtf8(utf8, decoded.character);
    bytes.remove_prefix(decoded.bytes);
  }
  return true;
}

}  // namespace

void StopIfAsked() {
  if (StopSignal() != 0) throw Interrupted();
}

fs::path HostName(const std::string& libraryName) {
  std::string name;
  if (!ToUtf8(text::kUtf8, libraryName, name) && !ToUtf8(text::kCodePage932, libraryName, name)) {
    throw FileFailure("refused: its name is in no known code");
  }
  std::replace(name.begin(), name.end(), '\\', '/');
  return FromUtf8(name);
}

fs::path AbsolutePath(const fs::path& path) {
  fs::path result;
  for (const fs::path& part : fs::absolute(path)) {
    if (part == "..") {
      std::error_code unresolved;
      const fs::path real = fs::canonical(result, unresolved);
      result = (unresolved ? result : real).parent_path();
    } else if (!part.empty() && part != ".") {
      result /= part;
    }
  }
  return result;
}

}  // namespace kozor::program
