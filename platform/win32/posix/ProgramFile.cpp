// ProgramFile.cpp - see ProgramFile.h.
#include "platform/win32/ProgramFile.h"

#include <sys/stat.h>

#include <optional>

#include "platform/win32/posix/LastError.h"
#include "platform/win32/posix/LookUp.h"
#include "platform/win32/posix/Paths.h"

namespace kozor::posix {
namespace {

constexpr mode_t kAllRead = S_IRUSR | S_IRGRP | S_IROTH;
constexpr mode_t kOwnerAll = S_IRWXU;

bool LookUpFile(const char* name, Found& found) {
  const std::optional<LibraryPath> path = ParsePath(name);
  return path && LookUpExisting(*path, found);
}

}  // namespace
}  // namespace kozor::posix

int KzMakeProgram(const char* path, const char* like) {
  using namespace kozor::posix;
  Found program;
  Found model;
  if (!LookUpFile(path, program) || !LookUpFile(like, model)) return FALSE;
  const mode_t readable = program.facts.mode & (model.facts.mode | kOwnerAll) & 0777;
  const mode_t mode = readable | (readable & kAllRead) >> 2;
  return ::chmod(program.host.c_str(), mode) == 0 ? TRUE : FailErrno();
}
