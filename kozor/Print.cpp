// Print.cpp - kozor print: a member to standard output, through memory.
#include <memory>

#include "Archive.h"
#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "StandardStreams.h"

namespace kozor::program {

namespace {

constexpr std::string_view kHelp =
    R"(Usage: kozor print ARCHIVE MEMBER

Writes the contents of one member of an LZH archive to standard output.  Nothing
is written when the member is damaged.
)";

void Print(const Arguments& arguments) {
  const std::string& name = arguments.Operand(0, "the archive");
  const std::string member = MemberName(arguments.Operand(1, "the member"));
  arguments.AllowOperands(2);
  const std::string path = LibraryPath(name);
  RequireArchive(path, name);
  Archive archive;
  unsigned long size = 0;
  const std::string label = name + ": " + arguments.Operand(1, "");
  const int found = archive.GetFileInfo(path.c_str(), member.c_str(), &size, nullptr, nullptr);
  // The library has one error for this and for an archive that can't be read; listing tells which.
  if (!found && ForEachMember(path, name, member, [](const Member&) {}) == 0) {
    throw Failure(Visible(arguments.Operand(1, "")) + ": no such member in " + Visible(name));
  }
  archive.Require(found, label);
  const auto buffer = std::make_unique_for_overwrite<unsigned char[]>(size);
  archive.Require(archive.ExtractMem(path.c_str(), member.c_str(), buffer.get(), size), label);
  WriteStandardOutput(buffer.get(), size);
}

}  // namespace

const Command kPrintCommand = {"print", "write a member to standard output", kHelp, {}, Print};

}  // namespace kozor::program
