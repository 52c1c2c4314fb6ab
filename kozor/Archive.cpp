// Archive.cpp - see Archive.h.
#include "Archive.h"

#include <algorithm>

#include "Console.h"
#include "Errors.h"
#include "Failure.h"
#include "Host.h"

namespace kozor::program {

namespace {

// An extraction that extracts nothing: every member passes OnAbort with its header's fields.
class MemberVisitor : public ZorArchive {
 public:
  explicit MemberVisitor(const std::function<void(const Member&)>& visitor) : visit(visitor) {}

  std::size_t visited = 0;

 protected:
  CString OnMakeFileName(const char* /*directory*/, const char* /*name*/) override { return ""; }

  int OnAbort(const ONABORTPARAM& param) override {
    if (param.phase == PhaseFileBegin) {
      ++visited;
      visit({param.memberName, param.memberSize, param.memberDate, param.memberTime,
             param.memberAttribute});
    }
    return StopSignal();
  }

 private:
  const std::function<void(const Member&)>& visit;
};

[[noreturn]] void Fail(ZorError error, const std::string& name, const std::string& currentName) {
  StopIfAsked();
  std::string text = Visible(name) + ": ";
  if (!currentName.empty()) text += VisibleLibraryName(currentName) + ": ";
  throw Failure(text + std::string(ErrorText(error)));
}

}  // namespace

void Archive::Require(int succeeded, const std::string& name) const {
  if (!succeeded) Fail(GetError(), name, currentName);
}

int Archive::OnAbort(const ONABORTPARAM& param) {
  const char* name = param.memberName != nullptr ? param.memberName : param.fileName;
  if (param.phase == PhaseEnd) {
    HideProgress();
    return 0;
  }
  if (param.phase != PhaseBegin && name != nullptr) currentName = name;
  ShowProgress(FilesDone(param), param.filesTotal, currentName);
  return StopSignal();
}

std::size_t ForEachMember(const std::string& archive, const std::string& name,
                          const std::string& mask,
                          const std::function<void(const Member&)>& visit) {
  MemberVisitor visitor(visit);
  const bool done = visitor.Extract(archive.c_str(), "C:\\", mask.c_str()) != 0;
  // A mask that finds nothing counts as cancelled.
  if (!done && (visitor.GetError() != ZorErrorCanceled || StopSignal() != 0)) {
    Fail(visitor.GetError(), name, "");
  }
  return visitor.visited;
}

std::string MemberName(std::string name) {
  std::replace(name.begin(), name.end(), '/', '\\');
  return name;
}

std::string MemberMask(std::string word) {
  std::string mask = MemberName(std::move(word));
  if (mask.ends_with('\\')) mask += "*.*";
  return mask;
}

void RequireArchive(const std::string& archive, const std::string& name) {
  if (!Exists(HostPath(archive))) throw Failure(Visible(name) + ": no such archive");
  ZorArchive object;
  if (!object.IsEnabled()) Fail(ZorErrorEngineUnavailable, name, "");
  if (!object.IsArchive(archive.c_str())) Fail(ZorErrorEngine8019, name, "");
}

}  // namespace kozor::program
