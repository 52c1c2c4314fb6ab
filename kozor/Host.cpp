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

fs::path WeaklyCanonical(const fs::path& path) {
  fs::path whole = AbsolutePath(path);
  fs::path rest;
  for (fs::path head = whole; head.has_relative_path(); head = head.parent_path()) {
    if (const auto real = Canonical(head)) return rest.empty() ? *real : *real / rest;
    rest = rest.empty() ? head.filename() : head.filename() / rest;
  }
  return whole;
}

}  // namespace kozor::program
