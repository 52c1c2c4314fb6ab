// ConvertCommand.cpp - the command `s -gw4`: makes a self-extracting program from an archive.
//
// The program is the stub followed by the archive up to its end mark.  An archive holds no absolute
// offsets, so it is copied unchanged.
#include "engine/commands/Archiver.h"
#include "engine/container/Failure.h"
#include "engine/container/Path.h"
#include "engine/container/TemporaryArchive.h"
#include "engine/sfx/Stub.h"
#include "platform/win32/HostRules.h"
#include "platform/win32/Win32.h"

namespace kozor::commands {
namespace {

using container::Failure;
using container::File;
using container::ResultCode;
using container::TemporaryArchive;

// Returns "notes" for "C:\x\notes.lzh".
std::string BaseNameOf(const std::string& path) {
  const std::string name(container::PathOf(path).FileName());
  const std::size_t dot = name.rfind('.');
  return name.substr(0, dot == 0 ? std::string::npos : dot);
}

// The program goes into the directory that the second operand names.  If that is missing, or is the
// archive itself (given without a directory), it goes beside the archive.
std::string TargetOf(const CommandLine& line, std::string_view suffix) {
  const std::string& archive = line.archive;
  const bool isBeside =
      line.operands.empty() || line.operands[0].text.empty() || line.operands[0].text == archive;
  const std::string directory =
      isBeside ? container::FolderOf(archive) : container::PathOf(line.operands[0].text).AsFolder();
  return (directory + BaseNameOf(archive)).append(suffix);
}

// Throws if the target must not be replaced, above all if it is the archive itself.
void CheckTarget(const std::string& target, const File& archive) {
  File file;
  if (!file.Open(target, File::Mode::Facts)) return;
  const container::FileFacts facts = file.Facts();
  if (facts.stamp.IsSameFile(archive.Facts().stamp)) throw Failure(ResultCode::SameName);
  if ((facts.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) throw Failure(ResultCode::SameName);
  if ((facts.attributes & FILE_ATTRIBUTE_READONLY) != 0) throw Failure(ResultCode::ReadOnlyFile);
}

void MakeProgram(const std::string& path, const std::string& archive) {
  if (!KzMakeProgram(path.c_str(), archive.c_str())) throw Failure(container::WriteFailureCode());
}

}  // namespace

void Archiver::Convert(const CommandLine& line, const ProgressListener& listener) {
  const sfx::Stub* const found = sfx::FindStub(line.programSystem);
  if (found == nullptr) throw Failure(ResultCode::UnknownCommand);
  const auto stub = found->program;
  const std::string& path = line.archive;
  const auto [archive, index] = indexes.Open(path);
  if (index->PrefixBytes() != 0) throw Failure(ResultCode::UnknownKind);
  if (const auto damage = index->Damage()) throw Failure(*damage);
  if (index->Members().empty()) throw Failure(ResultCode::NotFound);
  const std::string target = TargetOf(line, found->suffix);
  CheckTarget(target, *archive);

  TemporaryArchive temporary(container::FolderOf(target));
  MakeProgram(temporary.Path(), path);
  Progress progress(listener);
  progress.Begin(path, index->EndOffset());
  File& output = temporary.Contents();
  output.WriteAt(0, stub);
  std::uint64_t done = 0;
  container::CopyBytes(
      *archive, 0, index->EndOffset(),
      [&](container::ByteSpan piece) {
        output.WriteAt(stub.size() + done, piece);
        done += piece.size();
      },
      [&](std::uint64_t) { progress.Report(done); });
  constexpr std::uint8_t kEndMark[1] = {0};
  output.WriteAt(stub.size() + done, kEndMark);
  output.Flush();
  progress.End(done);

  temporary.Replace(target);
  MakeProgram(target, path);  // a replaced file has passed on its mode
}

}  // namespace kozor::commands
